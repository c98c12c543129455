// The collection's ways into the picklists: the dialogs, and what a saved definition does to a list.

#include "searchdata/CFilterColumns.h"

#include "platform/Guard_p.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/UiServices.h"

#include <algorithm>

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

} // namespace

std::shared_ptr<CScPicklist> CFilterColumns::PicklistOf(const CFilterColumn& column) const
{
    std::shared_ptr<CScPicklist> picklist = column.PickList();
    if (picklist)
        picklist->setSchemaTool(m_schemaTool);
    return picklist;
}

bool CFilterColumns::SavePicklist(const ColumnPtr& column, const ColumnPtr& oldColumn)
{
    if (!column || !m_catalog)
        return false;
    SD_PROC("SavePicklist");
    bool saved = false;
    SD_GUARDED([&] {
        const bool changed = PicklistChanged(column.get(), oldColumn.get());
        if (!column->IsPicklist() && (!changed || !GetCatalogTable(*m_catalog, column->PicklistTableName()))) {
            saved = true;
            return;
        }
        const std::shared_ptr<CScPicklist> picklist = PicklistOf(*column);
        if (!picklist)
            detail::fail(QStringLiteral("the column %1 has no picklist object").arg(column->Name()));
        if (!column->IsPicklist())
            saved = picklist->DestroyPicklist();
        else if (column->IsPicklistTableMissing())
            // Also when the settings did not change: a new type or size dropped the old list with the data.
            saved = picklist->CreatePicklist();
        else
            saved = !changed || picklist->ChangePicklist();
    });
    return saved;
}

bool CFilterColumns::HasPicklists() const
{
    return std::any_of(m_columns.cbegin(), m_columns.cend(), [](const ColumnPtr& c) { return c->IsPicklist(); });
}

void CFilterColumns::EditPicklists(const IFormInfo* oFI)
{
    SD_PROC("EditPicklists");
    SD_GUARDED([&] {
        ColumnPtr only;
        int count = 0;
        for (const ColumnPtr& c : m_columns)
            if (c->IsPicklist() && ++count == 1)
                only = c;
        if (count >= 2) {
            SelectAndEditPicklist(oFI);
        } else if (count == 1) {
            if (const std::shared_ptr<CScPicklist> picklist = PicklistOf(*only))
                picklist->Edit(oFI);
        }
    });
}

void CFilterColumns::SelectAndEditPicklist(const IFormInfo* oFI)
{
    SD_PROC("SelectAndEditPicklist");
    SD_GUARDED([&] { UiServices::current().OpenPicklistChoiceDialog(*this, oFI); });
}

} // namespace searchdata
