// The demo host as a user drives it: started on a fresh database, filtering through the dialog,
// editing through the entry control (also while another user holds the row), defining a column,
// the administrator's operations, importing a file and the about box.

#include "DemoStart.h"
#include "DemoWindow.h"
#include "config/ConfigTestSupport.h"
#include "filter/frmFilter.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/DemoDatabase.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "support/TestDatabase.h"
#include "support/WidgetTestSupport.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QSqlTableModel>
#include <QStandardPaths>
#include <QTableView>
#include <QTest>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::demo;
using namespace searchdata::test;

namespace {

constexpr int kFiles = 40;

/// Once a message box is up, presses its `button`, after `before` (may be empty) had a look at it.
void answerMessage(QMessageBox::StandardButton button, std::function<void(QMessageBox*)> before = {})
{
    whenModalAppears(
        [button, before = std::move(before)](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            if (before)
                before(box);
            ASSERT_NE(box->button(button), nullptr) << qPrintable(box->text());
            box->button(button)->click();
        },
        [](const QWidget* modal) { return qobject_cast<const QMessageBox*>(modal) != nullptr; });
}

class DemoWindowTest : public DatabaseTest {
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        window = StartDemo(testDb().location(), testDb().tempDir().filePath(QStringLiteral("profile.ini")), kFiles);
        ASSERT_NE(window, nullptr);
        showActive(window.get());
        control = window->entryControl();
        view = named<QTableView>(window.get(), QStringLiteral("tblRecords"));
        ASSERT_NE(view, nullptr);
    }
    void TearDown() override
    {
        window.reset();
        UiServices::install(nullptr);
        DatabaseTest::TearDown();
    }

    QAction* action(const QString& name) const
    {
        auto* found = window->findChild<QAction*>(name);
        EXPECT_NE(found, nullptr) << qPrintable(name);
        return found;
    }
    QString q(const QString& name) { return db().BracketName(name); }
    /// The keys of Files that `where` selects, read through a connection of the test's own.
    QList<qint32> filesWhere(const QString& where)
    {
        QList<qint32> keys;
        QSqlQuery query(db().database());
        EXPECT_TRUE(query.exec("SELECT " + q("Id") + " FROM " + q("Files") + " WHERE " + where + " ORDER BY " + q("Id")))
            << qPrintable(query.lastError().text());
        while (query.next())
            keys << query.value(0).toInt();
        return keys;
    }
    /// The keys of the rows the window's table shows, top to bottom.
    QList<qint32> shownKeys() const
    {
        QList<qint32> keys;
        for (int row = 0; row < window->model()->rowCount(); ++row)
            keys << window->model()->record(row).value(QStringLiteral("Id")).toInt();
        return keys;
    }
    QVariant searchValue(const QString& column, qint32 id)
    {
        return testDb().scalar("SELECT " + q(column) + " FROM " + q("FilesSearchData") + " WHERE " + q("Id") + " = " + QString::number(id));
    }
    /// A machine program `name` with `text` in the test's folder; its path, blank when it cannot be written.
    QString programFile(const QString& name, const QByteArray& text)
    {
        const QString path = testDb().tempDir().filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            return {};
        return path;
    }
    QLineEdit* field(int index) const { return named<QLineEdit>(control, QStringLiteral("txtTextField_%1").arg(index)); }
    /// Moves the current row of the table with the arrow keys, as the user does.
    void moveRow(Qt::Key key)
    {
        view->setFocus();
        QTest::keyClick(view, key);
    }
    /// Starts an edit session and types `text` into the field of column `index`.
    void edit(int index, const QString& text)
    {
        click(control, QStringLiteral("cmdEdit"));
        ASSERT_TRUE(control->IsEditing());
        typeInto(field(index), text);
        // The buttons follow the change once the control's update has run.
        auto* apply = named<QPushButton>(control, QStringLiteral("cmdApply"));
        auto* cancel = named<QPushButton>(control, QStringLiteral("cmdCancel"));
        ASSERT_TRUE(waitFor([&] { return apply->isEnabled() && cancel->isVisible(); }));
    }

    std::unique_ptr<DemoWindow> window;
    UKVOSearch* control = nullptr;
    QTableView* view = nullptr;
};

// The columns of the demonstration set of Files, in order: DrawingNo, PartNo, Customer (a picklist).
constexpr int kPartNo = 1;

TEST_P(DemoWindowTest, StartsOnAFreshDatabaseWithTheDemoTablesAndTheFirstRecordInTheControl)
{
    EXPECT_EQ(window->tableName(), QStringLiteral("Files"));
    EXPECT_EQ(shownKeys(), filesWhere("1 = 1"));
    EXPECT_EQ(shownKeys().size(), kFiles);
    EXPECT_EQ(window->currentId(), 1);
    EXPECT_EQ(field(kPartNo)->text(), searchValue("PartNo", 1).toString());
    EXPECT_FALSE(field(kPartNo)->text().isEmpty());

    action(QStringLiteral("actTablePackets"))->trigger();
    EXPECT_EQ(window->model()->tableName(), QStringLiteral("Packets"));
    EXPECT_EQ(window->model()->rowCount(), DemoDatabase::packetCount(kFiles));
    EXPECT_TRUE(action(QStringLiteral("actEditPicklists"))->isEnabled());
    EXPECT_TRUE(named<QLabel>(control, QStringLiteral("lblField_0"))->text().startsWith(QStringLiteral("Operation Number")));
}

TEST_P(DemoWindowTest, TheFilterOfTheDialogShowsTheRowsThatItsSqlSelects)
{
    whenModalAppears([&](QWidget* modal) {
        ASSERT_TRUE(QTest::qWaitForWindowActive(modal));
        const auto combo = [&](const char* name, int row) { return named<QComboBox>(modal, QStringLiteral("%1_%2").arg(name).arg(row)); };
        chooseByKeys(combo("imgcboFields", 0), combo("imgcboFields", 0)->findData("Customer", frmFilter::KeyRole));
        chooseByKeys(combo("cboComparison", 0), combo("cboComparison", 0)->findData(int(kvoOP_Equals)));
        typeInto(named<QLineEdit>(modal, "txtCompareTo_0"), "Phillips Mfg");
        chooseByKeys(combo("cboConjunction", 1), combo("cboConjunction", 1)->findData(int(kvoCJ_OR)));
        const QString size = db().dialect().QualifiedName("Size", "Files");
        chooseByKeys(combo("imgcboFields", 1), combo("imgcboFields", 1)->findData(size, frmFilter::KeyRole));
        chooseByKeys(combo("cboComparison", 1), combo("cboComparison", 1)->findData(int(kvoOP_Greater)));
        typeInto(named<QLineEdit>(modal, "txtCompareTo_1"), "240000");
        click(modal, "cmdOK");
    }, QStringLiteral("frmFilter"));
    action(QStringLiteral("actFilter"))->trigger();

    // The same filter made by the core on its own gives the SQL whose rows the window must show.
    auto expected = std::make_shared<CFilterTerms>(control->MyFilter()->FilterColumns());
    expected->Add(kvoCJ_None, "FilesSearchData", "Customer", kvoCC_Text, kvoOP_Equals, "Phillips Mfg");
    expected->Add(kvoCJ_OR, "Files", "Size", kvoCC_Numeric, kvoOP_Greater, "240000");
    const QList<qint32> selected = filesWhere(expected->SQLString());
    ASSERT_FALSE(selected.isEmpty());
    ASSERT_LT(selected.size(), kFiles);
    EXPECT_EQ(shownKeys(), selected);
    EXPECT_EQ(window->currentId(), selected.first());
    const QString status = named<QLabel>(window.get(), "lblStatus")->text();
    EXPECT_TRUE(status.startsWith(QStringLiteral("%1 of %2 ").arg(selected.size()).arg(kFiles))) << qPrintable(status);
    EXPECT_TRUE(status.contains("Customer equals \"Phillips Mfg\" Or Size is greater than \"240000\"")) << qPrintable(status);

    action(QStringLiteral("actClearFilter"))->trigger();
    EXPECT_EQ(shownKeys().size(), kFiles);
    EXPECT_FALSE(action(QStringLiteral("actClearFilter"))->isEnabled());
}

TEST_P(DemoWindowTest, AValueAppliedInTheControlIsInTheDatabaseAndShowsAgainAfterMovingAwayAndBack)
{
    edit(kPartNo, "P-9999-A");
    click(control, QStringLiteral("cmdApply"));
    EXPECT_FALSE(control->IsEditing());
    EXPECT_EQ(searchValue("PartNo", 1).toString(), QStringLiteral("P-9999-A"));

    moveRow(Qt::Key_Down);
    EXPECT_EQ(window->currentId(), 2);
    EXPECT_EQ(field(kPartNo)->text(), searchValue("PartNo", 2).toString());
    moveRow(Qt::Key_Up);
    EXPECT_EQ(window->currentId(), 1);
    EXPECT_EQ(field(kPartNo)->text(), QStringLiteral("P-9999-A"));
}

struct LeaveCase {
    QMessageBox::StandardButton answer;
    bool saved;
    qint32 shownAfter;
};

TEST_P(DemoWindowTest, MovingAwayFromUnsavedChangesAsksWhetherToSaveThem)
{
    const QList<LeaveCase> cases = {{QMessageBox::Yes, true, 2}, {QMessageBox::No, false, 2}, {QMessageBox::Cancel, false, 1}};
    for (const LeaveCase& c : cases) {
        SCOPED_TRACE(c.answer);
        const QVariant before = searchValue("PartNo", 1);
        edit(kPartNo, "P-0001-" + QString::number(int(c.answer)));
        answerMessage(c.answer);
        moveRow(Qt::Key_Down);
        EXPECT_EQ(window->currentId(), c.shownAfter);
        EXPECT_EQ(searchValue("PartNo", 1), c.saved ? QVariant("P-0001-" + QString::number(int(c.answer))) : before);
        // Back to the first record, out of any session, for the next case.
        if (control->IsEditing())
            click(control, QStringLiteral("cmdCancel"));
        if (window->currentId() != 1)
            moveRow(Qt::Key_Up);
        ASSERT_EQ(window->currentId(), 1);
        ASSERT_FALSE(control->IsEditing());
    }
}

TEST_P(DemoWindowTest, AColumnDefinedThroughTheColumnDialogsShowsInTheControl)
{
    whenModalAppears([](QWidget* dialog) {
        newColumnThroughTheDialogs(dialog, {.name = "Batch", .type = fcText, .size = 12, .caption = "Batch Number"});
        click(dialog, "cmdApply");
        click(dialog, "cmdCancel");
    }, QStringLiteral("frmConfigure"));
    action(QStringLiteral("actConfigure"))->trigger();

    EXPECT_TRUE(named<QLabel>(control, QStringLiteral("lblField_3"))->text().startsWith(QStringLiteral("Batch Number")));
    ASSERT_NE(field(3), nullptr);
    edit(3, "B-17");
    click(control, QStringLiteral("cmdApply"));
    EXPECT_EQ(searchValue("Batch", 1).toString(), QStringLiteral("B-17"));
}

TEST_P(DemoWindowTest, ViewDataShowsTheCurrentRecordInTheExamineWindow)
{
    moveRow(Qt::Key_Down);
    QString shown;
    whenModalAppears([&](QWidget* examine) {
        shown = named<QLineEdit>(examine, QStringLiteral("txtTextField_1"))->text();
        QTest::keyClick(examine, Qt::Key_Escape);
    }, QStringLiteral("frmExamine"));
    action(QStringLiteral("actViewData"))->trigger();
    EXPECT_FALSE(shown.isEmpty());
    EXPECT_EQ(shown, searchValue("PartNo", 2).toString());
}

struct RepairCase {
    const char* action;
    /// What breaks the search data of record 5 before the operation.
    QString (*damage)(DatabaseHandler&);
    /// Whether the search data of record 5 is whole again.
    bool (*whole)(TestDatabase&);
};

TEST_P(DemoWindowTest, CheckAndPopulateAskTheUserBeforeTheyRepair)
{
    const QList<RepairCase> cases = {
        {"actPopulate",
         [](DatabaseHandler& d) { return "DELETE FROM " + d.BracketName("FilesSearchData") + " WHERE " + d.BracketName("Id") + " = 5"; },
         [](TestDatabase& t) {
             const auto& d = *t.handler();
             return t.scalar("SELECT COUNT(*) FROM " + d.BracketName("FilesSearchData") + " WHERE " + d.BracketName("Id") + " = 5").toInt() == 1;
         }},
        {"actCheck",
         [](DatabaseHandler& d) { return "ALTER TABLE " + d.BracketName("FilesSearchData") + " DROP COLUMN " + d.BracketName("DrawingNo"); },
         [](TestDatabase& t) {
             const auto& d = *t.handler();
             return t.scalar("SELECT COUNT(" + d.BracketName("DrawingNo") + ") FROM " + d.BracketName("FilesSearchData")).isValid();
         }},
    };
    for (const RepairCase& c : cases) {
        SCOPED_TRACE(c.action);
        SD_ASSERT_SQL(testDb(), c.damage(db()));
        ASSERT_FALSE(c.whole(testDb()));

        // No leaves the data as it is.
        answerMessage(QMessageBox::No);
        action(c.action)->trigger();
        EXPECT_FALSE(c.whole(testDb()));

        // Yes repairs, and says so.
        QString said;
        answerMessage(QMessageBox::Yes, [&](QMessageBox*) {
            answerMessage(QMessageBox::Ok, [&](QMessageBox* box) { said = box->text(); });
        });
        action(c.action)->trigger();
        EXPECT_TRUE(c.whole(testDb()));
        EXPECT_TRUE(said.contains("now")) << qPrintable(said);

        // A second run finds nothing to ask about.
        answerMessage(QMessageBox::Ok, [&](QMessageBox* box) { said = box->text(); });
        action(c.action)->trigger();
        EXPECT_FALSE(said.contains("now")) << qPrintable(said);
        EXPECT_FALSE(said.contains("?")) << qPrintable(said);
    }
}

TEST_P(DemoWindowTest, AnImportWithLinesThatFailShowsTheErrorLogAndKeepsTheOthers)
{
    const QString path = programFile("flange.nc", "O4711 (FLANGE)\n(Begin Search Data)\n(PartNo: P-4711-Y)\n(Colour: red)\n(End Search Data)\nM30\n");
    ASSERT_FALSE(path.isEmpty());

    QString log;
    whenModalAppears([&](QWidget* dialog) {
        log = named<QPlainTextEdit>(dialog, "txtErrorLog")->toPlainText();
        click(dialog, "cmdOK");
    }, QStringLiteral("dlgImportErrors"));
    window->importDataBlock(path);

    EXPECT_TRUE(log.contains("Colour")) << qPrintable(log);
    EXPECT_EQ(searchValue("PartNo", 1).toString(), QStringLiteral("P-4711-Y"));
    EXPECT_EQ(field(kPartNo)->text(), QStringLiteral("P-4711-Y"));
}

struct ImportCase {
    const char* what;
    bool choose; ///< false: the user cancels the file dialog
};

TEST_P(DemoWindowTest, ImportAsksForTheFileAndImportsTheOneChosen)
{
    const QString path = programFile("bracket.nc", "O5150 (BRACKET)\n(Begin Search Data)\n(PartNo: P-5150-Z)\n(End Search Data)\nM30\n");
    ASSERT_FALSE(path.isEmpty());
    const QString before = searchValue("PartNo", 1).toString();
    ASSERT_NE(before, QStringLiteral("P-5150-Z"));

    for (const ImportCase c : {ImportCase{"cancelled", false}, ImportCase{"chosen", true}}) {
        SCOPED_TRACE(c.what);
        QString title;
        whenModalAppears(
            [&](QWidget* modal) {
                title = modal->windowTitle();
                ASSERT_TRUE(QTest::qWaitForWindowActive(modal));
                if (!c.choose) {
                    QTest::keyClick(modal, Qt::Key_Escape);
                    return;
                }
                auto* name = named<QLineEdit>(modal, QStringLiteral("fileNameEdit"));
                ASSERT_NE(name, nullptr);
                typeInto(name, path);
                QTest::keyClick(name, Qt::Key_Return);
            },
            [](const QWidget* modal) { return qobject_cast<const QFileDialog*>(modal) != nullptr; });
        action(QStringLiteral("actImport"))->trigger();

        EXPECT_EQ(title, GetResourceText(9493));
        const QString expected = c.choose ? QStringLiteral("P-5150-Z") : before;
        EXPECT_EQ(searchValue("PartNo", 1).toString(), expected);
        EXPECT_EQ(field(kPartNo)->text(), expected);
    }
}

TEST_P(DemoWindowTest, AboutShowsTheLibrarysAboutBoxOverTheDemo)
{
    QString title, heading, version;
    const QWidget* over = nullptr;
    whenModalAppears([&](QWidget* about) {
        title = about->windowTitle();
        heading = named<QLabel>(about, QStringLiteral("lblTitle"))->text();
        version = named<QLabel>(about, QStringLiteral("lblVersion"))->text();
        over = about->parentWidget() ? about->parentWidget()->window() : nullptr;
        QTest::keyClick(about, Qt::Key_Return);
    }, QStringLiteral("frmAbout"));
    action(QStringLiteral("actAbout"))->trigger();

    const QString library = Diagnostics::instance().caption();
    EXPECT_EQ(over, window.get());
    EXPECT_EQ(title, GetResourceText(7968, {library}));
    EXPECT_EQ(heading, library);
    EXPECT_TRUE(version.endsWith(QStringLiteral(" " SEARCHDATA_PROJECT_VERSION))) << qPrintable(version);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_P(DemoWindowTest, ASaveThatMeetsAnotherUsersLockWaitsInTheLockedWindowAndCompletesWhenTheLockGoes)
{
    edit(kPartNo, "P-7000-L");
    const std::shared_ptr<DatabaseHandler> other = testDb().openAnotherConnection();
    ASSERT_NE(other, nullptr);
    TransactionState hold;
    ASSERT_TRUE(other->BeginTableTransaction(hold));
    // The other user's change of the same search row: the save has to wait for its row on any database.
    ASSERT_TRUE(other->ExecuteSql("UPDATE " + q("FilesSearchData") + " SET " + q("PartNo") + " = 'other' WHERE " + q("Id") + " = 1"));

    bool released = false;
    const auto release = [&] {
        if (!released)
            other->EndTableTransaction(hold);
        released = true;
    };
    const QWidget* over = nullptr;
    bool shown = false;
    whenModalAppears([&](QWidget* locked) {
        shown = true;
        over = locked->parentWidget();
        release();
    }, QStringLiteral("frmLockedMessage"));
    // Without the window nobody would let go, and the save would wait for ever.
    QTimer giveUp;
    giveUp.setSingleShot(true);
    QObject::connect(&giveUp, &QTimer::timeout, release);
    giveUp.start(8000);
    click(control, QStringLiteral("cmdApply"));
    release();

    EXPECT_TRUE(shown) << "the save never showed that it waits";
    EXPECT_EQ(over, window.get());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_FALSE(control->IsEditing());
    EXPECT_EQ(searchValue("PartNo", 1).toString(), QStringLiteral("P-7000-L"));
}

TEST_P(DemoWindowTest, EditPicklistsIsOpenOnlyWhileTheTableHasAPicklistColumn)
{
    QAction* editPicklists = action(QStringLiteral("actEditPicklists"));
    ASSERT_TRUE(editPicklists->isEnabled()) << "Customer is a picklist";
    const std::shared_ptr<CFilterColumns> columns = control->MyFilter()->FilterColumns();
    columns->RemoveColumn(QStringLiteral("Customer"));
    ASSERT_TRUE(columns->ColumnsSave(nullptr));
    action(QStringLiteral("actTablePackets"))->trigger();
    action(QStringLiteral("actTableFiles"))->trigger();
    EXPECT_FALSE(editPicklists->isEnabled());

    whenModalAppears([](QWidget* dialog) {
        newColumnThroughTheDialogs(dialog, {.name = "Grade", .type = fcText, .size = 8, .caption = "Grade", .picklist = true, .defaultText = "A"});
        click(dialog, "cmdApply");
        click(dialog, "cmdCancel");
    }, QStringLiteral("frmConfigure"));
    action(QStringLiteral("actConfigure"))->trigger();
    EXPECT_TRUE(editPicklists->isEnabled());

    // The one picklist goes straight to its editor.
    QString title;
    whenModalAppears([&](QWidget* dialog) {
        title = dialog->windowTitle();
        QTest::keyClick(dialog, Qt::Key_Escape);
    }, QStringLiteral("frmPicklistEdit"));
    editPicklists->trigger();
    EXPECT_EQ(title, GetResourceText(8352, {QStringLiteral("Files"), QStringLiteral("Grade")}));
}

SD_INSTANTIATE_DATABASE_SUITE(DemoWindowTest);

TEST(DemoStart, TheFirstStartMakesTheDemoDatabaseInTheDataFolderAndLaterStartsOpenIt)
{
    // The user's own data folder stays untouched.
    QStandardPaths::setTestModeEnabled(true);
    QTemporaryDir dir;
    const QString location = DefaultDemoLocation();
    EXPECT_TRUE(location.startsWith(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)));
    QFile::remove(location);
    {
        const auto first = StartDemo({}, dir.filePath("profile.ini"), 12);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(first->model()->rowCount(), 12);
        ASSERT_TRUE(first->database()->ExecuteSql("UPDATE [FilesSearchData] SET [PartNo] = 'kept' WHERE [Id] = 3"));
    }
    ASSERT_TRUE(QFile::exists(location));
    {
        const auto again = StartDemo({}, dir.filePath("profile.ini"), 12);
        ASSERT_NE(again, nullptr);
        EXPECT_EQ(again->model()->rowCount(), 12);
        auto rs = again->database()->OpenSqlRecordset("SELECT [PartNo] FROM [FilesSearchData] WHERE [Id] = 3");
        ASSERT_NE(rs, nullptr);
        EXPECT_EQ(rs->field("PartNo").text(), QStringLiteral("kept"));
    }
    UiServices::install(nullptr);
    QFile::remove(location);
}

TEST(DemoStart, ADatabaseThatCannotBeOpenedIsToldAndGivesNoWindow)
{
    QString said;
    answerMessage(QMessageBox::Ok, [&](QMessageBox* box) { said = box->text(); });
    EXPECT_EQ(StartDemo("/nonexistent-folder/sub/demo.sqlite", {}, 12), nullptr);
    EXPECT_TRUE(said.contains("/nonexistent-folder/sub/demo.sqlite")) << qPrintable(said);
    UiServices::install(nullptr);
}

} // namespace
