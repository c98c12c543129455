#include "searchdata/widgets/frmExamine.h"

#include "host/FormPlacement.h"
#include "host/LanguageAdaptation.h"
#include "host/LibraryForms.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/widgets/UKVOSearch.h"

#include <QCloseEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace searchdata {

frmExamine::frmExamine(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmExamine"));
    kseEdit = new UKVOSearch(this);
    kseEdit->setObjectName(QStringLiteral("kseEdit"));
    // The window is the control's host: nothing here stands against editing the record.
    connect(kseEdit, &UKVOSearch::OnStartEditing, this, [](ISearchBaseEntry*, bool* accepted) { *accepted = true; });
    connect(kseEdit, &UKVOSearch::CancelButtonClick, this, [this] { done(QDialog::Rejected); });
    connect(kseEdit, &UKVOSearch::OkButtonClick, this, &frmExamine::kseEdit_OkButtonClick);

    RegisterLibraryForm(this);
    FormToJapanese(this);
    const QSizeF screen = UiServices::current().UsableScreenSize();
    resize(qRound(screen.width() * 0.8), qRound(screen.height() * 0.8));
    formResize();
}

frmExamine::~frmExamine()
{
    // The control holds this window as its geometry: it goes while the window is still whole.
    delete kseEdit;
}

void frmExamine::Edit(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner)
{
    Prepare(kseModeEdit, columns, entry, source, owner);
    exec();
}

void frmExamine::View(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner)
{
    Prepare(kseModeExamine, columns, entry, source, owner);
    exec();
}

void frmExamine::Prepare(KVOSearchEditExamineModes mode, CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source,
                         const IFormInfo* owner)
{
    setWindowTitle(GetResourceText(mode == kseModeEdit ? 6816 : 6819));
    // The window owns the control, so the control never holds its geometry longer than it lives.
    const std::shared_ptr<IContainer> geometry(std::shared_ptr<IContainer>(), this);
    // The collection keeps no convert mode; its open takes none either.
    kseEdit->OpenSearch(geometry, columns.Handler(), columns.BaseTableObject(), columns.Catalog(), columns.Profile(), 0,
                        columns.BaseStructure());
    kseEdit->Display(source, entry, mode);
    PositionForm(*this, columns, owner);
}

float frmExamine::Height() const
{
    return float(frameGeometry().height());
}

float frmExamine::Left() const
{
    return float(frameGeometry().x());
}

float frmExamine::ScaleWidth() const
{
    return float(width());
}

void frmExamine::SizeMin()
{
    // Kept as the inner size: a window manager tells the frame only once the window shows.
    m_sizeMin = QSizeF(float(kseEdit->x()) + kseEdit->WidthMin(), float(kseEdit->y()) + kseEdit->HeightMin());
}

float frmExamine::TextWidth(const QString& text) const
{
    // The texts measured are the control's, shown in its font, which may carry a family of its own.
    return float(QFontMetricsF(kseEdit->font()).horizontalAdvance(text));
}

float frmExamine::Top() const
{
    return float(frameGeometry().y());
}

float frmExamine::Width() const
{
    return float(frameGeometry().width());
}

void frmExamine::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    formResize();
}

void frmExamine::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    formResize();
}

void frmExamine::formResize()
{
    const ReentryGuard guard(m_resizing);
    if (!guard)
        return;
    const Qt::WindowStates special = Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen;
    if (isVisible() && !(windowState() & special)) {
        const QRect frame = frameGeometry();
        const QSize border = frame.size() - size();
        QRect wanted(frame.topLeft(), QSize(std::max(width(), int(std::ceil(m_sizeMin.width()))),
                                            std::max(height(), int(std::ceil(m_sizeMin.height()))))
                                          + border);
        const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
        if (screen) {
            // Back over the right and bottom edges, but never past the left and top ones.
            const QRect area = screen->availableGeometry();
            if (wanted.right() > area.right())
                wanted.moveLeft(std::max(area.left(), area.right() + 1 - wanted.width()));
            if (wanted.bottom() > area.bottom())
                wanted.moveTop(std::max(area.top(), area.bottom() + 1 - wanted.height()));
        }
        if (wanted.size() != frame.size())
            resize(wanted.size() - border);
        if (wanted.topLeft() != frame.topLeft())
            move(wanted.topLeft());
    }
    kseEdit->setGeometry(rect());
}

void frmExamine::kseEdit_OkButtonClick()
{
    if (kseEdit->IsDirty())
        kseEdit->SaveData();
    done(QDialog::Accepted);
}

void frmExamine::closeEvent(QCloseEvent* event)
{
    // Refused here first, so that the user can keep the window open.
    event->ignore();
    if (!kseEdit->IsDirty()) {
        done(QDialog::Rejected);
        return;
    }
    switch (UiServices::current().AskYesNoCancel(windowTitle(), GetResourceText(7872), Answer::Yes)) {
    case Answer::Yes:
        kseEdit->SaveData();
        done(QDialog::Accepted);
        break;
    case Answer::No:
        done(QDialog::Rejected);
        break;
    default:
        break;
    }
}

void frmExamine::reject()
{
    close();
}

} // namespace searchdata
