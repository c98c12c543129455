#include "searchdata/widgets/CFormInfo.h"

#include <QFontMetricsF>
#include <QMdiSubWindow>
#include <utility>

namespace searchdata {

namespace {

/// The pointer codes of the host's libraries and the cursor shapes they stand for; 0 is the
/// window's own cursor and 99 one of its own making.
constexpr std::pair<int, Qt::CursorShape> kPointers[] = {
    {1, Qt::ArrowCursor},     {2, Qt::CrossCursor},   {3, Qt::IBeamCursor},       {5, Qt::SizeAllCursor},
    {6, Qt::SizeBDiagCursor}, {7, Qt::SizeVerCursor}, {8, Qt::SizeFDiagCursor},   {9, Qt::SizeHorCursor},
    {10, Qt::UpArrowCursor},  {11, Qt::WaitCursor},   {12, Qt::ForbiddenCursor},  {13, Qt::BusyCursor},
    {14, Qt::WhatsThisCursor}};
constexpr int kOwnPointer = 99;

} // namespace

CFormInfo::CFormInfo(QWidget* form) : m_form(form) {}

CFormInfo::~CFormInfo() = default;

QMdiSubWindow* CFormInfo::subWindow() const
{
    return m_form ? qobject_cast<QMdiSubWindow*>(m_form->parentWidget()) : nullptr;
}

QWidget* CFormInfo::outerWidget() const
{
    if (QMdiSubWindow* sub = subWindow())
        return sub;
    return m_form;
}

QRect CFormInfo::outerGeometry() const
{
    const QWidget* outer = outerWidget();
    if (!outer)
        return {};
    return outer->isWindow() ? outer->frameGeometry() : outer->geometry();
}

QString CFormInfo::Caption() const
{
    return m_form ? m_form->windowTitle() : QString();
}

bool CFormInfo::GetEnabled() const
{
    return m_form && m_form->isEnabled();
}

float CFormInfo::Height() const
{
    return float(outerGeometry().height());
}

bool CFormInfo::IsValid() const
{
    return !m_form.isNull();
}

float CFormInfo::Left() const
{
    return float(outerGeometry().x());
}

bool CFormInfo::MDIChild() const
{
    return subWindow() != nullptr;
}

int CFormInfo::MousePointer() const
{
    if (!m_form || !m_form->testAttribute(Qt::WA_SetCursor))
        return 0;
    const Qt::CursorShape shape = m_form->cursor().shape();
    // A window without a cursor of its own keeps the arrow.
    if (m_form->isWindow() && shape == Qt::ArrowCursor)
        return 0;
    for (const auto& [code, pointerShape] : kPointers)
        if (pointerShape == shape)
            return code;
    return kOwnPointer;
}

QString CFormInfo::Name() const
{
    return m_form ? m_form->objectName() : QString();
}

const IFormInfo* CFormInfo::Root() const
{
    if (!m_form)
        return nullptr;
    if (!MDIChild())
        return this;
    QWidget* main = m_form->window();
    if (!m_root || m_root->form() != main)
        m_root = std::make_unique<CFormInfo>(main);
    return m_root.get();
}

QVariant CFormInfo::Tag() const
{
    return m_form ? m_form->property("tag") : QVariant();
}

float CFormInfo::TextWidth(const QString& text) const
{
    return m_form ? float(QFontMetricsF(m_form->font()).horizontalAdvance(text)) : 0.0f;
}

float CFormInfo::Top() const
{
    return float(outerGeometry().y());
}

float CFormInfo::Width() const
{
    return float(outerGeometry().width());
}

int CFormInfo::WindowState() const
{
    const QWidget* outer = outerWidget();
    if (!outer)
        return 0;
    if (outer->isMinimized())
        return 1;
    return outer->isMaximized() ? 2 : 0;
}

void CFormInfo::applyMousePointer(int pointer)
{
    if (!m_form)
        return;
    if (pointer == 0) {
        m_form->unsetCursor();
        return;
    }
    for (const auto& [code, shape] : kPointers)
        if (code == pointer)
            m_form->setCursor(shape);
}

std::unique_ptr<CFormInfo> MakeFormInfo(QWidget* form)
{
    return form ? std::make_unique<CFormInfo>(form) : nullptr;
}

} // namespace searchdata
