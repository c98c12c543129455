// Carrying search data along when the host copies records or merges one database into another.

#include "searchdata/CSearchFilter.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

/// Puts the columns' `UpdatedValue`s back as they were when this was made: a copy borrows them.
class UpdatedValuesKept {
public:
    explicit UpdatedValuesKept(const CFilterColumns& columns)
    {
        for (const CFilterColumns::ColumnPtr& c : columns)
            m_kept.append({c, c->UpdatedValue()});
    }
    ~UpdatedValuesKept()
    {
        for (const auto& [column, value] : m_kept)
            column->setUpdatedValue(value);
    }
    UpdatedValuesKept(const UpdatedValuesKept&) = delete;
    UpdatedValuesKept& operator=(const UpdatedValuesKept&) = delete;

private:
    QList<std::pair<CFilterColumns::ColumnPtr, Value>> m_kept;
};

} // namespace

bool CSearchFilter::CopyValuesWithinTable(const ISearchBaseEntry* roSource, const ISearchBaseEntry* roTarget)
{
    if (!roSource || !roTarget || !Exists())
        return false;
    return m_filterColumns->Copy(roSource, roTarget);
}

bool CSearchFilter::CopyValuesBetweenTables(const CSearchFilter* oSource, const ISearchBaseEntry* roSource, const ISearchBaseEntry* roTarget)
{
    if (!oSource || !roSource || !roTarget || !m_filterColumns || !oSource->FilterColumns())
        return false;
    SD_PROC("CopyValuesBetweenTables");
    bool done = false;
    SD_GUARDED([&] {
        CFilterColumns& target = *m_filterColumns;
        CFilterColumns& source = *oSource->FilterColumns();
        if (!target.Handler() || !TextEquals(source.BaseTableName(), target.BaseTableName(), 1))
            return;
        source.GetData(roSource);

        QList<std::pair<CFilterColumns::ColumnPtr, CFilterColumns::ColumnPtr>> pairs;
        for (const CFilterColumns::ColumnPtr& from : source) {
            const CFilterColumns::ColumnPtr to = target.Item(from->Name());
            if (!to)
                detail::fail(QStringLiteral("the column %1 has no counterpart in the target table").arg(from->Name()));
            pairs.append({from, to});
        }

        TableTransaction tx(*target.Handler());
        if (!tx.begun())
            return;
        {
            const UpdatedValuesKept kept(target);
            for (const CFilterColumns::ColumnPtr& to : target)
                to->setUpdatedValue(Value());
            for (const auto& [from, to] : pairs) {
                if ((from->ColumnType() == fcKeyword) != (to->ColumnType() == fcKeyword) || to->ColumnType() == fcKeyword)
                    continue;
                Value v = detail::listForm(*to, from->SavedValue());
                if (v.isEmpty())
                    continue;
                // A source without a date reads as the number 0; the target gets no date rather than day 0.
                if (to->ColumnType() == fcDateTime && v.type() != Value::Type::DateTime && v.toDouble().valueOr(1) == 0)
                    v = Value::null();
                // A blank is no entry of a picklist that forbids blanks; nothing at all passes its key.
                if (to->IsPicklist() && !v.isBlank() && v.text().isEmpty())
                    v = Value::null();
                if (to->IsPicklist() && !v.isBlank()) {
                    const std::shared_ptr<CScPicklist> picklist = target.PicklistOf(*to);
                    if (!picklist || !picklist->SaveAdditions({v.text()}))
                        return;
                }
                to->setUpdatedValue(v);
            }
            if (!target.SaveDataFromClientUpdates(roTarget))
                return;
        }
        // Keywords last: the save above writes the lists of an entry control that shows the target.
        const QString seek = target.SearchTableSeekCriteria(roTarget);
        for (const auto& [from, to] : pairs) {
            if (from->ColumnType() != fcKeyword || to->ColumnType() != fcKeyword)
                continue;
            to->SavedKeys() = from->SavedKeys();
            if (!target.CopyDataKeyword(roTarget, *to, seek))
                return;
        }
        done = tx.commit();
    });
    return done;
}

ESearchFilterCopyConfigurationResults CSearchFilter::CopyConfiguration(IProgress* oContext, const CSearchFilter* oSource)
{
    if (!m_filterColumns || !oSource || !oSource->FilterColumns())
        return fltrCCR_Failed;
    // A base table that has columns keeps its own configuration.
    if (m_filterColumns->Count() > 0)
        return fltrCCR_Success;
    SD_PROC("CopyConfiguration");
    ESearchFilterCopyConfigurationResults result = fltrCCR_Failed;
    CFilterColumns& columns = *m_filterColumns;
    QStringList added;
    SD_GUARDED([&] {
        if (!columns.MakeMergeColumn())
            return;
        for (const CFilterColumns::ColumnPtr& from : *oSource->FilterColumns()) {
            QString name = from->Name();
            for (int n = 1; columns.Item(name); ++n)
                name = from->Name() + QStringLiteral("_") + QString::number(n);
            if (!columns.Add(name, from->Caption(), from->Description(), from->ColumnType(), from->TextLengthInUI(), from->IsPicklist(),
                             from->PicklistAllowBlanks(), from->PicklistDefault(), from->DateTimeDefaultMode(),
                             from->DateTimeDefaultValue(), from->DisableEditDateTime(), from->Name()))
                return;
            added.append(name);
        }
        if (columns.ColumnsSave(oContext))
            result = fltrCCR_Success;
    });
    if (result != fltrCCR_Success)
        for (const QString& name : added)
            columns.RemoveColumn(name); // the definitions on disk stayed as they were
    return result;
}

std::shared_ptr<ISearchBaseEntry> CSearchFilter::MakeMergeBaseEntry(qint32 lngId) const
{
    return std::make_shared<CMergeBaseEntry>(lngId);
}

bool CSearchFilter::MergeSearchData(const ISearchBaseEntry* roTarget, const CSearchFilter* oSource, const ISearchBaseEntry* roSource)
{
    return m_filterColumns && m_filterColumns->MergeData(roTarget, oSource, roSource);
}

bool CSearchFilter::CopyCleanup()
{
    return m_filterColumns && m_filterColumns->MergeCleanup();
}

} // namespace searchdata
