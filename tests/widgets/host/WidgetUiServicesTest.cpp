#include "searchdata/LockedMessage.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// Once the next modal window is up, hands it to `act`.
void whenModalAppears(std::function<void(QWidget*)> act)
{
    QTimer::singleShot(0, [act = std::move(act)] {
        QWidget* modal = nullptr;
        waitFor([&] { return (modal = QApplication::activeModalWidget()) != nullptr; });
        act(modal);
    });
}

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

TEST(WidgetUiServices, EnterTakesTheDefaultAnswerAndEscapeCancels)
{
    WidgetUiServices services;
    whenModalAppears([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Return); });
    EXPECT_EQ(services.AskYesNoCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::No), Answer::No);
    whenModalAppears([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Escape); });
    EXPECT_EQ(services.AskYesNoCancel(QStringLiteral("T"), QStringLiteral("Q"), Answer::Yes), Answer::Cancel);
}

TEST(WidgetUiServices, TheLockedMessageShowsItsTextsUntilClearedAndItsCancelEndsTheWait)
{
    WidgetUiServices services;
    const CDebugLockedMessage message = MakeLockedMessage(QStringLiteral("Waiting for Files"), QStringLiteral("In use"));
    services.ShowLockedMessage(message);

    QWidget* window = nullptr;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->windowTitle() == QStringLiteral("In use"))
            window = w;
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(services.KeepWaitingForLock(std::chrono::milliseconds(10)));

    auto* cancel = window->findChild<QPushButton*>();
    ASSERT_NE(cancel, nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    EXPECT_FALSE(services.KeepWaitingForLock(std::chrono::milliseconds(20)));

    services.ClearLockedMessage();
    EXPECT_FALSE(window->isVisible());
}
