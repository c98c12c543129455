// The Designer plugin as Designer uses it: loaded from its file, asked for its entry in the widget
// box, and made to create the control, whose designable properties a form can set.

#include "searchdata/widgets/UKVOSearch.h"

#include <QMetaProperty>
#include <QPluginLoader>
#include <QWidget>
#include <QXmlStreamReader>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>
#include <gtest/gtest.h>

namespace {

QDesignerCustomWidgetInterface* loadPlugin(QPluginLoader& loader)
{
    loader.setFileName(QStringLiteral(SEARCHDATA_DESIGNER_PLUGIN));
    QObject* instance = loader.instance();
    EXPECT_NE(instance, nullptr) << qPrintable(loader.errorString());
    return qobject_cast<QDesignerCustomWidgetInterface*>(instance);
}

TEST(DesignerPlugin, OffersTheEntryControlUnderItsClassAndHeader)
{
    QPluginLoader loader;
    QDesignerCustomWidgetInterface* plugin = loadPlugin(loader);
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(plugin->name(), QStringLiteral("searchdata::UKVOSearch"));
    EXPECT_EQ(plugin->includeFile(), QStringLiteral("searchdata/widgets/UKVOSearch.h"));
    EXPECT_FALSE(plugin->isContainer());
    EXPECT_FALSE(plugin->group().isEmpty());
    EXPECT_FALSE(plugin->icon().isNull());

    // Designer puts the widget of the XML on the form: it must be the class the plugin names.
    QXmlStreamReader xml(plugin->domXml());
    ASSERT_TRUE(xml.readNextStartElement());
    ASSERT_TRUE(xml.readNextStartElement());
    ASSERT_EQ(xml.name(), QStringLiteral("widget"));
    EXPECT_EQ(xml.attributes().value(QStringLiteral("class")), plugin->name());
    EXPECT_EQ(xml.attributes().value(QStringLiteral("name")), QStringLiteral("kvoSearch"));
}

TEST(DesignerPlugin, CreatesTheControlWhoseDesignablePropertiesAFormSets)
{
    QPluginLoader loader;
    QDesignerCustomWidgetInterface* plugin = loadPlugin(loader);
    ASSERT_NE(plugin, nullptr);
    QWidget form;
    QWidget* made = plugin->createWidget(&form);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->parent(), &form);
    // The plugin holds a copy of the library of its own: the control is known by its meta-object.
    EXPECT_STREQ(made->metaObject()->className(), "searchdata::UKVOSearch");

    const QMetaObject* meta = made->metaObject();
    const QList<std::pair<const char*, QVariant>> settings = {
        {"ShowOKButton", false}, {"ShowCancelButton", false}, {"DisplayBaseRecord", false},
        {"BorderStyle", QVariant::fromValue(qint16(1))}, {"FieldsVisible", QVariant::fromValue(qint16(6))}};
    for (const auto& [name, value] : settings) {
        SCOPED_TRACE(name);
        const int index = meta->indexOfProperty(name);
        ASSERT_GE(index, 0);
        EXPECT_TRUE(meta->property(index).isDesignable());
        EXPECT_TRUE(made->setProperty(name, value));
        EXPECT_EQ(made->property(name), value);
    }
}

} // namespace
