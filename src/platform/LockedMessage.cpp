#include "searchdata/LockedMessage.h"

#include "searchdata/Resources.h"

namespace searchdata {

void CDebugLockedMessage::Init(const QString& message, const QString& title)
{
    m_message = message.trimmed();
    m_title = title.trimmed();
    if (m_message.isEmpty())
        m_message = GetResourceText(9129);
    if (m_title.isEmpty())
        m_title = GetResourceText(9128);
}

CDebugLockedMessage MakeLockedMessage(const QString& message, const QString& title)
{
    CDebugLockedMessage m;
    m.Init(message, title);
    return m;
}

} // namespace searchdata
