#pragma once

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace searchdata {

/// Offers the entry control in Designer's widget box; a form holds it under the name kvoSearch.
class UKVOSearchPlugin : public QObject, public QDesignerCustomWidgetInterface {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QDesignerCustomWidgetInterface")
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    explicit UKVOSearchPlugin(QObject* parent = nullptr) : QObject(parent) {}

    QString name() const override;
    QString group() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QString includeFile() const override;
    QIcon icon() const override;
    bool isContainer() const override { return false; }
    QWidget* createWidget(QWidget* parent) override;
    bool isInitialized() const override { return m_initialized; }
    void initialize(QDesignerFormEditorInterface*) override { m_initialized = true; }
    QString domXml() const override;

private:
    bool m_initialized = false;
};

} // namespace searchdata
