#include "searchdata/CCommon.h"

#include "searchdata/UiServices.h"

namespace searchdata {

std::shared_ptr<CSearchFilter> CreateSearchFilterObject(std::shared_ptr<DatabaseHandler> roHandler,
                                                        std::shared_ptr<ISearchBaseTable> roBaseTable,
                                                        std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile,
                                                        int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure)
{
    auto filter = std::make_shared<CSearchFilter>();
    filter->OpenSearch(std::move(roHandler), std::move(roBaseTable), std::move(roCatalog), std::move(roProfile), enmConvertMode,
                       std::move(roBaseStructure));
    return filter;
}

namespace {

constexpr QLatin1StringView kTypeName("CCommon");

} // namespace

CCommon::CCommon()
{
    UiServices& ui = UiServices::current();
    ui.ObjectCreated(kTypeName, this);
    ui.RegisterCleanup();
}

CCommon::CCommon(const CCommon&) : CCommon() {}

CCommon::~CCommon()
{
    UiServices::current().ObjectDestroyed(kTypeName, this);
}

std::shared_ptr<CSearchFilter> CCommon::CreateSearchFilterObject(std::shared_ptr<DatabaseHandler> roHandler,
                                                                 std::shared_ptr<ISearchBaseTable> roBaseTable,
                                                                 std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile,
                                                                 int enmConvertMode, std::shared_ptr<TableStructure> roBaseStructure) const
{
    return searchdata::CreateSearchFilterObject(std::move(roHandler), std::move(roBaseTable), std::move(roCatalog),
                                                std::move(roProfile), enmConvertMode, std::move(roBaseStructure));
}

bool CCommon::InitializeSearchData(const ISearchBaseEntry* roEntry, std::shared_ptr<DatabaseHandler> roHandler,
                                   std::shared_ptr<ISearchBaseTable> roBaseTable, std::shared_ptr<Catalog> roCatalog,
                                   std::shared_ptr<IProfile> roProfile, std::shared_ptr<TableStructure> roBaseStructure) const
{
    const std::shared_ptr<CSearchFilter> filter =
        CreateSearchFilterObject(std::move(roHandler), std::move(roBaseTable), std::move(roCatalog), std::move(roProfile), 0,
                                 std::move(roBaseStructure));
    return filter && filter->InitializeSearchData(roEntry);
}

void CCommon::CloseGrupruForms() const
{
    UiServices::current().CloseForms();
}

} // namespace searchdata
