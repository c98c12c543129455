#include "EntryControlFixture.h"

#include "searchdata/DatabaseHandler.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class UKVOSearchDataTest : public EntryControlTest {
protected:
    void addKeyword(const QString& keyword)
    {
        QWidget* combo = child<QWidget>("cboField_0");
        focus(combo);
        QTest::keyClick(combo, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(combo, keyword);
        click(button("cmdAdd_0"));
    }
    QStringList items(const char* combo) const
    {
        QStringList list;
        const auto* c = child<QComboBox>(combo);
        for (int i = 0; i < c->count(); ++i)
            list << c->itemText(i);
        return list;
    }
    void apply()
    {
        settle();
        click(button("cmdApply"));
        settle();
        EXPECT_FALSE(control->IsEditing());
    }
};

TEST_P(UKVOSearchDataTest, AppliedValuesComeBackInAFreshControl)
{
    openControl(QSize(640, 900));
    acceptEditing();
    display(5);
    startEditing();
    const std::pair<const char*, const char*> typed[] = {
        {"txtTextField_1", "Acme"}, {"txtTextField_2", "12"}, {"txtTextField_3", "70000"},       {"txtTextField_4", "2.5"},
        {"txtTextField_5", "19.95"}, {"txtTextField_6", "2024-03-05 14:30"}, {"txtNoteField_8", "first line"},
    };
    for (const auto& [field, text] : typed)
        type(child<QWidget>(field), text);
    addKeyword("red");
    addKeyword("blue");
    focus(child<QCheckBox>("chkField_7"));
    QTest::keyClick(child<QCheckBox>("chkField_7"), Qt::Key_Space);
    auto* grade = child<QComboBox>("cboFieldView_10");
    focus(grade);
    grade->setCurrentIndex(grade->findText("C"));
    apply();
    EXPECT_EQ(stored("Customer", 5), "Acme");

    openControl();
    display(5);
    const std::pair<const char*, const char*> shown[] = {
        {"txtTextField_1", "Acme"}, {"txtTextField_2", "12"}, {"txtTextField_3", "70000"}, {"txtTextField_4", "2.5"},
        {"txtTextField_5", "19.95"}, {"txtTextField_6", "3/5/2024 2:30:00 PM"}, {"txtTextField_10", "C"},
    };
    for (const auto& [field, text] : shown)
        EXPECT_EQ(child<QLineEdit>(field)->text(), text) << field;
    EXPECT_EQ(child<QPlainTextEdit>("txtNoteField_8")->toPlainText(), "first line");
    EXPECT_EQ(child<QLabel>("lblField_7")->text(), "Done = True");
    EXPECT_EQ(items("cboFieldView_0"), QStringList({"red", "blue"}));
}

TEST_P(UKVOSearchDataTest, TheTemplateCarriesTheStoredValuesOfOneRecordToAnother)
{
    openControl(QSize(640, 900));
    acceptEditing();
    display(3);
    startEditing();
    type(child<QWidget>("txtTextField_1"), "Template Co");
    type(child<QWidget>("txtTextField_2"), "5");
    addKeyword("t1");
    apply();

    // The copy takes what is stored, so it waits for a session without changes.
    startEditing();
    ASSERT_TRUE(button("cmdTemplateCopy")->isEnabled());
    click(button("cmdTemplateCopy"));
    EXPECT_EQ(profile->ReadText("Files_Template", "Customer", {}), "Template Co");
    click(button("cmdCancel"));
    settle();

    display(4);
    startEditing();
    click(button("cmdTemplatePaste"));
    EXPECT_EQ(child<QLineEdit>("txtTextField_1")->text(), "Template Co");
    EXPECT_EQ(child<QLineEdit>("txtTextField_2")->text(), "5");
    EXPECT_EQ(items("cboField_0"), QStringList{"t1"});
    EXPECT_TRUE(control->IsDirty());
    apply();
    EXPECT_EQ(stored("Customer", 4), "Template Co");
    EXPECT_EQ(stored("Qty", 4), "5");
}

SD_INSTANTIATE_DATABASE_SUITE(UKVOSearchDataTest);

/// A user who waits while another holds the table, until the other lets it go.
class LockWaitingUiServices : public ScriptedUiServices {
public:
    using ScriptedUiServices::ScriptedUiServices;
    bool KeepWaitingForLock(std::chrono::milliseconds waited) override
    {
        if (release) {
            release();
            release = nullptr;
        }
        return ScriptedUiServices::KeepWaitingForLock(waited);
    }
    std::function<void()> release;
};

class UKVOSearchLockTest : public UKVOSearchDataTest {};

TEST_P(UKVOSearchLockTest, ApplyWaitsWithTheLockedMessageAndSavesWhenTheLockGoes)
{
    servicesGuard.reset();
    auto waiting = std::make_shared<LockWaitingUiServices>(std::chrono::milliseconds(5000));
    ui = waiting;
    servicesGuard = std::make_unique<ServicesGuard>(ui);
    openControl();
    acceptEditing();
    display(5);
    startEditing();
    type(child<QWidget>("txtTextField_1"), "waited");
    settle();

    auto other = testDb().openAnotherConnection();
    ASSERT_NE(other, nullptr);
    TransactionState tx;
    ASSERT_TRUE(other->BeginTableTransaction(tx));
    ASSERT_TRUE(other->ExecuteSql("UPDATE " + q("FilesSearchData") + " SET " + q("Qty") + " = 1 WHERE " + q("FileId") + " = 6"));
    waiting->release = [&] { other->EndTableTransaction(tx); };

    click(button("cmdApply"));
    settle();
    EXPECT_EQ(waiting->release, nullptr) << "the save never met the lock";
    EXPECT_TRUE(ui->requests().join('\n').contains("locked: ")) << qPrintable(ui->requests().join('\n'));
    EXPECT_EQ(stored("Customer", 5), "waited");
    EXPECT_FALSE(control->IsEditing());
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchLockTest);

} // namespace
