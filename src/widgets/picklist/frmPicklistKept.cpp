#include "picklist/frmPicklistKept.h"

#include "host/FormPlacement.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/CFormInfo.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace searchdata {

frmPicklistKept::frmPicklistKept(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmPicklistKept"));
    setWindowIcon(QApplication::windowIcon());

    lblPrompt = new QLabel(this);
    lblPrompt->setObjectName(QStringLiteral("lblPrompt"));
    lblPrompt->setWordWrap(true);
    lstKept = new QListWidget(this);
    lstKept->setObjectName(QStringLiteral("lstKept"));
    lstKept->setSelectionMode(QAbstractItemView::NoSelection);
    cmdOk = new QPushButton(this);
    cmdOk->setObjectName(QStringLiteral("cmdOk"));
    cmdClose = new QPushButton(this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));

    connect(cmdOk, &QPushButton::clicked, this, [this] {
        m_confirmed = true;
        accept();
    });
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::reject);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdOk);
    buttons->addWidget(cmdClose);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPrompt);
    layout->addWidget(lstKept, 1);
    layout->addLayout(buttons);
    FormToJapanese(this);
    lblPrompt->setMinimumWidth(lblPrompt->fontMetrics().averageCharWidth() * 50);

    RegisterLibraryForm(this);
}

bool frmPicklistKept::Prepare(QWidget* owner, const QStringList& kept, bool query)
{
    if (kept.isEmpty())
        return false;
    m_confirmed = false;
    setWindowTitle(GetResourceText(query ? 8548 : 8544));
    cmdOk->setVisible(query);
    cmdOk->setText(GetResourceText(8066));
    cmdClose->setText(GetResourceText(query ? 8073 : 8065));
    (query ? cmdOk : cmdClose)->setDefault(true);

    lstKept->clear();
    const qsizetype count = kept.size();
    if (count > kListLimit) {
        // A list of that length helps nobody: the count says enough.
        lstKept->hide();
        lblPrompt->setText(GetResourceText(query ? 8551 : 8547, {QString::number(count)}));
    } else if (count == 1) {
        lstKept->hide();
        lblPrompt->setText(GetResourceText(query ? 8549 : 8545, {kept.first()}));
    } else {
        lstKept->addItems(kept);
        lstKept->show();
        lblPrompt->setText(GetResourceText(query ? 8550 : 8546));
    }
    adjustSize();
    CentreForm(*this, MakeFormInfo(owner ? owner->window() : nullptr).get());
    return true;
}

bool frmPicklistKept::run(QWidget* owner, const QStringList& kept, bool query)
{
    const QPointer<frmPicklistKept> form = new frmPicklistKept(owner);
    bool confirmed = false;
    if (form->Prepare(owner, kept, query)) {
        form->exec();
        // The form may have gone with the library's other windows meanwhile.
        confirmed = form && form->Confirmed();
    }
    delete form.data();
    return confirmed;
}

void frmPicklistKept::Display(QWidget* owner, const QStringList& kept)
{
    run(owner, kept, false);
}

bool frmPicklistKept::QueryHide(QWidget* owner, const QStringList& kept)
{
    return run(owner, kept, true);
}

} // namespace searchdata
