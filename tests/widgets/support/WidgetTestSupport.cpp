#include "support/WidgetTestSupport.h"

#include <QApplication>
#include <QFontInfo>
#include <QTest>

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

Answer ScriptedUiServices::AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer)
{
    HeadlessUiServices::AskYesNoCancel(title, text, defaultAnswer);
    m_questions << text;
    return m_answers.isEmpty() ? defaultAnswer : m_answers.takeFirst();
}

} // namespace searchdata::test
