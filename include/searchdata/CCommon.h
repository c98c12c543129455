#pragma once

#include "searchdata/CSearchFilter.h"

#include <memory>

namespace searchdata {

/// The entry point of a host: makes search objects for its base tables.
class CCommon {
public:
    /// Counted by the object monitor; each one also hands the host the clean-up of the library's windows.
    CCommon();
    CCommon(const CCommon& other);
    CCommon& operator=(const CCommon&) = default;
    ~CCommon();

    /// A search object on one base table, always an object: a failed open shows as an empty
    /// `FilterColumns` and `Exists` false.
    std::shared_ptr<CSearchFilter> CreateSearchFilterObject(std::shared_ptr<DatabaseHandler> roHandler,
                                                            std::shared_ptr<ISearchBaseTable> roBaseTable,
                                                            std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile,
                                                            int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure) const;
    /// Gives a new base record its search row, opening a search for the purpose.
    bool InitializeSearchData(const ISearchBaseEntry* roEntry, std::shared_ptr<DatabaseHandler> roHandler,
                              std::shared_ptr<ISearchBaseTable> roBaseTable, std::shared_ptr<Catalog> roCatalog,
                              std::shared_ptr<IProfile> roProfile, std::shared_ptr<TableStructure> roBaseStructure) const;
    /// Hides the library's open windows, last opened first.
    void CloseGrupruForms() const;
};

/// The same as `CCommon::CreateSearchFilterObject`.
std::shared_ptr<CSearchFilter> CreateSearchFilterObject(std::shared_ptr<DatabaseHandler> roHandler,
                                                        std::shared_ptr<ISearchBaseTable> roBaseTable,
                                                        std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile,
                                                        int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure);

} // namespace searchdata
