#include "searchdata/Dialect.h"

#include "searchdata/AdoTypes.h"

#include <QLocale>
#include <QRegularExpression>
#include <QSqlError>

namespace searchdata {

const Dialect& Dialect::forKind(int kind)
{
    static const Dialect sqlite(dbkSQLite);
    static const Dialect postgres(dbkPostgreSQL);
    return kind == dbkPostgreSQL ? postgres : sqlite;
}

QString Dialect::BracketName(const QString& name) const
{
    // Names are quoted for every statement: one allocation each.
    const auto enclosed = [](QChar open, QStringView inner, QChar close) {
        QString quoted;
        quoted.reserve(inner.size() + 2);
        quoted.append(open).append(inner).append(close);
        return quoted;
    };
    if (m_kind == dbkPostgreSQL) {
        if (!name.contains(QLatin1Char('"')))
            return enclosed(QLatin1Char('"'), name, QLatin1Char('"'));
        QString inner = name;
        inner.replace(QLatin1Char('"'), QLatin1String("\"\""));
        return QLatin1Char('"') + inner + QLatin1Char('"');
    }
    if (!name.contains(QLatin1Char(']')))
        return enclosed(QLatin1Char('['), name, QLatin1Char(']'));
    // Brackets cannot escape a closing bracket; SQLite reads double quotes as well.
    QString inner = name;
    inner.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + inner + QLatin1Char('"');
}

QString Dialect::QualifiedName(const QString& table, const QString& column) const
{
    return BracketName(table) + QLatin1Char('.') + BracketName(column);
}

std::optional<QString> Dialect::LeadingName(const QString& text) const
{
    if (m_kind != dbkPostgreSQL && text.startsWith(QLatin1Char('['))) {
        const qsizetype close = text.indexOf(QLatin1Char(']'), 1);
        return text.mid(1, close < 0 ? -1 : close - 1);
    }
    if (!text.startsWith(QLatin1Char('"')))
        return std::nullopt;
    QString name;
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('"')) {
            if (i + 1 >= text.size() || text[i + 1] != QLatin1Char('"'))
                break;
            ++i; // a doubled quote stands for one
        }
        name += text[i];
    }
    return name;
}

QString Dialect::SqlQuote(const QString& text) const
{
    QString inner = text;
    inner.replace(QLatin1Char('\''), QLatin1String("''"));
    return QLatin1Char('\'') + inner + QLatin1Char('\'');
}

QString Dialect::SqlDate(const QDateTime& value) const
{
    const QString text = QLatin1Char('\'') + value.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) + QLatin1Char('\'');
    return m_kind == dbkPostgreSQL ? QStringLiteral("TIMESTAMP ") + text : text;
}

QString Dialect::SqlBoolean(bool value) const
{
    if (m_kind == dbkPostgreSQL)
        return value ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

QString Dialect::sqlNumber(double value)
{
    return QLocale::c().toString(value, 'g', QLocale::FloatingPointShortest);
}

QString Dialect::sqlNumber(qint64 value)
{
    return QString::number(value);
}

QString Dialect::declaredType(int adoType, int size) const
{
    const bool pg = m_kind == dbkPostgreSQL;
    switch (adoType) {
    case adSmallInt:
    case adTinyInt:
    case adUnsignedTinyInt:
        return pg ? QStringLiteral("smallint") : QStringLiteral("SMALLINT");
    case adInteger:
        return pg ? QStringLiteral("integer") : QStringLiteral("INTEGER");
    case adSingle:
        return pg ? QStringLiteral("real") : QStringLiteral("REAL");
    case adDouble:
        return pg ? QStringLiteral("double precision") : QStringLiteral("DOUBLE");
    case adCurrency:
        return pg ? QStringLiteral("numeric(19,4)") : QStringLiteral("NUMERIC(19,4)");
    case adDate:
    case adDBTimeStamp:
        return pg ? QStringLiteral("timestamp") : QStringLiteral("DATETIME");
    case adDBTime:
        return pg ? QStringLiteral("time") : QStringLiteral("TIME");
    case adBoolean:
        return pg ? QStringLiteral("boolean") : QStringLiteral("BOOLEAN");
    case adBigInt:
        return pg ? QStringLiteral("bigint") : QStringLiteral("BIGINT");
    case adGUID:
        return pg ? QStringLiteral("uuid") : QString();
    case adChar:
        return (pg ? QStringLiteral("char(%1)") : QStringLiteral("CHAR(%1)")).arg(size > 0 ? size : 1);
    case adDecimal:
    case adNumeric:
        if (size > 0)
            return (pg ? QStringLiteral("numeric(%1)") : QStringLiteral("NUMERIC(%1)")).arg(size);
        return pg ? QStringLiteral("numeric") : QStringLiteral("NUMERIC");
    case adVarWChar:
        if (size > 0)
            return (pg ? QStringLiteral("varchar(%1)") : QStringLiteral("VARCHAR(%1)")).arg(size);
        return pg ? QStringLiteral("text") : QStringLiteral("TEXT");
    case adLongVarWChar:
        return pg ? QStringLiteral("text") : QStringLiteral("TEXT");
    case adBinary:
    case adVarBinary:
    case adLongVarBinary:
        return pg ? QStringLiteral("bytea") : QStringLiteral("BLOB");
    default:
        return {};
    }
}

int Dialect::adoTypeOfDeclared(const QString& declaredType, int* size) const
{
    static const QRegularExpression shape(QStringLiteral(R"(^\s*([A-Za-z_ ]*?)\s*(?:\(\s*(\d+)\s*(?:,\s*\d+\s*)?\))?\s*(?:\[\])?\s*$)"));
    const QRegularExpressionMatch m = shape.match(declaredType);
    const QString name = m.hasMatch() ? m.captured(1).simplified().toUpper() : declaredType.simplified().toUpper();
    const int length = m.hasMatch() && !m.captured(2).isEmpty() ? m.captured(2).toInt() : 0;
    auto sized = [&](int code, int n) {
        if (size)
            *size = n;
        return code;
    };

    if (name == u"SMALLINT" || name == u"INT2")
        return sized(adSmallInt, 0);
    if (name == u"TINYINT")
        return sized(adTinyInt, 0);
    if (name == u"INT" || name == u"INTEGER" || name == u"MEDIUMINT" || name == u"INT4" || name == u"SERIAL")
        return sized(adInteger, 0);
    if (name == u"REAL" || name == u"FLOAT" || name == u"FLOAT4")
        return sized(adSingle, 0);
    if (name == u"DOUBLE" || name == u"DOUBLE PRECISION" || name == u"FLOAT8")
        return sized(adDouble, 0);
    if (name == u"DATETIME" || name == u"DATE" || name.startsWith(u"TIMESTAMP") || name == u"TIMESTAMPTZ")
        return sized(adDate, 0);
    if (name == u"TIME" || name.startsWith(u"TIME WITH"))
        return sized(adDBTime, 0);
    if (name == u"BOOLEAN" || name == u"BOOL")
        return sized(adBoolean, 0);
    if (name == u"BIGINT" || name == u"INT8" || name == u"BIGSERIAL")
        return sized(adBigInt, 0);
    if (name == u"UUID")
        return sized(adGUID, 0);
    if (name == u"CHAR" || name == u"CHARACTER" || name == u"NCHAR" || name == u"BPCHAR")
        return sized(adChar, length);
    if (name == u"NUMERIC" || name == u"DECIMAL" || name == u"MONEY")
        return sized(adNumeric, length);
    if (name == u"BLOB" || name == u"BYTEA")
        return sized(adLongVarBinary, 0);
    // VARCHAR(n), NVARCHAR(n), character varying(n), TEXT, CLOB and anything unknown read as text.
    return sized(adVarWChar, length);
}

QString Dialect::numericConversion(int adoType, const QString& literal) const
{
    if (m_kind != dbkPostgreSQL)
        return literal;
    switch (adoType) {
    case adSmallInt:
        return QStringLiteral("CAST(%1 AS SMALLINT)").arg(literal);
    case adInteger:
        return QStringLiteral("CAST(%1 AS INTEGER)").arg(literal);
    case adSingle:
        return QStringLiteral("CAST(%1 AS REAL)").arg(literal);
    case adDouble:
        return QStringLiteral("CAST(%1 AS DOUBLE PRECISION)").arg(literal);
    case adDecimal:
    case adNumeric:
        return QStringLiteral("CAST(%1 AS NUMERIC)").arg(literal);
    default:
        return literal;
    }
}

QString Dialect::likeEscapeClause() const
{
    // Spelled out on every database: SQLite has no escape character of its own, PostgreSQL's may be
    // set otherwise, and a saved filter must select the same records on either.
    return QStringLiteral(" ESCAPE '\\'");
}

QString Dialect::storageOrder() const
{
    return m_kind == dbkPostgreSQL ? QStringLiteral("ctid") : QStringLiteral("rowid");
}

QString Dialect::identityClause() const
{
    return m_kind == dbkPostgreSQL ? QStringLiteral(" GENERATED BY DEFAULT AS IDENTITY") : QString();
}

bool Dialect::isLockError(const QSqlError& error) const
{
    const QString code = error.nativeErrorCode();
    if (m_kind == dbkPostgreSQL)
        return code == u"55P03" || code == u"40P01";
    bool ok = false;
    const int native = code.toInt(&ok);
    if (ok) {
        const int primary = native & 0xff; // extended codes carry the primary code in the low byte
        return primary == 5 || primary == 6;
    }
    return error.databaseText().contains(QLatin1String("database is locked"))
        || error.databaseText().contains(QLatin1String("database table is locked"));
}

} // namespace searchdata
