#include "searchdata/LockedMessage.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "support/TestDatabase.h"
#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// Notes the names of the windows that are shown while it lives.
class ShowWatcher : public QObject {
public:
    explicit ShowWatcher(QStringList& names) : m_names(names) { qApp->installEventFilter(this); }
    ~ShowWatcher() override { qApp->removeEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && watched->isWidgetType() && static_cast<QWidget*>(watched)->isWindow())
            m_names << watched->objectName();
        return false;
    }

private:
    QStringList& m_names;
};

} // namespace

TEST(WidgetUiServices, AQuestionGivesTheButtonTheUserPressed)
{
    struct Case {
        QMessageBox::StandardButton press;
        Answer expected;
    };
    for (const Case& c : {Case{QMessageBox::Yes, Answer::Yes}, Case{QMessageBox::No, Answer::No},
                          Case{QMessageBox::Cancel, Answer::Cancel}}) {
        WidgetUiServices services;
        QString shownText;
        whenModalAppears([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            ASSERT_NE(box, nullptr);
            shownText = box->text();
            QTest::mouseClick(box->button(c.press), Qt::LeftButton);
        });
        EXPECT_EQ(services.AskYesNoCancel(QStringLiteral("Title"), QStringLiteral("Keep it?"), Answer::Yes), c.expected);
        EXPECT_EQ(shownText, QStringLiteral("Keep it?"));
    }
}

TEST(WidgetUiServices, AnOkCancelQuestionGivesOkOrCancelAndEnterTakesTheDefault)
{
    WidgetUiServices services;
    whenModalAppears([](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->standardButtons(), QMessageBox::Ok | QMessageBox::Cancel);
        QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    });
    EXPECT_EQ(services.AskOkCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::Cancel), Answer::Ok);
    whenModalAppears([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Return); });
    EXPECT_EQ(services.AskOkCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::Cancel), Answer::Cancel);
}

TEST(WidgetUiServices, EnterTakesTheDefaultAnswerAndEscapeCancels)
{
    WidgetUiServices services;
    whenModalAppears([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Return); });
    EXPECT_EQ(services.AskYesNoCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::No), Answer::No);
    whenModalAppears([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Escape); });
    EXPECT_EQ(services.AskYesNoCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::Yes), Answer::Cancel);
}

/// The locked message window if one is shown.
QWidget* shownLockedMessage()
{
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->objectName() == QStringLiteral("frmLockedMessage") && w->isVisible())
            return w;
    return nullptr;
}

TEST(WidgetUiServices, TheLockedMessageShowsItsTextsUntilClearedAndItsCancelEndsTheWait)
{
    WidgetUiServices services;
    const CDebugLockedMessage message = MakeLockedMessage(QStringLiteral("Waiting for Files"), QStringLiteral("In use"));
    services.ShowLockedMessage(message);

    const QPointer<QWidget> window = shownLockedMessage();
    ASSERT_FALSE(window.isNull());
    EXPECT_EQ(named<QLabel>(window, QStringLiteral("lblTitle"))->text(), QStringLiteral("In use"));
    EXPECT_EQ(named<QLabel>(window, QStringLiteral("lblMessage"))->text(), QStringLiteral("Waiting for Files"));
    EXPECT_TRUE(services.KeepWaitingForLock(std::chrono::milliseconds(10)));

    auto* cancel = named<QPushButton>(window, QStringLiteral("cmdCancel"));
    ASSERT_NE(cancel, nullptr);
    EXPECT_EQ(cancel->text(), GetResourceText(8073));
    QTest::mouseClick(cancel, Qt::LeftButton);
    EXPECT_FALSE(services.KeepWaitingForLock(std::chrono::milliseconds(20)));

    services.ClearLockedMessage();
    EXPECT_TRUE(window.isNull());
    EXPECT_TRUE(services.KeepWaitingForLock(std::chrono::milliseconds(0))) << "a later wait starts afresh";
}

/// Statements on a table that another connection holds, with the real window.
class LockedWaitTest : public DatabaseTest {
protected:
    QString q(const QString& name) { return db().BracketName(name); }
};

TEST_P(LockedWaitTest, TheWindowShowsOnlyWhileAStatementWaitsAndItsCancelGivesUp)
{
    SD_ASSERT_SQL(testDb(), "CREATE TABLE " + q("T") + " (" + q("V") + " INTEGER)");
    SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("T") + " VALUES (1)");
    const ServicesGuard guard(std::make_shared<WidgetUiServices>());
    QStringList shown;
    ShowWatcher watcher(shown);

    ASSERT_TRUE(db().ExecuteSql("UPDATE " + q("T") + " SET " + q("V") + " = 2"));
    EXPECT_TRUE(shown.isEmpty()) << "no wait, no window";

    for (const bool cancel : {false, true}) {
        SCOPED_TRACE(cancel ? "cancelled" : "lock released");
        const std::shared_ptr<DatabaseHandler> other = testDb().openAnotherConnection();
        ASSERT_NE(other, nullptr);
        TransactionState hold;
        ASSERT_TRUE(other->BeginTableTransaction(hold));
        if (testDb().kind() == DbKind::PostgreSQL) {
            ASSERT_TRUE(other->ExecuteSql("LOCK TABLE " + q("T") + " IN ACCESS EXCLUSIVE MODE"));
        }

        QString title;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            QWidget* window = shownLockedMessage();
            if (!window)
                return;
            poll.stop();
            title = named<QLabel>(window, QStringLiteral("lblTitle"))->text();
            if (cancel) {
                QTest::mouseClick(named<QPushButton>(window, QStringLiteral("cmdCancel")), Qt::LeftButton);
            } else {
                EXPECT_TRUE(other->CommitTableTransaction(hold));
            }
        });
        poll.start(20);
        shown.clear();
        const CDebugLockedMessage message = MakeLockedMessage(QStringLiteral("Writing T"), QStringLiteral("T in use"));
        // A cancelled statement would write 9; the one that waits to the end writes 3.
        EXPECT_EQ(db().ExecuteSql("UPDATE " + q("T") + " SET " + q("V") + " = " + (cancel ? "9" : "3"), &message), !cancel);
        other->EndTableTransaction(hold);

        EXPECT_EQ(title, QStringLiteral("T in use"));
        EXPECT_EQ(shown, QStringList({QStringLiteral("frmLockedMessage")}));
        EXPECT_EQ(shownLockedMessage(), nullptr);
        EXPECT_EQ(testDb().scalar("SELECT " + q("V") + " FROM " + q("T")).toInt(), 3);
    }
}

SD_INSTANTIATE_DATABASE_SUITE(LockedWaitTest);
