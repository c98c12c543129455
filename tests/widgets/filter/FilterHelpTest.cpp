// The help of the filter dialog: the rules with today's dates, and what each column holds.

#include "filter/FilterDialogFixture.h"
#include "filter/frmFilterHelp.h"

#include "searchdata/CFilterColumns.h"
#include "searchdata/Resources.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

#include <QLocale>
#include <QRadioButton>
#include <QRegularExpression>
#include <QTest>
#include <QTextBrowser>
#include <QTextDocument>

using namespace searchdata;
using namespace searchdata::test;

namespace {

QString plainOf(const QString& html)
{
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}

} // namespace

TEST_P(FilterDialogTest, TheRulesShowTodayInThreeFormsThatTheDialogReads)
{
    const QDateTime now(QDate::currentDate(), QTime(15, 4, 5));
    const QString text = frmFilterHelp::GeneralHelpText(now);
    qsizetype at = 0;
    for (int number = 7592; number <= 7597; ++number) {
        if (number == 7596)
            continue;
        at = text.indexOf(GetResourceText(number) + "\n\n", at);
        EXPECT_GE(at, 0) << number << " in its place, followed by two line ends";
    }

    // The dates paragraph: today's long date and the form every machine reads, and the time alone.
    const QString longDate = QLocale().toString(now.date(), QLocale::LongFormat);
    const QString iso = now.toString("yyyy-MM-dd hh:mm:ss");
    QString pattern = QRegularExpression::escape(GetResourceText(7596));
    pattern.replace(QRegularExpression::escape("%1"), "(.+?)");
    pattern.replace(QRegularExpression::escape("%2"), QRegularExpression::escape(longDate));
    pattern.replace(QRegularExpression::escape("%3"), QRegularExpression::escape(iso));
    const QRegularExpressionMatch found = QRegularExpression(pattern).match(text);
    ASSERT_TRUE(found.hasMatch()) << qPrintable(text);
    const QString time = found.captured(1);
    for (const QString& example : {time, longDate, iso}) {
        const auto read = ParseDateText(example);
        ASSERT_TRUE(read.ok()) << qPrintable(example) << " does not read";
        EXPECT_TRUE(example == time ? read.value().time() == now.time() : read.value().date() == now.date()) << qPrintable(example);
    }
}

TEST_P(FilterDialogTest, TheColumnsViewDescribesEveryColumnAndUsableBaseField)
{
    const QString text = plainOf(frmFilterHelp::ColumnsHelpText(*columns));
    for (const auto& column : *columns) {
        EXPECT_TRUE(text.contains(column->CaptionOrName())) << qPrintable(column->Name());
        EXPECT_TRUE(text.contains(column->Description())) << qPrintable(column->Name());
    }
    for (const char* kind : {"Text, up to 50 characters", "Number", "Date and time", "Yes/No", "Keywords, up to 20 characters"})
        EXPECT_TRUE(text.contains(kind)) << kind;
    EXPECT_TRUE(text.contains("Quantity\nNumber\nThe part's own field Qty.")) << qPrintable(text);
    EXPECT_TRUE(text.contains("The part's own field Name."));
    EXPECT_FALSE(text.contains("Internal"));
    EXPECT_FALSE(text.contains("Picture"));
    EXPECT_LT(text.indexOf("Made by"), text.indexOf("Tags")) << "columns in their order";
    EXPECT_LT(text.indexOf("Tags"), text.indexOf("Quantity")) << "base fields after the columns";
}

TEST_P(FilterDialogTest, TheHelpWindowSwitchesBetweenItsTwoViews)
{
    frmFilterHelp help;
    help.Prepare(columns);
    help.show();
    EXPECT_EQ(help.windowTitle(), "Finding parts");
    auto* view = named<QTextBrowser>(&help, "rtfHelp");
    auto* general = named<QRadioButton>(&help, "optView_0");
    auto* described = named<QRadioButton>(&help, "optView_1");
    ASSERT_TRUE(view && general && described);
    EXPECT_TRUE(view->isReadOnly());
    EXPECT_TRUE(general->isChecked());
    EXPECT_TRUE(view->toPlainText().startsWith(GetResourceText(7592)));

    QTest::mouseClick(described, Qt::LeftButton);
    EXPECT_TRUE(view->toPlainText().contains("Who made the part"));
    QTest::mouseClick(general, Qt::LeftButton);
    EXPECT_TRUE(view->toPlainText().startsWith(GetResourceText(7592)));

    auto* strip = named<QWidget>(&help, "picButtons");
    help.resize(400, 300);
    EXPECT_EQ(view->geometry().bottom() + 1, strip->y()) << "the text fills the window above the strip";
    EXPECT_EQ(strip->geometry().bottom() + 1, help.height());
}
