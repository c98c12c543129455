#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QDeadlineTimer>
#include <QFontInfo>
#include <QTest>
#include <QTimer>

namespace searchdata::test {

QFont pinnedFont()
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSizeF(9);
    return font;
}

void pinApplicationFont()
{
    const QFont font = pinnedFont();
    QApplication::setFont(font);
    // A missing family would fall back silently and change every width the layout tests compare.
    if (QFontInfo(font).family() != font.family())
        qFatal("font %s is not installed (scripts/install-deps.sh installs it)", qPrintable(font.family()));
}

bool waitFor(const std::function<bool()>& done, int timeoutMs)
{
    return QTest::qWaitFor(done, timeoutMs);
}

void whenModalAppears(std::function<void(QWidget*)> act, const QString& name)
{
    whenModalAppears(std::move(act), [name](const QWidget* modal) { return name.isEmpty() || modal->objectName() == name; });
}

namespace {

struct ModalWatch {
    std::function<void(QWidget*)> act;
    std::function<bool(const QWidget*)> which;
    QDeadlineTimer deadline;
};

// Polled from the event loop, never waited for inside it: the loop that runs the poll may be the
// progress display of the code under test, which has to go on for the window to come.
void pollForModal(const std::shared_ptr<ModalWatch>& watch)
{
    QWidget* modal = QApplication::activeModalWidget();
    if (modal && modal->isVisible() && watch->which(modal)) {
        watch->act(modal);
        return;
    }
    if (watch->deadline.hasExpired()) {
        ADD_FAILURE() << "no modal window of the kind awaited; up: " << (modal ? modal->metaObject()->className() : "none") << " "
                      << (modal ? qPrintable(modal->objectName()) : "");
        return;
    }
    QTimer::singleShot(10, [watch] { pollForModal(watch); });
}

} // namespace

void whenModalAppears(std::function<void(QWidget*)> act, std::function<bool(const QWidget*)> which)
{
    auto watch = std::make_shared<ModalWatch>(ModalWatch{std::move(act), std::move(which), QDeadlineTimer(5000)});
    QTimer::singleShot(0, [watch] { pollForModal(watch); });
}

void chooseByKeys(QComboBox* combo, int index)
{
    ASSERT_TRUE(combo->isEnabled()) << qPrintable(combo->objectName()) << " is closed";
    ASSERT_GE(index, 0) << "no such entry in " << qPrintable(combo->objectName());
    combo->setFocus(Qt::TabFocusReason);
    QTest::keyClick(combo, Qt::Key_Home);
    for (int i = 0; i < index; ++i)
        QTest::keyClick(combo, Qt::Key_Down);
    ASSERT_EQ(combo->currentIndex(), index);
}

Answer ScriptedUiServices::AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    HeadlessUiServices::AskYesNoCancel(title, text, defaultAnswer);
    return scriptedAnswer(text, defaultAnswer);
}

Answer ScriptedUiServices::AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    HeadlessUiServices::AskOkCancel(title, text, defaultAnswer);
    return scriptedAnswer(text, defaultAnswer);
}

Answer ScriptedUiServices::scriptedAnswer(const QString& text, Answer defaultAnswer)
{
    m_questions << text;
    return m_answers.isEmpty() ? defaultAnswer : m_answers.takeFirst();
}

} // namespace searchdata::test
