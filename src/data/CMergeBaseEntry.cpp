#include "searchdata/CMergeBaseEntry.h"

namespace searchdata {

qint32 CMergeBaseEntry::Id() const
{
    return m_id;
}

void CMergeBaseEntry::setId(qint32 id)
{
    m_id = id;
}

} // namespace searchdata
