#include "searchdata/AdoTypes.h"
#include "searchdata/Dialect.h"
#include "support/LocaleScope.h"

#include <QLocale>
#include <QSqlError>
#include <gtest/gtest.h>

using namespace searchdata;
using searchdata::test::LocaleScope;

namespace {

const Dialect& sqlite() { return Dialect::forKind(dbkSQLite); }
const Dialect& postgres() { return Dialect::forKind(dbkPostgreSQL); }

TEST(Dialect, QuotesNamesAndTextsPerDatabase)
{
    EXPECT_EQ(sqlite().BracketName("Files"), "[Files]");
    EXPECT_EQ(sqlite().BracketName("a]b"), "\"a]b\"");
    EXPECT_EQ(postgres().BracketName("Files"), "\"Files\"");
    EXPECT_EQ(postgres().BracketName("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(sqlite().QualifiedName("Files", "FileId"), "[Files].[FileId]");
    EXPECT_EQ(postgres().QualifiedName("Files", "FileId"), "\"Files\".\"FileId\"");
    for (const Dialect* d : {&sqlite(), &postgres()}) {
        EXPECT_EQ(d->SqlQuote("O'Neil"), "'O''Neil'");
        EXPECT_EQ(d->SqlQuote("both ' and \""), "'both '' and \"'");
        EXPECT_EQ(d->SqlQuote(""), "''");
    }
}

TEST(Dialect, ReadsBackTheFirstNameOfAQualifiedName)
{
    for (const Dialect* d : {&sqlite(), &postgres()})
        for (const QString name : {"Size", "a]b", "say \"hi\"", "with.dot", ""})
            EXPECT_EQ(d->LeadingName(d->QualifiedName(name, "Files")), name) << d->kind() << ": " << qPrintable(name);
    EXPECT_EQ(sqlite().LeadingName("[Size"), "Size") << "an unclosed bracket runs to the end";
    EXPECT_EQ(postgres().LeadingName("[Size].[Files]"), std::nullopt) << "brackets are no quotes on PostgreSQL";
    EXPECT_EQ(sqlite().LeadingName("Size"), std::nullopt);
    EXPECT_EQ(postgres().LeadingName("Size"), std::nullopt);
}

TEST(Dialect, WritesDatesBooleansAndNumbersIndependentlyOfLocale)
{
    const QDateTime when(QDate(2003, 7, 4), QTime(13, 5, 9));
    EXPECT_EQ(sqlite().SqlDate(when), "'2003-07-04 13:05:09'");
    EXPECT_EQ(postgres().SqlDate(when), "TIMESTAMP '2003-07-04 13:05:09'");
    EXPECT_EQ(sqlite().SqlBoolean(true), "1");
    EXPECT_EQ(sqlite().SqlBoolean(false), "0");
    EXPECT_EQ(postgres().SqlBoolean(true), "TRUE");
    EXPECT_EQ(postgres().SqlBoolean(false), "FALSE");

    const LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(Dialect::sqlNumber(1234.5), "1234.5");
    EXPECT_EQ(Dialect::sqlNumber(qint64(-1234567)), "-1234567");
}

TEST(Dialect, CreatedTypesReadBackAsTheirCodes)
{
    struct Case { int code; int size; };
    const Case created[] = {{adSmallInt, 0}, {adInteger, 0}, {adSingle, 0}, {adDouble, 0}, {adDate, 0},
                            {adBoolean, 0}, {adVarWChar, 255}, {adVarWChar, 0}, {adBigInt, 0}, {adChar, 8}};
    for (const Dialect* d : {&sqlite(), &postgres()}) {
        for (const Case& c : created) {
            const QString declared = d->declaredType(c.code, c.size);
            ASSERT_FALSE(declared.isEmpty()) << c.code;
            int size = -1;
            EXPECT_EQ(d->adoTypeOfDeclared(declared, &size), c.code) << qPrintable(declared);
            EXPECT_EQ(size, c.size) << qPrintable(declared);
        }
    }
    EXPECT_TRUE(sqlite().declaredType(adGUID, 0).isEmpty());
    EXPECT_EQ(postgres().declaredType(adGUID, 0), "uuid");
}

TEST(Dialect, HostTypesReadWithTheirCodes)
{
    struct Case { const char* declared; int code; int size; };
    const Case cases[] = {
        {"TEXT", adVarWChar, 0},         {"text", adVarWChar, 0},          {"NVARCHAR(40)", adVarWChar, 40},
        {"character varying(30)", adVarWChar, 30}, {"BIGINT", adBigInt, 0}, {"bigint", adBigInt, 0},
        {"NUMERIC(10,2)", adNumeric, 10}, {"numeric", adNumeric, 0},        {"DECIMAL", adNumeric, 0},
        {"DATE", adDate, 0},             {"timestamp without time zone", adDate, 0}, {"timestamptz", adDate, 0},
        {"CHAR(5)", adChar, 5},          {"character(5)", adChar, 5},      {"uuid", adGUID, 0},
        {"BLOB", adLongVarBinary, 0},    {"bytea", adLongVarBinary, 0},    {"MEDIUMINT", adInteger, 0},
        {"INT", adInteger, 0},           {"FLOAT", adSingle, 0},           {"DOUBLE PRECISION", adDouble, 0},
        {"BOOL", adBoolean, 0},          {"", adVarWChar, 0},
    };
    for (const Case& c : cases) {
        int size = -1;
        EXPECT_EQ(sqlite().adoTypeOfDeclared(c.declared, &size), c.code) << c.declared;
        EXPECT_EQ(size, c.size) << c.declared;
    }
}

TEST(Dialect, ConvertsPicklistNumbersOnlyWhereTheServerNeedsIt)
{
    EXPECT_EQ(postgres().numericConversion(adInteger, "7"), "CAST(7 AS INTEGER)");
    EXPECT_EQ(postgres().numericConversion(adSmallInt, "7"), "CAST(7 AS SMALLINT)");
    EXPECT_EQ(postgres().numericConversion(adSingle, "1.5"), "CAST(1.5 AS REAL)");
    EXPECT_EQ(postgres().numericConversion(adDouble, "1.5"), "CAST(1.5 AS DOUBLE PRECISION)");
    EXPECT_EQ(sqlite().numericConversion(adInteger, "7"), "7");
    EXPECT_EQ(postgres().likeEscapeClause(), " ESCAPE '\\'");
    EXPECT_EQ(sqlite().likeEscapeClause(), " ESCAPE '\\'");
}

TEST(Dialect, TellsLockErrorsFromOthers)
{
    EXPECT_TRUE(sqlite().isLockError(QSqlError("", "database is locked", QSqlError::StatementError, "5")));
    EXPECT_TRUE(sqlite().isLockError(QSqlError("", "", QSqlError::StatementError, "517")));
    EXPECT_TRUE(sqlite().isLockError(QSqlError("", "database table is locked", QSqlError::StatementError, "6")));
    EXPECT_FALSE(sqlite().isLockError(QSqlError("", "no such table: x", QSqlError::StatementError, "1")));
    EXPECT_TRUE(postgres().isLockError(QSqlError("", "", QSqlError::StatementError, "55P03")));
    EXPECT_FALSE(postgres().isLockError(QSqlError("", "", QSqlError::StatementError, "42P01")));
}

} // namespace
