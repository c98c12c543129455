#include "searchdata/widgets/CControlWrapper.h"

#include <QRegularExpression>

namespace searchdata {

QVariant CControlWrapper::member(std::initializer_list<const char*> names) const
{
    if (!m_control)
        return {};
    for (const char* name : names) {
        // A declared property, or one set on this control at run time.
        const QVariant value = m_control->property(name);
        if (value.isValid())
            return value;
    }
    return {};
}

void CControlWrapper::setMember(std::initializer_list<const char*> names, const QVariant& value)
{
    if (!m_control)
        return;
    for (const char* name : names) {
        if (m_control->metaObject()->indexOfProperty(name) >= 0 || m_control->dynamicPropertyNames().contains(name)) {
            m_control->setProperty(name, value);
            return;
        }
    }
}

QVariant CControlWrapper::Buttons() const
{
    return member({"buttons"});
}

QString CControlWrapper::Caption() const
{
    return member({"text", "title"}).toString();
}

void CControlWrapper::setCaption(const QString& caption)
{
    setMember({"text", "title"}, caption);
}

QVariant CControlWrapper::DragIcon() const
{
    return member({"dragIcon"});
}

QVariant CControlWrapper::ImageList() const
{
    return member({"imageList"});
}

QVariant CControlWrapper::Index() const
{
    if (!m_control)
        return {};
    static const QRegularExpression arrayMember(QStringLiteral("_(\\d+)$"));
    const QRegularExpressionMatch match = arrayMember.match(m_control->objectName());
    return match.hasMatch() ? QVariant(match.captured(1).toInt()) : QVariant();
}

QVariant CControlWrapper::Tag() const
{
    return member({"tag"});
}

void CControlWrapper::setTag(const QVariant& tag)
{
    // Every control can carry a tag: it is a property of the control's own making.
    if (m_control)
        m_control->setProperty("tag", tag);
}

bool CControlWrapper::Visible() const
{
    return member({"visible"}).toBool();
}

void CControlWrapper::setVisible(bool visible)
{
    setMember({"visible"}, visible);
}

} // namespace searchdata
