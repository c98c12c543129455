#include "host/frmAbout.h"

#include "host/FormPlacement.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/widgets/AboutBox.h"
#include "searchdata/widgets/CFormInfo.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLibraryInfo>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QSysInfo>
#include <QVBoxLayout>

namespace searchdata {

namespace {

/// Major, minor and patch of the library's version as the build gives it, missing parts as 0.
QStringList versionParts()
{
    QStringList parts = QStringLiteral(SEARCHDATA_VERSION).split(u'.');
    while (parts.size() < 3)
        parts << QStringLiteral("0");
    return parts.mid(0, 3);
}

} // namespace

frmAbout::frmAbout(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmAbout"));
    const QString title = Diagnostics::instance().caption();

    picIcon = new QLabel(this);
    picIcon->setObjectName(QStringLiteral("picIcon"));
    picIcon->setPixmap(QPixmap::fromImage(QImage::fromData(GetResourcePicture(401))));
    picIcon->setAlignment(Qt::AlignTop);
    lblTitle = new QLabel(this);
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    QFont large = lblTitle->font();
    large.setBold(true);
    large.setPointSizeF(large.pointSizeF() * 1.5);
    lblTitle->setFont(large);
    lblVersion = new QLabel(this);
    lblVersion->setObjectName(QStringLiteral("lblVersion"));
    lblDescription = new QLabel(this);
    lblDescription->setObjectName(QStringLiteral("lblDescription"));
    lblDescription->setWordWrap(true);
    auto* rule = new QFrame(this);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Sunken);
    lblDisclaimer = new QLabel(this);
    lblDisclaimer->setObjectName(QStringLiteral("lblDisclaimer"));
    lblDisclaimer->setWordWrap(true);
    lblDisclaimer->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    cmdOk = new QPushButton(this);
    cmdOk->setObjectName(QStringLiteral("cmdOk"));
    cmdOk->setDefault(true);
    cmdSysInfo = new QPushButton(this);
    cmdSysInfo->setObjectName(QStringLiteral("cmdSysInfo"));
    cmdSysInfo->setAutoDefault(false);

    connect(cmdOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdSysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);

    auto* texts = new QVBoxLayout;
    texts->addWidget(lblTitle);
    texts->addWidget(lblVersion);
    texts->addSpacing(lblVersion->fontMetrics().height() / 2);
    texts->addWidget(lblDescription);
    auto* top = new QHBoxLayout;
    top->addWidget(picIcon);
    top->addSpacing(picIcon->fontMetrics().averageCharWidth() * 2);
    top->addLayout(texts, 1);
    auto* buttons = new QVBoxLayout;
    buttons->addWidget(cmdOk);
    buttons->addWidget(cmdSysInfo);
    buttons->addStretch(1);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(lblDisclaimer, 1);
    bottom->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(rule);
    layout->addLayout(bottom);

    RegisterLibraryForm(this);
    FormToJapanese(this);

    const QStringList version = versionParts();
    setWindowTitle(GetResourceText(7968, {title}));
    lblVersion->setText(GetResourceText(7969, version));
    lblTitle->setText(title);
    lblDescription->setText(
        GetResourceText(7970, {QStringLiteral("KVOSearchEdit"), QStringLiteral("\n"), GetResourceText(9400, {title})}));
    lblDisclaimer->setText(GetResourceText(7971));
    cmdOk->setText(GetResourceText(8066));
    cmdSysInfo->setText(GetResourceText(8084));
    // Wide enough that the description wraps into a few lines rather than a column.
    lblDescription->setMinimumWidth(lblDescription->fontMetrics().averageCharWidth() * 50);
    adjustSize();
}

QString frmAbout::SystemInformation()
{
    return QStringList{GetResourceText(9402, {QSysInfo::prettyProductName()}),
                       GetResourceText(9403, {QSysInfo::kernelType(), QSysInfo::kernelVersion()}),
                       GetResourceText(9404, {QSysInfo::currentCpuArchitecture()}),
                       GetResourceText(9405, {QLibraryInfo::version().toString()})}
        .join(u'\n');
}

void frmAbout::cmdSysInfo_Click()
{
    UiServices::current().ShowMessage(MessageKind::Information, GetResourceText(9401), SystemInformation());
}

void OpenAboutBox(QWidget* parent)
{
    const QPointer<frmAbout> form = new frmAbout(parent);
    CentreForm(*form, MakeFormInfo(parent ? parent->window() : nullptr).get());
    form->exec();
    // The form may have gone with the library's other windows meanwhile.
    delete form.data();
}

} // namespace searchdata
