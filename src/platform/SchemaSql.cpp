#include "platform/SchemaSql_p.h"

#include "platform/Guard_p.h"

#include <QRegularExpression>

namespace searchdata::detail {

namespace {

bool isNumericKind(int type)
{
    return type == adNumeric || type == adDecimal;
}

} // namespace

QString SchemaSql::typeOf(const StructureColumn& column) const
{
    QString declared = m_dialect.declaredType(column.type, column.size);
    if (isNumericKind(column.type) && column.size > 0 && column.scale > 0 && declared.endsWith(QLatin1Char(')')))
        declared.insert(declared.size() - 1, QLatin1Char(',') + QString::number(column.scale));
    return declared;
}

QString SchemaSql::defaultOf(const StructureColumn& column) const
{
    if (!column.hasDefault)
        return {};
    QString text = column.defaultText.trimmed();
    if (text.isEmpty() || text.compare(QLatin1String("NULL"), Qt::CaseInsensitive) == 0)
        return {};
    if (column.type == adBoolean) {
        QString bare = text;
        if (bare.size() >= 2 && bare.startsWith(QLatin1Char('\'')) && bare.endsWith(QLatin1Char('\'')))
            bare = bare.mid(1, bare.size() - 2).trimmed();
        bool isNumber = false;
        const double number = bare.toDouble(&isNumber);
        if (isNumber)
            return m_dialect.SqlBoolean(number != 0);
        if (bare.compare(QLatin1String("TRUE"), Qt::CaseInsensitive) == 0)
            return m_dialect.SqlBoolean(true);
        if (bare.compare(QLatin1String("FALSE"), Qt::CaseInsensitive) == 0)
            return m_dialect.SqlBoolean(false);
    }
    return text;
}

QString SchemaSql::column(const StructureColumn& column) const
{
    const QString type = typeOf(column);
    if (type.isEmpty())
        fail(QStringLiteral("this database cannot make column %1 of type %2").arg(column.name, QString::number(column.type)));
    QString sql = m_dialect.BracketName(column.name) + QLatin1Char(' ') + type;
    if (!column.nullable)
        sql += QLatin1String(" NOT NULL");
    if (column.identity) {
        if (m_dialect.identityClause().isEmpty())
            fail(QStringLiteral("this database cannot number column %1 by itself").arg(column.name));
        sql += m_dialect.identityClause();
    }
    const QString def = defaultOf(column);
    if (!def.isEmpty())
        sql += QLatin1String(" DEFAULT ") + def;
    return sql;
}

QString SchemaSql::names(const QStringList& names) const
{
    QStringList quoted;
    for (const QString& name : names)
        quoted.append(m_dialect.BracketName(name));
    return QLatin1Char('(') + quoted.join(QLatin1String(", ")) + QLatin1Char(')');
}

QString SchemaSql::constraint(const StructureKey& key) const
{
    QString sql = QLatin1String("CONSTRAINT ") + m_dialect.BracketName(key.name);
    switch (key.kind) {
    case kkPrimary:
        return sql + QLatin1String(" PRIMARY KEY ") + names(key.columns);
    case kkUnique:
        return sql + QLatin1String(" UNIQUE ") + names(key.columns);
    case kkForeign:
        sql += QLatin1String(" FOREIGN KEY ") + names(key.columns) + QLatin1String(" REFERENCES ")
               + m_dialect.BracketName(key.relatedTable) + QLatin1Char(' ') + names(key.relatedColumns);
        if (key.cascade)
            sql += QLatin1String(" ON DELETE CASCADE ON UPDATE CASCADE");
        return sql;
    }
    fail(QStringLiteral("key %1 is of an unknown kind").arg(key.name));
}

QString SchemaSql::createTable(const TableStructure& structure, const QList<StructureKey>* keys) const
{
    QStringList parts;
    for (const StructureColumn& c : structure.StructureColumns())
        parts.append(column(c));
    const QList<StructureKey>& all = keys ? *keys : structure.StructureKeys();
    // Primary and unique keys first: a foreign key of the table may refer to its own key.
    for (const StructureKey& key : all)
        if (key.kind != kkForeign)
            parts.append(constraint(key));
    for (const StructureKey& key : all)
        if (key.kind == kkForeign)
            parts.append(constraint(key));
    return QLatin1String("CREATE TABLE ") + m_dialect.BracketName(structure.name()) + QLatin1String(" (")
           + parts.join(QLatin1String(", ")) + QLatin1Char(')');
}

QString SchemaSql::createIndex(const QString& table, const StructureIndex& index) const
{
    return QLatin1String(index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + m_dialect.BracketName(index.name)
           + QLatin1String(" ON ") + m_dialect.BracketName(table) + QLatin1Char(' ') + names(index.columns);
}

QString SchemaSql::fill(const TableStructure& structure) const
{
    const StructureFill& fill = *structure.fill();
    QString targets;
    if (fill.population && !fill.population->StructureColumns().isEmpty()) {
        QStringList columns;
        for (const StructureColumn& c : fill.population->StructureColumns())
            columns.append(c.name);
        targets = names(columns);
    } else {
        targets = QLatin1Char('(') + fill.bracketedKey + QLatin1Char(')');
    }
    QString source = fill.selectionText.trimmed();
    if (source.isEmpty())
        source = QLatin1String("SELECT ") + fill.bracketedKey + QLatin1String(" FROM ") + m_dialect.BracketName(fill.baseTableName);
    return QLatin1String("INSERT INTO ") + m_dialect.BracketName(structure.name()) + QLatin1Char(' ') + targets + QLatin1Char(' ') + source;
}

std::pair<int, int> SchemaSql::createdShape(const StructureColumn& column) const
{
    const QString declared = typeOf(column);
    if (declared.isEmpty())
        return {column.type, column.size};
    int size = 0;
    const int code = m_dialect.adoTypeOfDeclared(declared, &size);
    return {code, size};
}

void SchemaSql::checkName(const QString& name) const
{
    if (name.trimmed().isEmpty())
        fail(QStringLiteral("a blank name cannot be made"));
    // PostgreSQL keeps 63 bytes of a name and drops the rest without an error; a name cut so could
    // never be found again, so it is refused here.
    if (m_dialect.kind() == dbkPostgreSQL && name.toUtf8().size() > 63)
        fail(QStringLiteral("the name %1 is longer than PostgreSQL keeps (63 bytes)").arg(name));
}

void SchemaSql::checkNames(const TableStructure& structure) const
{
    checkName(structure.name());
    for (const StructureColumn& c : structure.StructureColumns())
        checkName(c.name);
    for (const StructureKey& k : structure.StructureKeys())
        checkName(k.name);
    for (const StructureIndex& i : structure.StructureIndexes())
        checkName(i.name);
}

} // namespace searchdata::detail
