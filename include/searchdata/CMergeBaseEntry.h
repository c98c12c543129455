#pragma once

#include "searchdata/ISearchBaseEntry.h"

namespace searchdata {

/// A base record named by its key alone: what a merge walks when the host has no object of its own
/// for each record.
class CMergeBaseEntry : public ISearchBaseEntry {
public:
    /// The record whose key is `id`.
    explicit CMergeBaseEntry(qint32 id = 0) : m_id(id) {}

    /// Key of the base record.
    qint32 Id() const override;
    /// Names another record.
    void setId(qint32 id);

private:
    qint32 m_id;
};

} // namespace searchdata
