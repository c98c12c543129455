#include "filter/frmFilterHelp.h"

#include "filter/frmFilter.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Resources.h"
#include "searchdata/Validation.h"
#include "searchdata/Value.h"

#include <QFrame>
#include <QLocale>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QTextBrowser>
#include <algorithm>

namespace searchdata {

namespace {

constexpr int kFirstGeneral = 7592;
constexpr int kLastGeneral = 7597;
constexpr int kDates = 7596;
constexpr int kOptGeneral = 7599;
constexpr int kOptColumns = 7598;
constexpr int kMnuHelpDisplay = 7591;
constexpr int kCmdOk = 8066;
constexpr int kClassWithLength = 9300;

constexpr int kMargin = 8;

QString entry(const QString& heading, const QStringList& lines)
{
    QString html = QStringLiteral("<p><b>") + heading.toHtmlEscaped() + QStringLiteral("</b>");
    for (const QString& line : lines)
        if (!line.isEmpty())
            html += QStringLiteral("<br>") + line.toHtmlEscaped();
    return html + QStringLiteral("</p>");
}

} // namespace

frmFilterHelp::frmFilterHelp(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmFilterHelp"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    rtfHelp = new QTextBrowser(this);
    rtfHelp->setObjectName(QStringLiteral("rtfHelp"));
    rtfHelp->setReadOnly(true);
    picButtons = new QFrame(this);
    picButtons->setObjectName(QStringLiteral("picButtons"));
    for (int i = 0; i < 2; ++i) {
        optView[i] = new QRadioButton(picButtons);
        optView[i]->setObjectName(QStringLiteral("optView_%1").arg(i));
        connect(optView[i], &QRadioButton::toggled, this, [this](bool on) {
            if (on)
                InitializeHelp();
        });
    }
    cmdOk = new QPushButton(picButtons);
    cmdOk->setObjectName(QStringLiteral("cmdOk"));
    cmdOk->setDefault(true);
    connect(cmdOk, &QPushButton::clicked, this, &QDialog::accept);
    resize(560, 440);
    RegisterLibraryForm(this);
    FormToJapanese(this);
}

frmFilterHelp::~frmFilterHelp() = default;

void frmFilterHelp::Display(const std::shared_ptr<CFilterColumns>& columns, QWidget* owner)
{
    // The clean-up of the library's windows may destroy the window while it runs.
    const QPointer<frmFilterHelp> help = new frmFilterHelp(owner);
    help->Prepare(columns);
    help->exec();
    delete help.data();
}

void frmFilterHelp::Prepare(const std::shared_ptr<CFilterColumns>& columns)
{
    m_columns = columns;
    const auto& host = m_columns ? m_columns->BaseTableObject() : nullptr;
    const QString caption = host ? host->EditFilterHelpCaption() : QString();
    setWindowTitle(caption.isEmpty() ? GetResourceText(kMnuHelpDisplay) : caption);
    InitializeControls();
    InitializeHelp();
}

QString frmFilterHelp::GeneralHelpText(const QDateTime& now)
{
    const QLocale locale;
    // The time as the dialog reads a time alone, the long date, and the form every machine reads.
    const QString longTime = DateToText(QDateTime(Value::zeroDate().date(), now.time()));
    const QString longDate = locale.toString(now.date(), QLocale::LongFormat);
    const QString iso = now.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    QString text;
    for (int number = kFirstGeneral; number <= kLastGeneral; ++number)
        text += (number == kDates ? GetResourceText(number, {longTime, longDate, iso}) : GetResourceText(number)) + QStringLiteral("\n\n");
    return text;
}

QString frmFilterHelp::ColumnsHelpText(const CFilterColumns& columns)
{
    QString html;
    for (const auto& column : columns) {
        const FilterComparisonClasses comparisonClass = ComparisonClassFromColumn(column.get());
        QString kind = ComparisonClassName(comparisonClass);
        if ((comparisonClass == kvoCC_Text || comparisonClass == kvoCC_Keyword) && column->TextLengthInUI() > 0)
            kind = GetResourceText(kClassWithLength, {kind, QString::number(column->TextLengthInUI())});
        html += entry(column->CaptionOrName(), {column->Description(), kind});
    }
    const auto& host = columns.BaseTableObject();
    for (const StructureColumn& field : frmFilter::BaseFields(columns))
        html += entry(field.displayNameOrName(), {ComparisonClassName(ComparisonClassFromColumn(&field)),
                                                  host ? host->EditFilterColumnHelpText(field.name) : QString()});
    return html;
}

QString frmFilterHelp::ComparisonClassName(FilterComparisonClasses comparisonClass)
{
    switch (comparisonClass) {
    case kvoCC_Boolean:
        return GetResourceText(7600);
    case kvoCC_Keyword:
        return GetResourceText(7602);
    case kvoCC_Text:
        return GetResourceText(7604);
    case kvoCC_Numeric:
        return GetResourceText(7603);
    case kvoCC_Date:
        return GetResourceText(7601);
    default:
        return {};
    }
}

void frmFilterHelp::InitializeControls()
{
    optView[0]->setText(GetResourceText(kOptGeneral));
    optView[1]->setText(GetResourceText(kOptColumns));
    cmdOk->setText(GetResourceText(kCmdOk));
    // The option buttons stand one over the other; the strip is as high as they are.
    int top = kMargin / 2;
    for (QRadioButton* option : optView) {
        option->setGeometry(kMargin, top, option->sizeHint().width(), option->sizeHint().height());
        top += option->height();
    }
    picButtons->setFixedHeight(top + kMargin / 2);
    optView[0]->setChecked(true);
    ArrangeControls();
}

void frmFilterHelp::InitializeHelp()
{
    if (optView[1]->isChecked() && m_columns)
        rtfHelp->setHtml(ColumnsHelpText(*m_columns));
    else
        rtfHelp->setPlainText(GeneralHelpText(QDateTime::currentDateTime()));
}

void frmFilterHelp::ArrangeControls()
{
    const int strip = picButtons->height();
    rtfHelp->setGeometry(0, 0, width(), std::max(0, height() - strip));
    picButtons->setGeometry(0, height() - strip, width(), strip);
    const QSize ok(std::max(cmdOk->sizeHint().width(), 80), cmdOk->sizeHint().height());
    cmdOk->setGeometry(width() - kMargin - ok.width(), (strip - ok.height()) / 2, ok.width(), ok.height());
}

void frmFilterHelp::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    ArrangeControls();
}

} // namespace searchdata
