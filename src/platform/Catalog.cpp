#include "searchdata/Catalog.h"

#include "platform/Names_p.h"

#include "platform/Guard_p.h"
#include "platform/SqliteTableSql_p.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/TableStructure.h"

#include <QHash>
#include <QMap>
#include <QRegularExpression>
#include <algorithm>

namespace searchdata {

using detail::findNamed;
using detail::sameNames;

namespace {

constexpr const char* kModule = "Catalog";

using TableMap = QMap<QString, std::shared_ptr<CatalogTable>>;

std::unique_ptr<Recordset> query(DatabaseHandler& db, const QString& sql)
{
    std::unique_ptr<Recordset> rs = db.OpenSqlRecordset(sql);
    if (!rs)
        detail::fail(QStringLiteral("cannot read the catalog: %1").arg(db.lastError()));
    return rs;
}

QString text(const Recordset& rs, const char* field)
{
    return rs.rawField(QLatin1String(field)).toString();
}

CatalogColumn makeColumn(const Dialect& dialect, const QString& name, const QString& declared, bool notNull,
                         const QVariant& defaultValue, const QString& defaultText)
{
    CatalogColumn c;
    c.name = name;
    c.declaredType = declared;
    c.type = dialect.adoTypeOfDeclared(declared, &c.definedSize);
    c.nullable = !notNull;
    // DEFAULT NULL is no default: PostgreSQL does not even keep it.
    c.hasDefault = !defaultValue.isNull() && !defaultText.isEmpty() && defaultText.compare(QLatin1String("NULL"), Qt::CaseInsensitive) != 0;
    c.defaultText = c.hasDefault ? defaultText : QString();
    return c;
}

// PostgreSQL shows a default literal with the casts it added: 'abc'::character varying, '-1'::integer,
// NULL::text. The bare literal is what the table's author wrote.
QString withoutCasts(const QString& expression)
{
    QString text = expression.trimmed();
    qsizetype literalEnd = -1;
    if (text.startsWith(QLatin1Char('\''))) {
        for (qsizetype i = 1; i < text.size(); ++i) {
            if (text[i] != u'\'')
                continue;
            if (i + 1 < text.size() && text[i + 1] == u'\'') {
                ++i;
                continue;
            }
            literalEnd = i + 1;
            break;
        }
    } else {
        literalEnd = text.indexOf(QLatin1String("::"));
    }
    if (literalEnd <= 0 || literalEnd >= text.size() || !text.mid(literalEnd).startsWith(QLatin1String("::")))
        return text;
    const QString casts = text.mid(literalEnd);
    static const QRegularExpression onlyCasts(QStringLiteral(R"(^(::[A-Za-z_ ]+(\([0-9, ]*\))?(\[\])?)+$)"));
    if (!onlyCasts.match(casts).hasMatch())
        return text;
    QString literal = text.left(literalEnd);
    static const QRegularExpression quotedNumber(QStringLiteral(R"(^'(-?[0-9]+(\.[0-9]+)?([eE][-+]?[0-9]+)?)'$)"));
    static const QRegularExpression numericCast(QStringLiteral(R"(^::(integer|smallint|bigint|numeric|real|double precision))"));
    const QRegularExpressionMatch number = quotedNumber.match(literal);
    if (number.hasMatch() && numericCast.match(casts).hasMatch())
        literal = number.captured(1);
    return literal;
}

QString ruleName(const QString& rule)
{
    const QString upper = rule.trimmed().toUpper();
    return upper.isEmpty() || upper == u"NONE" ? QStringLiteral("NO ACTION") : upper;
}

QString uniqueKeyName(const CatalogTable& table, const QString& stem)
{
    QString name = stem;
    auto taken = [&](const QString& n) {
        for (const CatalogKey& k : table.keys)
            if (k.name.compare(n, Qt::CaseInsensitive) == 0)
                return true;
        return false;
    };
    for (int n = 2; taken(name); ++n)
        name = stem + QLatin1Char('_') + QString::number(n);
    return name;
}


// The name written for a key in the CREATE TABLE text, taken once; blank when it was unnamed.
QString takeWrittenName(QList<detail::SqliteTableSql::Key>& written, KeyKind kind, const QStringList& columns, const QString& related)
{
    for (qsizetype i = 0; i < written.size(); ++i) {
        const auto& k = written[i];
        if (k.kind != kind || !sameNames(k.columns, columns))
            continue;
        if (kind == kkForeign && k.relatedTable.compare(related, Qt::CaseInsensitive) != 0)
            continue;
        const QString name = k.name;
        written.removeAt(i);
        return name;
    }
    return {};
}

int autoindexNumber(const QString& name)
{
    return name.mid(name.lastIndexOf(QLatin1Char('_')) + 1).toInt();
}

const QString kUserTables = QStringLiteral("m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");

TableMap readSqlite(DatabaseHandler& db)
{
    const Dialect& dialect = db.dialect();
    TableMap tables;
    QHash<QString, QList<detail::SqliteTableSql::Key>> written;
    QHash<QString, bool> rowidTables;

    auto rs = query(db, QStringLiteral("SELECT m.name AS tname, m.sql AS tsql FROM sqlite_master AS m WHERE ") + kUserTables);
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        auto table = std::make_shared<CatalogTable>();
        table->name = text(*rs, "tname");
        const auto parsed = detail::SqliteTableSql::parse(text(*rs, "tsql"));
        written.insert(table->name, parsed ? parsed->keys() : QList<detail::SqliteTableSql::Key>());
        rowidTables.insert(table->name, !parsed || !parsed->withoutRowid());
        tables.insert(table->name, table);
    }

    rs = query(db, QStringLiteral("SELECT m.name AS tname, p.name AS cname, p.type AS ctype, p.\"notnull\" AS cnotnull, "
                                  "p.dflt_value AS cdefault, p.pk AS cpk FROM sqlite_master AS m "
                                  "JOIN pragma_table_info(m.name) AS p WHERE ") + kUserTables
                       + QStringLiteral(" ORDER BY m.name, p.cid"));
    QHash<QString, QMap<int, QString>> primaryColumns;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const auto table = tables.value(text(*rs, "tname"));
        if (!table)
            continue;
        const QVariant def = rs->rawField(QStringLiteral("cdefault"));
        table->columns.append(makeColumn(dialect, text(*rs, "cname"), text(*rs, "ctype"), rs->rawField(QStringLiteral("cnotnull")).toInt() != 0,
                                         def, def.toString().trimmed()));
        if (const int pk = rs->rawField(QStringLiteral("cpk")).toInt(); pk > 0)
            primaryColumns[table->name].insert(pk, table->columns.last().name);
    }

    for (auto it = primaryColumns.cbegin(); it != primaryColumns.cend(); ++it) {
        const auto table = tables.value(it.key());
        const QStringList columns = it.value().values();
        QString name = takeWrittenName(written[table->name], kkPrimary, columns, {});
        table->keys.append(CatalogKey{name.isEmpty() ? QStringLiteral("PK_") + table->name : name, kkPrimary, columns, {}, {}, false, {}});
        // An INTEGER PRIMARY KEY is the rowid: it never holds NULL, whatever the pragma says.
        if (columns.size() == 1 && rowidTables.value(table->name))
            for (CatalogColumn& c : table->columns)
                if (c.name == columns.first() && c.declaredType.trimmed().compare(QLatin1String("INTEGER"), Qt::CaseInsensitive) == 0)
                    c.nullable = false;
    }

    rs = query(db, QStringLiteral("SELECT m.name AS tname, il.name AS iname, il.\"unique\" AS iunique, il.origin AS iorigin, "
                                  "ii.name AS cname FROM sqlite_master AS m JOIN pragma_index_list(m.name) AS il "
                                  "JOIN pragma_index_info(il.name) AS ii WHERE ") + kUserTables
                       + QStringLiteral(" ORDER BY m.name, il.name, ii.seqno"));
    struct IndexRows {
        QString name;
        QString origin;
        bool unique = false;
        QStringList columns;
    };
    QHash<QString, QList<IndexRows>> indexes;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        QList<IndexRows>& list = indexes[text(*rs, "tname")];
        const QString name = text(*rs, "iname");
        if (list.isEmpty() || list.last().name != name)
            list.append({name, text(*rs, "iorigin"), rs->rawField(QStringLiteral("iunique")).toInt() != 0, {}});
        list.last().columns.append(text(*rs, "cname"));
    }
    for (auto it = indexes.begin(); it != indexes.end(); ++it) {
        const auto table = tables.value(it.key());
        if (!table)
            continue;
        // Unique keys in the order they were written, which SQLite numbers its indexes by.
        QList<IndexRows> uniques;
        for (const IndexRows& index : std::as_const(it.value())) {
            if (index.origin == u"u")
                uniques.append(index);
            else if (index.origin == u"c")
                table->indexes.append(CatalogIndex{index.name, index.columns, index.unique});
        }
        std::sort(uniques.begin(), uniques.end(),
                  [](const IndexRows& a, const IndexRows& b) { return autoindexNumber(a.name) < autoindexNumber(b.name); });
        for (const IndexRows& index : std::as_const(uniques)) {
            const QString name = takeWrittenName(written[table->name], kkUnique, index.columns, {});
            table->keys.append(CatalogKey{name.isEmpty() ? index.name : name, kkUnique, index.columns, {}, {}, false, {}});
        }
    }

    rs = query(db, QStringLiteral("SELECT m.name AS tname, f.id AS fid, f.\"table\" AS rtable, f.\"from\" AS cname, "
                                  "f.\"to\" AS rcolumn, f.on_delete AS ondelete FROM sqlite_master AS m "
                                  "JOIN pragma_foreign_key_list(m.name) AS f WHERE ") + kUserTables
                       + QStringLiteral(" ORDER BY m.name, f.id DESC, f.seq"));
    QString lastTable;
    int lastId = -1;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const auto table = tables.value(text(*rs, "tname"));
        if (!table)
            continue;
        const int id = rs->rawField(QStringLiteral("fid")).toInt();
        if (table->name != lastTable || id != lastId) {
            const QString rule = ruleName(text(*rs, "ondelete"));
            table->keys.append(CatalogKey{{}, kkForeign, {}, text(*rs, "rtable"), {}, rule == u"CASCADE", rule});
            lastTable = table->name;
            lastId = id;
        }
        CatalogKey& key = table->keys.last();
        key.columns.append(text(*rs, "cname"));
        key.relatedColumns.append(text(*rs, "rcolumn"));
    }
    // Written names first, so that a made-up name never takes one that the table's author chose.
    for (const auto& table : std::as_const(tables))
        for (CatalogKey& key : table->keys)
            if (key.kind == kkForeign && key.name.isEmpty())
                key.name = takeWrittenName(written[table->name], kkForeign, key.columns, key.relatedTable);
    for (const auto& table : std::as_const(tables))
        for (CatalogKey& key : table->keys)
            if (key.kind == kkForeign && key.name.isEmpty())
                key.name = uniqueKeyName(*table, QStringLiteral("FK_%1_%2").arg(table->name, key.relatedTable));
    return tables;
}

QString pgRule(const QString& code)
{
    if (code == u"c")
        return QStringLiteral("CASCADE");
    if (code == u"n")
        return QStringLiteral("SET NULL");
    if (code == u"d")
        return QStringLiteral("SET DEFAULT");
    if (code == u"r")
        return QStringLiteral("RESTRICT");
    return QStringLiteral("NO ACTION");
}

TableMap readPostgres(DatabaseHandler& db)
{
    const Dialect& dialect = db.dialect();
    TableMap tables;
    const QString inSchema = QStringLiteral(" JOIN pg_namespace AS n ON n.oid = c.relnamespace WHERE n.nspname = current_schema() "
                                            "AND c.relkind IN ('r', 'p')");

    auto rs = query(db, QStringLiteral("SELECT c.relname AS tname FROM pg_class AS c") + inSchema);
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        auto table = std::make_shared<CatalogTable>();
        table->name = text(*rs, "tname");
        tables.insert(table->name, table);
    }

    rs = query(db, QStringLiteral("SELECT c.relname AS tname, a.attname AS cname, format_type(a.atttypid, a.atttypmod) AS ctype, "
                                  "a.attnotnull AS cnotnull, pg_get_expr(d.adbin, d.adrelid) AS cdefault "
                                  "FROM pg_class AS c JOIN pg_attribute AS a ON a.attrelid = c.oid "
                                  "LEFT JOIN pg_attrdef AS d ON d.adrelid = a.attrelid AND d.adnum = a.attnum") + inSchema
                       + QStringLiteral(" AND a.attnum > 0 AND NOT a.attisdropped ORDER BY c.relname, a.attnum"));
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const auto table = tables.value(text(*rs, "tname"));
        if (!table)
            continue;
        const QVariant def = rs->rawField(QStringLiteral("cdefault"));
        table->columns.append(makeColumn(dialect, text(*rs, "cname"), text(*rs, "ctype"), rs->rawField(QStringLiteral("cnotnull")).toBool(),
                                         def, withoutCasts(def.toString())));
    }

    rs = query(db, QStringLiteral("SELECT c.relname AS tname, con.conname AS kname, con.contype::text AS ktype, a.attname AS cname, "
                                  "fc.relname AS rtable, fa.attname AS rcolumn, con.confdeltype::text AS ondelete "
                                  "FROM pg_constraint AS con JOIN pg_class AS c ON c.oid = con.conrelid "
                                  "CROSS JOIN LATERAL unnest(con.conkey) WITH ORDINALITY AS k(attnum, ord) "
                                  "JOIN pg_attribute AS a ON a.attrelid = con.conrelid AND a.attnum = k.attnum "
                                  "LEFT JOIN pg_class AS fc ON fc.oid = con.confrelid "
                                  "LEFT JOIN pg_attribute AS fa ON fa.attrelid = con.confrelid AND fa.attnum = con.confkey[k.ord]")
                       + inSchema + QStringLiteral(" AND con.contype IN ('p', 'u', 'f') ORDER BY c.relname, con.conname, k.ord"));
    QString lastKey;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const auto table = tables.value(text(*rs, "tname"));
        if (!table)
            continue;
        const QString name = text(*rs, "kname");
        if (table->keys.isEmpty() || lastKey != table->name + QLatin1Char('\0') + name) {
            const QString type = text(*rs, "ktype");
            const KeyKind kind = type == u"p" ? kkPrimary : type == u"u" ? kkUnique : kkForeign;
            const QString rule = kind == kkForeign ? pgRule(text(*rs, "ondelete")) : QString();
            table->keys.append(CatalogKey{name, kind, {}, text(*rs, "rtable"), {}, rule == u"CASCADE", rule});
            lastKey = table->name + QLatin1Char('\0') + name;
        }
        CatalogKey& key = table->keys.last();
        key.columns.append(text(*rs, "cname"));
        if (key.kind == kkForeign)
            key.relatedColumns.append(text(*rs, "rcolumn"));
    }

    rs = query(db, QStringLiteral("SELECT c.relname AS tname, ic.relname AS iname, i.indisunique AS iunique, a.attname AS cname "
                                  "FROM pg_index AS i JOIN pg_class AS ic ON ic.oid = i.indexrelid JOIN pg_class AS c ON c.oid = i.indrelid "
                                  "CROSS JOIN LATERAL unnest(i.indkey::int2[]) WITH ORDINALITY AS k(attnum, ord) "
                                  "LEFT JOIN pg_attribute AS a ON a.attrelid = i.indrelid AND a.attnum = k.attnum")
                       + inSchema
                       + QStringLiteral(" AND k.ord <= i.indnkeyatts AND NOT EXISTS (SELECT 1 FROM pg_constraint AS con "
                                        "WHERE con.conindid = i.indexrelid AND con.conrelid = i.indrelid AND con.contype IN ('p', 'u', 'x')) "
                                        "ORDER BY c.relname, ic.relname, k.ord"));
    QString lastIndex;
    for (; !rs->EndOfFile(); rs->MoveNext()) {
        const auto table = tables.value(text(*rs, "tname"));
        if (!table)
            continue;
        const QString name = text(*rs, "iname");
        if (table->indexes.isEmpty() || lastIndex != table->name + QLatin1Char('\0') + name) {
            table->indexes.append(CatalogIndex{name, {}, rs->rawField(QStringLiteral("iunique")).toBool()});
            lastIndex = table->name + QLatin1Char('\0') + name;
        }
        table->indexes.last().columns.append(text(*rs, "cname"));
    }
    return tables;
}

std::shared_ptr<CatalogTable> findIn(const TableMap& tables, const QString& name)
{
    if (auto exact = tables.value(name))
        return exact;
    for (const auto& table : tables)
        if (table->name.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    return nullptr;
}


} // namespace

Catalog::Catalog(std::shared_ptr<DatabaseHandler> handler) : m_handler(std::move(handler))
{
    Refresh();
}

bool Catalog::Refresh()
{
    SD_PROC("Refresh");
    return SD_GUARDED(([&] {
        if (!m_handler)
            detail::fail(QStringLiteral("the catalog has no connection"));
        TableMap tables = m_handler->DatabaseKind() == dbkPostgreSQL ? readPostgres(*m_handler) : readSqlite(*m_handler);
        // A foreign key that names its related table in other capitals, or leaves out the related
        // columns (SQLite: the related primary key), is given the related table's own spelling.
        for (const auto& table : std::as_const(tables)) {
            for (CatalogKey& key : table->keys) {
                if (key.kind != kkForeign)
                    continue;
                const auto related = findIn(tables, key.relatedTable);
                if (!related)
                    continue;
                key.relatedTable = related->name;
                const bool implicitColumns = std::all_of(key.relatedColumns.cbegin(), key.relatedColumns.cend(),
                                                         [](const QString& c) { return c.isEmpty(); });
                if (implicitColumns)
                    for (const CatalogKey& k : related->keys)
                        if (k.kind == kkPrimary)
                            key.relatedColumns = k.columns;
            }
        }
        QList<CatalogTablePtr> list;
        list.reserve(tables.size());
        for (const auto& table : std::as_const(tables))
            list.append(table);
        m_tables = std::move(list);
        ++m_generation;
    }));
}

QList<std::pair<CatalogTablePtr, CatalogKey>> Catalog::ReferencesTo(const QString& table) const
{
    QList<std::pair<CatalogTablePtr, CatalogKey>> result;
    for (const CatalogTablePtr& t : m_tables)
        for (const CatalogKey& key : t->keys)
            if (key.kind == kkForeign && key.relatedTable.compare(table, Qt::CaseInsensitive) == 0)
                result.append({t, key});
    return result;
}

CatalogTablePtr GetCatalogTable(const Catalog& catalog, const QString& name)
{
    for (const CatalogTablePtr& table : catalog.Tables())
        if (table->name == name)
            return table;
    for (const CatalogTablePtr& table : catalog.Tables())
        if (table->name.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    return nullptr;
}

std::optional<CatalogColumn> GetTableColumn(const CatalogTable& table, const QString& name)
{
    return findNamed(table.columns, name);
}

std::optional<CatalogColumn> GetTableColumn(const CatalogTablePtr& table, const QString& name)
{
    return table ? GetTableColumn(*table, name) : std::nullopt;
}

std::optional<CatalogIndex> GetTableIndex(const CatalogTable& table, const QString& name)
{
    return findNamed(table.indexes, name);
}

std::optional<CatalogIndex> GetTableIndex(const CatalogTablePtr& table, const QString& name)
{
    return table ? GetTableIndex(*table, name) : std::nullopt;
}

std::optional<CatalogKey> GetTableKey(const CatalogTable& table, const QString& name)
{
    return findNamed(table.keys, name);
}

std::optional<CatalogKey> GetTableKey(const CatalogTablePtr& table, const QString& name)
{
    return table ? GetTableKey(*table, name) : std::nullopt;
}

std::shared_ptr<TableStructure> DescribeBaseTable(const CatalogTable& table, const QString& key)
{
    if (!GetTableColumn(table, key))
        return nullptr;
    auto structure = TableStructure::NewStructure(table.name);
    if (!structure)
        return nullptr;
    for (const CatalogColumn& c : table.columns)
        (void)structure->AddColumn(c.name, c.type, c.definedSize, 0, c.nullable);
    if (!structure->AddPrimaryKey(QStringLiteral("PK_") + table.name, {key}))
        return nullptr;
    return structure;
}

} // namespace searchdata
