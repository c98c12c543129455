#include "searchdata/CSearchFilter.h"

#include "platform/Guard_p.h"
#include "searchdata/IFormInfo.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

} // namespace

CSearchFilter::CSearchFilter() = default;
CSearchFilter::~CSearchFilter() = default;

void CSearchFilter::OpenSearch(std::shared_ptr<DatabaseHandler> roHandler, std::shared_ptr<ISearchBaseTable> roBaseTable,
                               std::shared_ptr<Catalog> roCatalog, std::shared_ptr<IProfile> roProfile, int enmConvertMode,
                               std::shared_ptr<TableStructure> roBaseStructure)
{
    SD_PROC("OpenSearch");
    SD_GUARDED([&] {
        auto columns = std::make_shared<CFilterColumns>();
        columns->Setup(std::move(roHandler), std::move(roBaseTable), std::move(roCatalog), std::move(roProfile), enmConvertMode,
                       std::move(roBaseStructure));
        // A base table without columns still opens: that is how its first column is defined.
        if (columns->Status() == kvoFCSSuccess || columns->Status() == kvoFCSNoColumnsDefined)
            m_filterColumns = columns;
    });
}

bool CSearchFilter::Exists() const
{
    return m_filterColumns && m_filterColumns->Count() >= 1;
}

QString CSearchFilter::StandardCaption(FilterMenuItems enmCaptionId) const
{
    if (enmCaptionId < fltr_FMI_EDITDATA || enmCaptionId > fltr_FMI_EDITPICKLISTS)
        return {};
    return GetResourceText(6816 + enmCaptionId);
}

QByteArray CSearchFilter::BitmapLarge(FilterMenuItems enmBitmapId) const
{
    switch (enmBitmapId) {
    case fltr_FMI_EDITDATA:
    case fltr_FMI_VIEWDATA:
        return GetResourcePicture(201);
    case fltr_FMI_FILTER:
        return GetResourcePicture(202);
    case fltr_FMI_CLEARFILTER:
        return GetResourcePicture(203);
    default:
        return {};
    }
}

QByteArray CSearchFilter::BitmapSmall(FilterMenuItems enmBitmapId) const
{
    switch (enmBitmapId) {
    case fltr_FMI_EDITDATA:
    case fltr_FMI_VIEWDATA:
        return GetResourcePicture(301);
    case fltr_FMI_FILTER:
        return GetResourcePicture(302);
    case fltr_FMI_CLEARFILTER:
        return GetResourcePicture(303);
    default:
        return {};
    }
}

void CSearchFilter::SetupOwnerLocation(const IFormInfo* oFI)
{
    if (!m_filterColumns)
        return;
    if (!oFI) {
        const QSizeF screen = UiServices::current().UsableScreenSize();
        m_filterColumns->SetOwnerLocation({float(screen.width() * 0.1), float(screen.height() * 0.1), float(screen.width() * 0.8),
                                           float(screen.height() * 0.8)});
        return;
    }
    m_filterColumns->SetOwnerLocation({oFI->Left(), oFI->Top(), oFI->Width(), oFI->Height()});
}

bool CSearchFilter::InitializeSearchData(const ISearchBaseEntry* roEntry)
{
    return Exists() && m_filterColumns->InitializeSearchData(roEntry);
}

void CSearchFilter::Configure(const IFormInfo* oFI)
{
    if (!m_filterColumns)
        return;
    SetupOwnerLocation(oFI);
    UiServices::current().OpenConfigureDialog(*m_filterColumns, oFI);
}

void CSearchFilter::View(Recordset* rstSource, ISearchBaseEntry* roSource, const IFormInfo* oFI)
{
    if (!m_filterColumns)
        return;
    SetupOwnerLocation(oFI);
    UiServices::current().OpenExamineWindow(*m_filterColumns, roSource, rstSource, oFI);
}

FilterStatusConstants CSearchFilter::Edit(Recordset*, const IFormInfo*)
{
    UiServices::current().NotImplementedNotice();
    return fltr_SUCCESS;
}

} // namespace searchdata
