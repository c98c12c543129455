#include "EntryControlFixture.h"

#include "searchdata/DatabaseHandler.h"
#include "searchdata/widgets/PropertyStore.h"

#include <QFrame>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class UKVOSearchPropertiesTest : public EntryControlTest {
protected:
    void SetUp() override
    {
        EntryControlTest::SetUp();
        settings = std::make_unique<QSettings>(dir.filePath("form.ini"), QSettings::IniFormat);
        store = std::make_unique<SettingsPropertyStore>(*settings, "kseEdit");
    }
    QTemporaryDir dir;
    std::unique_ptr<QSettings> settings;
    std::unique_ptr<SettingsPropertyStore> store;
};

TEST_P(UKVOSearchPropertiesTest, EachPropertyIsReadOnItsOwnAndDefaultsLeaveNoKey)
{
    const std::pair<const char*, QVariant> stored[] = {
        {"Enabled", "banana"}, {"OkCancelButtons", false}, {"ShowCancelButton", false}, {"ShowOKButton", 0},
        {"DisplayBaseRecord", "maybe"}, {"BorderStyle", 7}, {"FieldsVisible", 3},
    };
    for (const auto& [key, value] : stored)
        settings->setValue(QStringLiteral("kseEdit/") + key, value);

    UKVOSearch c;
    c.ReadProperties(*store);
    EXPECT_TRUE(c.Enabled());
    EXPECT_FALSE(c.ShowCancelButton());
    EXPECT_FALSE(c.ShowOKButton());
    EXPECT_TRUE(c.DisplayBaseRecord());
    EXPECT_EQ(c.BorderStyle(), 0);
    EXPECT_EQ(c.FieldsVisible(), 3);

    c.WriteProperties(*store);
    settings->beginGroup("kseEdit");
    EXPECT_EQ(settings->childKeys(), QStringList({"FieldsVisible", "ShowCancelButton", "ShowOKButton"}));
    settings->endGroup();

    // And back, through the property system a designer uses.
    UKVOSearch again;
    again.ReadProperties(*store);
    EXPECT_EQ(again.property("FieldsVisible").toInt(), 3);
    EXPECT_FALSE(again.property("ShowOKButton").toBool());
    EXPECT_TRUE(again.setProperty("BorderStyle", 1));
    EXPECT_NE(named<QFrame>(&again, "picContainer")->frameShape(), QFrame::NoFrame);
}

TEST_P(UKVOSearchPropertiesTest, AnOldOkCancelSettingHidesNothingAndAsksToBeStoredAgain)
{
    settings->setValue("kseEdit/OkCancelButtons", false);
    openControl();
    control->ReadProperties(*store);
    QSignalSpy changed(control.get(), &UKVOSearch::PropertyChanged);
    display(2);
    EXPECT_TRUE(changed.contains(QVariantList{"OkCancelButtons"}));
    EXPECT_EQ(visibleButtons(), QStringList({"cmdEdit", "cmdCancel"}));
    control->WriteProperties(*store);
    EXPECT_FALSE(settings->contains("kseEdit/OkCancelButtons"));
}

TEST_P(UKVOSearchPropertiesTest, FieldsVisibleChangesNoLayout)
{
    openControl(QSize(640, 300));
    display(2);
    const QWidget* sheet = child<QWidget>("picFields");
    const QRect before = sheet->geometry();
    control->SetFieldsVisible(2);
    control->resize(control->size());
    control->resize(641, 300);
    control->resize(640, 300);
    EXPECT_EQ(sheet->geometry(), before);
}

TEST_P(UKVOSearchPropertiesTest, TheBaseRecordShowsUntilTheRowsAreBuiltWithoutIt)
{
    openControl();
    acceptEditing();
    auto record = testDb().handler()->OpenSqlRecordset("SELECT * FROM " + q("Files") + " WHERE " + q("FileId") + " = 3");
    ASSERT_NE(record, nullptr);
    entry.id = 3;
    control->Display(record.get(), &entry, kseModeEdit);
    settle();
    const auto* list = child<QTreeWidget>("lvwEntry");
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->headerItem()->text(1), "Name");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "file 3");
    EXPECT_GE(list->columnWidth(1), list->fontMetrics().horizontalAdvance("file 3"));

    control->SetDisplayBaseRecord(false);
    control->resize(600, 500);
    EXPECT_TRUE(list->isVisible());
    startEditing();
    EXPECT_FALSE(list->isVisible());
    EXPECT_EQ(child<QWidget>("picView")->y(), 0);
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchPropertiesTest);

} // namespace
