#pragma once

#include "searchdata/Enums.h"

#include <QDateTime>
#include <QDialog>
#include <array>
#include <memory>

class QFrame;
class QPushButton;
class QRadioButton;
class QTextBrowser;

namespace searchdata {

class CFilterColumns;

/// The help of the filter dialog: how to filter, or what each column and base-table field holds.
class frmFilterHelp : public QDialog {
    Q_OBJECT
public:
    explicit frmFilterHelp(QWidget* parent = nullptr);
    ~frmFilterHelp() override;

    /// Shows the help for `columns` modally over `owner`; the window is gone when it closes.
    static void Display(const std::shared_ptr<CFilterColumns>& columns, QWidget* owner);
    /// What `Display` does before it shows the window: caption, controls and the first view.
    void Prepare(const std::shared_ptr<CFilterColumns>& columns);

    /// The rules of filtering, with `now` in the date forms that the dialog reads.
    static QString GeneralHelpText(const QDateTime& now);
    /// Every column and filterable base-table field, as rich text.
    static QString ColumnsHelpText(const CFilterColumns& columns);
    /// The user's name for a comparison class.
    static QString ComparisonClassName(FilterComparisonClasses comparisonClass);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void InitializeControls();
    void InitializeHelp();
    void ArrangeControls();

    std::shared_ptr<CFilterColumns> m_columns;
    QTextBrowser* rtfHelp = nullptr;
    QFrame* picButtons = nullptr;
    std::array<QRadioButton*, 2> optView{};
    QPushButton* cmdOk = nullptr;
};

} // namespace searchdata
