// The population check: every base record that the host selects has its search row, and no search
// or keyword row is left without its record. Keyword tables are only cleaned: a record may simply
// have no keywords.

#include "searchdata/CFilterColumns.h"

#include "columns/SchemaCheck_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CCheckPopulationArgs.h"
#include "searchdata/CCheckPopulationResult.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Resources.h"
#include "searchdata/SqlCursor.h"
#include "searchdata/UiServices.h"

#include <QElapsedTimer>
#include <QLocale>
#include <QScopeGuard>
#include <vector>

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumns";

/// Keys per statement when the walk writes its changes: few statements, and well inside the
/// databases' limits on bound values.
constexpr int kBatchSize = 500;

/// One table that the check covers.
struct PopulationTarget {
    QString table;        ///< as the catalog spells it
    bool standard = false;///< the search table, where records get their rows
    QStringList fields;   ///< the columns' fields that the table has, for the rows it gets
    QStringList defaults; ///< their defaults, as SQL
};

/// The statements of both variants. The tests use only the link column, and look for one row:
/// whether there is any is all they need to know.
class PopulationSql {
public:
    explicit PopulationSql(const CFilterColumns& columns) : m_db(*columns.Handler())
    {
        m_key = columns.KeyColumnName();
        m_base = m_db.BracketName(columns.BaseTableName());
        if (const std::shared_ptr<ISearchBaseTable>& host = columns.BaseTableObject())
            m_criteria = host->SearchSelectionCriteria().trimmed();
    }

    bool hasCriteria() const { return !m_criteria.isEmpty(); }

    QString missingProbe(const PopulationTarget& t) const
    {
        return QStringLiteral("SELECT %1 %2 LIMIT 1").arg(baseKey(), missingRows(t));
    }
    QString orphanProbe(const PopulationTarget& t) const
    {
        return QStringLiteral("SELECT %1 FROM %2 WHERE %3 LIMIT 1").arg(m_db.QualifiedName(t.table, m_key), table(t), orphaned(t));
    }
    QString insertMissing(const PopulationTarget& t) const
    {
        QString values = baseKey();
        for (qsizetype i = 0; i < t.fields.size(); ++i)
            values += QStringLiteral(", %1 AS %2").arg(t.defaults[i], m_db.BracketName(t.fields[i]));
        return QStringLiteral("INSERT INTO %1 (%2) SELECT %3 %4").arg(table(t), targetFields(t), values, missingRows(t));
    }
    QString deleteOrphans(const PopulationTarget& t) const
    {
        return QStringLiteral("DELETE FROM %1 WHERE %2").arg(table(t), orphaned(t));
    }

    // The walk reads the whole base table in key order, and beside it the keys that the host selects.
    QString baseKeys() const { return QStringLiteral("SELECT %1 FROM %2 AS %3 ORDER BY %1").arg(baseKey(), m_base, baseAlias()); }
    QString selectedKeys() const
    {
        return QStringLiteral("SELECT %1 FROM %2 AS %3 WHERE %4 ORDER BY %1").arg(baseKey(), m_base, baseAlias(), selection());
    }
    QString tableKeys(const PopulationTarget& t) const
    {
        const QString key = m_db.QualifiedName(t.table, m_key);
        return QStringLiteral("SELECT %1 FROM %2 ORDER BY %1").arg(key, table(t));
    }
    QString count(const QString& quotedTable) const { return QStringLiteral("SELECT COUNT(*) FROM ") + quotedTable; }
    const QString& base() const { return m_base; }
    QString table(const PopulationTarget& t) const { return m_db.BracketName(t.table); }
    QString insertBatch(const PopulationTarget& t, int rows) const
    {
        QString row = QStringLiteral("?");
        for (const QString& d : t.defaults)
            row += QStringLiteral(", ") + d;
        QStringList all(rows, QLatin1Char('(') + row + QLatin1Char(')'));
        return QStringLiteral("INSERT INTO %1 (%2) VALUES %3").arg(table(t), targetFields(t), all.join(QStringLiteral(", ")));
    }
    QString deleteBatch(const PopulationTarget& t, int rows) const
    {
        const QStringList marks(rows, QStringLiteral("?"));
        return QStringLiteral("DELETE FROM %1 WHERE %2 IN (%3)").arg(table(t), m_db.BracketName(m_key), marks.join(QStringLiteral(", ")));
    }

private:
    QString baseAlias() const { return m_db.BracketName(QStringLiteral("sd_b")); }
    QString baseKey() const { return m_db.QualifiedName(QStringLiteral("sd_b"), m_key); }
    // The host's criteria are a whole SELECT of the key; as a condition of their own they cannot
    // clash with the names of the statement around them.
    QString selection() const { return QStringLiteral("%1 IN (%2)").arg(baseKey(), m_criteria); }
    QString missingRows(const PopulationTarget& t) const
    {
        const QString rowAlias = m_db.BracketName(QStringLiteral("sd_t"));
        const QString noRow = QStringLiteral("NOT EXISTS (SELECT 1 FROM %1 AS %2 WHERE %3 = %4)")
                                  .arg(table(t), rowAlias, m_db.QualifiedName(QStringLiteral("sd_t"), m_key), baseKey());
        return QStringLiteral("FROM %1 AS %2 WHERE %3%4").arg(m_base, baseAlias(), hasCriteria() ? selection() + QStringLiteral(" AND ") : QString(), noRow);
    }
    // Orphans are judged against the whole base table, whatever the host selects.
    QString orphaned(const PopulationTarget& t) const
    {
        return QStringLiteral("NOT EXISTS (SELECT 1 FROM %1 AS %2 WHERE %3 = %4)")
            .arg(m_base, baseAlias(), baseKey(), m_db.QualifiedName(t.table, m_key));
    }
    QString targetFields(const PopulationTarget& t) const
    {
        QString list = m_db.BracketName(m_key);
        for (const QString& f : t.fields)
            list += QStringLiteral(", ") + m_db.BracketName(f);
        return list;
    }

    DatabaseHandler& m_db;
    QString m_key;
    QString m_base;
    QString m_criteria;
};

/// Walks the tables of the check in column order: the search table at the first column that keeps
/// its values there, and the keyword table of each keyword column. `visit` gives false to end the
/// check; so does a table that is not there. True when every table was visited.
template <typename Visit>
bool forEachTarget(const CFilterColumns& columns, const QDateTime& defaultDate, Visit visit)
{
    bool standardDone = false;
    for (const CFilterColumns::ColumnPtr& column : columns) {
        const bool keyword = column->ColumnType() == fcKeyword;
        if (!keyword && (column->ColumnType() == fcUndefined || standardDone))
            continue;
        const CatalogTablePtr table = GetCatalogTable(*columns.Catalog(), columns.SearchKeyword(column.get()));
        if (!table)
            return false;
        PopulationTarget target{table->name, !keyword, {}, {}};
        if (target.standard) {
            standardDone = true;
            // A field the table lacks is left out: its rows take what the table gives them.
            for (const CFilterColumns::ColumnPtr& c : columns)
                if (c->ColumnType() != fcKeyword && c->ColumnType() != fcUndefined)
                    if (const std::optional<CatalogColumn> field = GetTableColumn(table, c->Name())) {
                        target.fields.append(field->name);
                        target.defaults.append(c->SQLDefaultValue(defaultDate));
                    }
        }
        if (!visit(target))
            return false;
    }
    return true;
}

/// A key as read from either side of the walk, in the form that orders it as the database does:
/// integers as numbers, other numbers as doubles, anything else by the bytes of its UTF-8 text.
class WalkKey {
public:
    enum Kind { Integer, Real, Text };

    static Kind kindOf(int adoType)
    {
        switch (adoType) {
        case adTinyInt:
        case adSmallInt:
        case adInteger:
        case adBigInt:
        case adUnsignedTinyInt:
            return Integer;
        case adSingle:
        case adDouble:
        case adCurrency:
        case adNumeric:
        case adDecimal:
            return Real;
        default:
            return Text;
        }
    }

    void read(const QVariant& value, Kind kind)
    {
        m_raw = value;
        switch (kind) {
        case Integer:
            m_integer = value.toLongLong();
            break;
        case Real:
            m_real = value.toDouble();
            break;
        case Text:
            m_text = value.toString().toUtf8();
            break;
        }
    }

    int compare(const WalkKey& other, Kind kind) const
    {
        switch (kind) {
        case Integer:
            return m_integer < other.m_integer ? -1 : m_integer > other.m_integer ? 1 : 0;
        case Real:
            return m_real < other.m_real ? -1 : m_real > other.m_real ? 1 : 0;
        case Text:
            return m_text.compare(other.m_text);
        }
        return 0;
    }

    const QVariant& raw() const { return m_raw; }

private:
    QVariant m_raw;
    qint64 m_integer = 0;
    double m_real = 0;
    QByteArray m_text;
};

/// One side of the walk: a cursor in key order and its current key.
class WalkSide {
public:
    WalkSide(std::unique_ptr<SqlCursor> cursor, WalkKey::Kind kind, bool unique) : m_cursor(std::move(cursor)), m_kind(kind), m_unique(unique)
    {
        load();
    }

    bool atEnd() const { return m_cursor->EndOfFile(); }
    const WalkKey& key() const { return m_key; }
    void next()
    {
        m_previous = m_key;
        m_cursor->MoveNext();
        load();
        if (atEnd())
            return;
        const int order = m_previous.compare(m_key, m_kind);
        if (order > 0 || (m_unique && order == 0))
            detail::fail(QStringLiteral("the database does not give the keys of \"%1\" in the order that the walk compares them in")
                             .arg(m_cursor->source()));
    }
    bool failed() const { return m_cursor->failed(); }

private:
    void load()
    {
        if (!m_cursor->EndOfFile())
            m_key.read(m_cursor->value(0), m_kind);
    }

    std::unique_ptr<SqlCursor> m_cursor;
    WalkKey::Kind m_kind;
    bool m_unique;
    WalkKey m_key;
    WalkKey m_previous;
};

/// The walk of one table at a time, with its progress.
class KeyWalk {
public:
    KeyWalk(CFilterColumns& columns, IProgress& progress, const CCheckPopulationArgs& args, CCheckPopulationResult& result)
        : m_columns(columns), m_db(*columns.Handler()), m_sql(columns), m_progress(progress), m_args(args), m_result(result),
          m_kind(WalkKey::kindOf(columns.BaseKeyColumn()->type))
    {
    }

    /// False ends the check.
    bool run(const PopulationTarget& target)
    {
        m_progress.SetStatus(GetResourceText(8448, {target.table}));
        m_done = 0;
        m_total = count(m_sql.base()) + count(m_sql.table(target));
        m_lastReport.start();

        std::vector<QVariant> missing;
        std::vector<QVariant> orphans;
        {
            std::unique_ptr<SqlCursor> baseCursor = m_db.OpenSqlCursor(m_sql.baseKeys());
            std::unique_ptr<SqlCursor> rowCursor = m_db.OpenSqlCursor(m_sql.tableKeys(target));
            std::unique_ptr<SqlCursor> selectedCursor = m_sql.hasCriteria() ? m_db.OpenSqlCursor(m_sql.selectedKeys()) : nullptr;
            if (!baseCursor || !rowCursor || (m_sql.hasCriteria() && !selectedCursor))
                return false;
            const QString key = m_columns.KeyColumnName();
            if (!baseCursor->hasField(key) || !rowCursor->hasField(key))
                return false;
            m_progress.SetStatus(GetResourceText(8449));
            WalkSide base(std::move(baseCursor), m_kind, true);
            WalkSide rows(std::move(rowCursor), m_kind, false);
            std::optional<WalkSide> selected;
            if (selectedCursor)
                selected.emplace(std::move(selectedCursor), m_kind, true);
            if (!walk(target, base, rows, selected ? &*selected : nullptr, missing, orphans))
                return false;
            if (base.failed() || rows.failed() || (selected && selected->failed()))
                return false;
        }
        report(target);
        return apply(target, missing, orphans);
    }

private:
    qint64 count(const QString& quotedTable)
    {
        std::unique_ptr<Recordset> rs = m_db.OpenSqlRecordset(m_sql.count(quotedTable));
        if (!rs || rs->EndOfFile())
            detail::fail(QStringLiteral("cannot count the rows of %1").arg(quotedTable));
        return rs->rawField(rs->fieldNames().value(0)).toLongLong();
    }

    /// Collects the changes. Before the first one of the check, in a mode other than 1 with
    /// `AskFirst`, the host is asked; an answer of 1 to 5 ends the check.
    bool walk(const PopulationTarget& target, WalkSide& base, WalkSide& rows, WalkSide* selected, std::vector<QVariant>& missing,
              std::vector<QVariant>& orphans)
    {
        bool baseMatched = false;
        // False when the check ends here.
        auto mayChange = [&] {
            if (m_asked || m_args.Mode() == 1 || !m_args.AskFirst())
                return true;
            m_asked = true;
            const int answer = detail::askConversion(m_db, m_columns.BaseTableName(), m_args.Mode());
            m_result.setResultCode(answer);
            return !detail::endsCheck(answer);
        };
        while (!base.atEnd() || !rows.atEnd()) {
            const int order = base.atEnd() ? 1 : rows.atEnd() ? -1 : base.key().compare(rows.key(), m_kind);
            if (order < 0) {
                if (!baseMatched && target.standard && isSelected(base.key(), selected)) {
                    if (!mayChange())
                        return false;
                    missing.push_back(base.key().raw());
                }
                base.next();
                baseMatched = false;
            } else if (order > 0) {
                if (orphans.empty() || rows.key().raw() != orphans.back()) {
                    if (!mayChange())
                        return false;
                    orphans.push_back(rows.key().raw());
                }
                rows.next();
            } else {
                // A keyword table may hold many rows of one record.
                baseMatched = true;
                rows.next();
            }
            if (!rowDone(target))
                return false;
        }
        return true;
    }

    /// Whether the host selects a base record; the selected keys are walked alongside.
    bool isSelected(const WalkKey& key, WalkSide* selected) const
    {
        if (!selected)
            return true;
        while (!selected->atEnd() && selected->key().compare(key, m_kind) < 0)
            selected->next();
        return !selected->atEnd() && selected->key().compare(key, m_kind) == 0;
    }

    /// Counts a row; tests the cancel between rows and reports at most once a second.
    bool rowDone(const PopulationTarget& target)
    {
        if ((++m_done & 0xff) != 0)
            return true;
        if (m_progress.Cancelled()) {
            m_result.setCancelled(true);
            return false;
        }
        if (m_lastReport.elapsed() >= 1000)
            report(target);
        return true;
    }

    void report(const PopulationTarget& target)
    {
        const QLocale locale;
        const double percent = m_total < 1 ? 100.0 : 100.0 * double(m_done) / double(m_total);
        m_progress.SetProgress(GetResourceText(8450, {target.table, locale.toString(percent, 'f', 2) + QLatin1Char('%'),
                                                      locale.toString(m_done), locale.toString(m_total)}));
        m_lastReport.restart();
    }

    /// Writes one table's changes in one transaction; a cancel or a failure leaves the table as it was.
    bool apply(const PopulationTarget& target, const std::vector<QVariant>& missing, const std::vector<QVariant>& orphans)
    {
        if (missing.empty() && orphans.empty())
            return true;
        TransactionState tx;
        if (!m_db.BeginTableTransaction(tx)) {
            detail::markConversionFailed();
            return false;
        }
        const auto end = qScopeGuard([&] { m_db.EndTableTransaction(tx); });
        if (!missing.empty()) {
            m_progress.SetStatus(GetResourceText(8453));
            if (!inBatches(missing, [&](int n) { return m_sql.insertBatch(target, n); }))
                return false;
        }
        if (!orphans.empty()) {
            m_progress.SetStatus(GetResourceText(8454));
            if (!inBatches(orphans, [&](int n) { return m_sql.deleteBatch(target, n); }))
                return false;
        }
        if (!m_db.CommitTableTransaction(tx)) {
            detail::markConversionFailed();
            return false;
        }
        return true;
    }

    template <typename Statement>
    bool inBatches(const std::vector<QVariant>& keys, Statement statement)
    {
        for (size_t from = 0; from < keys.size(); from += kBatchSize) {
            if (m_progress.Cancelled()) {
                m_result.setCancelled(true);
                return false;
            }
            const int n = int(std::min<size_t>(kBatchSize, keys.size() - from));
            const QVariantList values(keys.begin() + qsizetype(from), keys.begin() + qsizetype(from) + n);
            if (!m_db.ExecuteSql(statement(n), values)) {
                detail::markConversionFailed();
                return false;
            }
        }
        return true;
    }

    CFilterColumns& m_columns;
    DatabaseHandler& m_db;
    const PopulationSql m_sql;
    IProgress& m_progress;
    const CCheckPopulationArgs& m_args;
    CCheckPopulationResult& m_result;
    const WalkKey::Kind m_kind;
    qint64 m_done = 0;
    qint64 m_total = 0;
    QElapsedTimer m_lastReport;
    bool m_asked = false; // once a check, before its first change
};

QString baseCaption(const CFilterColumns& columns)
{
    const std::shared_ptr<ISearchBaseTable>& host = columns.BaseTableObject();
    return host ? host->Caption() : columns.BaseTableName();
}

} // namespace

std::shared_ptr<CCheckPopulationArgs> CFilterColumns::CreateCheckPopulationArguments(bool askFirst, int mode, const QDateTime& defaultDate)
{
    return std::make_shared<CCheckPopulationArgs>(askFirst, mode, defaultDate);
}

int CFilterColumns::StartProcessDataReportProgress(const IFormInfo* owner, bool askFirst, int mode, const QDateTime& defaultDate)
{
    SD_PROC("StartProcessDataReportProgress");
    int code = 0;
    SD_GUARDED([&] {
        const std::any answer = UiServices::current().RunProgress(*this, 1, CreateCheckPopulationArguments(askFirst, mode, defaultDate), owner);
        if (const auto* result = std::any_cast<std::shared_ptr<CCheckPopulationResult>>(&answer); result && *result)
            code = (*result)->ResultCode();
    });
    return code;
}

std::any CFilterColumns::IProgressHandler_ProcessRequest(int request, IProgress& progress, const std::any& arguments)
{
    if (request != 1)
        return {};
    const CCheckPopulationArgs* args = std::any_cast<CCheckPopulationArgs>(&arguments);
    if (const auto* shared = std::any_cast<std::shared_ptr<CCheckPopulationArgs>>(&arguments))
        args = shared->get();
    if (!args)
        return {};
    return CheckPopulationProgress(progress, *args);
}

std::shared_ptr<CCheckPopulationResult> CFilterColumns::CheckPopulationProgress(IProgress& progress, const CCheckPopulationArgs& arguments)
{
    if (m_handler && m_handler->DatabaseKind() == dbkSQLite)
        return CheckPopulationProgressADO(progress, arguments);
    return CheckPopulationProgressSQL(progress, arguments);
}

std::shared_ptr<CCheckPopulationResult> CFilterColumns::CheckPopulationProgressSQL(IProgress& progress, const CCheckPopulationArgs& arguments)
{
    SD_PROC("CheckPopulationProgressSQL");
    auto result = std::make_shared<CCheckPopulationResult>();
    SD_GUARDED([&] {
        if (!m_handler || !m_catalog || !m_baseKeyColumn)
            return;
        DatabaseHandler& db = *m_handler;
        const PopulationSql sql(*this);
        // Adds the missing rows first, then deletes the orphans; false when a statement failed.
        auto repair = [&](const PopulationTarget& target, bool missing, bool orphans) {
            if (missing) {
                progress.SetStatus(GetResourceText(8453));
                if (!db.ExecuteSql(sql.insertMissing(target))) {
                    detail::markConversionFailed();
                    return false;
                }
            }
            if (orphans) {
                progress.SetStatus(GetResourceText(8454));
                if (!db.ExecuteSql(sql.deleteOrphans(target))) {
                    detail::markConversionFailed();
                    return false;
                }
            }
            return true;
        };
        const bool finished = forEachTarget(*this, arguments.DefaultDate(), [&](const PopulationTarget& target) {
            progress.SetStatus(GetResourceText(8448, {target.table}));
            if (progress.Cancelled()) {
                result->setCancelled(true);
                return false;
            }
            // Without a question the check repairs at once, and the two statements change nothing
            // where nothing is amiss: the tests, each nearly as long as its statement, would only
            // tell what to ask.
            if (arguments.Mode() == 1 || !arguments.AskFirst())
                return repair(target, target.standard, true);

            bool missing = false;
            if (target.standard) {
                progress.SetStatus(GetResourceText(8451, {baseCaption(*this)}));
                const std::unique_ptr<Recordset> probe = db.OpenSqlRecordset(sql.missingProbe(target));
                if (!probe)
                    return false;
                missing = probe->RecordCount() >= 1;
                progress.SetStatus(GetResourceText(8452));
            }
            const std::unique_ptr<Recordset> probe = db.OpenSqlRecordset(sql.orphanProbe(target));
            if (!probe)
                return false;
            const bool orphans = probe->RecordCount() >= 1;
            if (!missing && !orphans)
                return true;
            result->setResultCode(detail::askConversion(db, BaseTableName(), arguments.Mode()));
            return !detail::endsCheck(result->ResultCode()) && repair(target, missing, orphans);
        });
        if (finished) {
            result->setResultCode(0);
            progress.SetStatus(GetResourceText(8455, {BaseTableName()}));
        }
    });
    return result;
}

std::shared_ptr<CCheckPopulationResult> CFilterColumns::CheckPopulationProgressADO(IProgress& progress, const CCheckPopulationArgs& arguments)
{
    SD_PROC("CheckPopulationProgressADO");
    auto result = std::make_shared<CCheckPopulationResult>();
    SD_GUARDED([&] {
        if (!m_handler || !m_catalog || !m_baseKeyColumn)
            return;
        KeyWalk walk(*this, progress, arguments, *result);
        const bool finished = forEachTarget(*this, arguments.DefaultDate(), [&](const PopulationTarget& target) { return walk.run(target); });
        if (finished) {
            result->setResultCode(0);
            progress.SetStatus(GetResourceText(8455, {BaseTableName()}));
        }
    });
    return result;
}

} // namespace searchdata
