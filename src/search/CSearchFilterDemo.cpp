// Ready-made column sets and their values, for hosts that install demonstration data.

#include "searchdata/CSearchFilter.h"

#include "platform/Guard_p.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CSearchFilter";

struct DemoColumn {
    const char* name;
    const char* caption;
    FilterColumnTypeConstants type;
    qint16 textLength;
    bool isPicklist;
    bool allowBlanks;
    const char* picklistDefault;
};

struct DemoSet {
    QList<DemoColumn> columns;
    const char* picklistColumn;
    QStringList entries;
};

DemoSet demoSet(EDemoColumnSet set)
{
    if (set == fltrDCS_DncFile)
        return {{{"DrawingNo", "Drawing Number", fcText, 20, false, false, ""},
                 {"PartNo", "Part Number", fcText, 20, false, false, ""},
                 {"Customer", "", fcText, 20, true, true, ""}},
                "Customer",
                {QStringLiteral("Acme Machine"), QStringLiteral("General Parts"), QStringLiteral("Johnson Auto Supply"),
                 QStringLiteral("Jones Gear and Axle"), QStringLiteral("Phillips Mfg")}};
    return {{{"OpNo", "Operation Number", fcText, 10, false, false, ""},
             {"OpType", "Operation Type", fcText, 20, true, true, ""},
             {"Description", "", fcNote, 255, false, true, "Add description here!"}},
            "OpType",
            {QStringLiteral("Drill"), QStringLiteral("Finish Cut"), QStringLiteral("Mill"), QStringLiteral("Rough Cut")}};
}

QString demoSetName(EDemoColumnSet set)
{
    switch (set) {
    case fltrDCS_DncFile: return QStringLiteral("DNC File");
    case fltrDCS_ControlledDocument: return QStringLiteral("Controlled Document");
    case fltrDCS_Packet: return QStringLiteral("Packet");
    default: return QStringLiteral("Undefined demo set %1").arg(int(set));
    }
}

/// Writes texts into an entry's row of the search table.
bool updateDemoValues(const std::shared_ptr<CFilterColumns>& filterColumns, const ISearchBaseEntry* entry,
                      const QList<std::pair<QString, QString>>& values)
{
    SD_PROC("UpdateDemoValues");
    bool updated = false;
    SD_GUARDED([&] {
        if (!filterColumns || !filterColumns->Handler() || !entry)
            return;
        const CFilterColumns& columns = *filterColumns;
        DatabaseHandler& db = *columns.Handler();
        QString list;
        for (const auto& [field, value] : values)
            db.AddSetPair(list, field, db.SqlQuote(value));
        // Only the row of the entry; the set of the same name is taken to exist.
        updated = db.ExecuteSql(QStringLiteral("UPDATE ") + db.BracketName(columns.SearchKeyword()) + QStringLiteral(" SET ") + list
                                + QStringLiteral(" WHERE ") + columns.SearchTableSeekCriteria(entry));
    });
    return updated;
}

} // namespace

bool CSearchFilter::CreateDemoColumnSet(EDemoColumnSet enmDemoSet, IProgress* roProgress, const IFormInfo* oFI)
{
    SD_PROC("CreateDemoColumnSet");
    bool made = false;
    SD_GUARDED([&] {
        if (Exists() || !m_filterColumns)
            return;
        if (enmDemoSet != fltrDCS_DncFile && enmDemoSet != fltrDCS_Packet) {
            Diagnostics::instance().report({0, demoSetName(enmDemoSet) + QStringLiteral(" is not implemented yet"),
                                            QLatin1String(sd_proc_scope.procedure), QLatin1String(kModule), __LINE__,
                                            QDateTime::currentDateTime()});
            return;
        }
        SetupOwnerLocation(oFI);
        CFilterColumns& columns = *m_filterColumns;
        const DemoSet set = demoSet(enmDemoSet);
        // These settings do not concern text and note columns; they are what the column editor would leave.
        const QDateTime now = QDateTime::currentDateTime();
        for (const DemoColumn& c : set.columns) {
            auto column = columns.Add(QString::fromUtf8(c.name), QString::fromUtf8(c.caption), QString(), c.type, c.textLength,
                                      c.isPicklist, c.allowBlanks, QString::fromUtf8(c.picklistDefault), fcDTDM_Now, Value(now), true);
            if (!column)
                detail::fail(QStringLiteral("the demo column %1 could not be added").arg(QString::fromUtf8(c.name)));
            column->setIsNew(true);
        }
        if (!columns.ColumnsSave(roProgress)) {
            columns.ColumnsFetch(); // back to what the table holds
            detail::fail(QStringLiteral("the %1 demo columns could not be saved").arg(demoSetName(enmDemoSet)));
        }
        columns.ColumnsFetch();
        const auto picklistColumn = columns.Item(QString::fromUtf8(set.picklistColumn));
        if (picklistColumn) {
            const auto picklist = columns.PicklistOf(*picklistColumn);
            if (!picklist || !picklist->SaveAdditions(set.entries))
                detail::fail(QStringLiteral("the picklist of %1 could not be filled").arg(picklistColumn->Name()));
        }
        made = true;
    });
    return made;
}

bool CSearchFilter::UpdateDemoDncFile(IProgress* roProgress, const IFormInfo* oFI, const ISearchBaseEntry* sbeDncFile,
                                      const QString& strDrawingNo, const QString& strPartNo, const QString& strCustomer)
{
    Q_UNUSED(roProgress);
    Q_UNUSED(oFI);
    return updateDemoValues(m_filterColumns, sbeDncFile,
                            {{QStringLiteral("DrawingNo"), strDrawingNo}, {QStringLiteral("PartNo"), strPartNo},
                             {QStringLiteral("Customer"), strCustomer}});
}

bool CSearchFilter::UpdateDemoPacket(IProgress* roProgress, const IFormInfo* oFI, const ISearchBaseEntry* sbePacket,
                                     const QString& strOpNo, const QString& strOpType, const QString& strDescription)
{
    Q_UNUSED(roProgress);
    Q_UNUSED(oFI);
    return updateDemoValues(m_filterColumns, sbePacket,
                            {{QStringLiteral("OpNo"), strOpNo}, {QStringLiteral("OpType"), strOpType},
                             {QStringLiteral("Description"), strDescription}});
}

} // namespace searchdata
