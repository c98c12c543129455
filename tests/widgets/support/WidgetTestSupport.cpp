#include "support/WidgetTestSupport.h"

#include <QApplication>
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
    QTimer::singleShot(0, [name, act = std::move(act)] {
        QWidget* modal = nullptr;
        const bool up = waitFor([&] {
            modal = QApplication::activeModalWidget();
            return modal && modal->isVisible() && (name.isEmpty() || modal->objectName() == name);
        });
        EXPECT_TRUE(up) << "no modal window " << qPrintable(name);
        if (up)
            act(modal);
    });
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
