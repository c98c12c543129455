#pragma once

#include <QtGlobal>

namespace searchdata {

/// One record of a base table, as the host hands it to the library: its key.
class ISearchBaseEntry {
public:
    virtual ~ISearchBaseEntry() = default;
    /// Key of the base record.
    virtual qint32 Id() const { return 0; }
};

} // namespace searchdata
