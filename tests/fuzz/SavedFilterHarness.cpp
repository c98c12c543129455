#include "fuzz/SavedFilterHarness.h"

#include "fuzz/FuzzColumns.h"
#include "fuzz/Mutator.h"
#include "searchdata/AdoTypes.h"
#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/TableStructure.h"

#include <QDir>
#include <QFile>

namespace searchdata::fuzz {

namespace {

} // namespace

QList<QByteArray> SavedFilterHarness::seedCorpus()
{
    return readCorpus(QStringLiteral(SEARCHDATA_SOURCE_DIR "/tests/fuzz/filters"), QStringLiteral(".ini"));
}

QList<QByteArray> SavedFilterHarness::tokens()
{
    return {
        "[Files_1_Last_Filter]\n", "[Files_1_Archive_Last_Filter]\n", "Field", "Table", "Operation", "CompareTo", "Conjunction", "=", "\n",
        "\r\n", "1", "2", "12", "0", "-1", "99999", "2147483648", "32767", "1e400", "nan", "-32769", "0.5", "FilesSearchData",
        "FilesSearchKeywordTags", "FilesSearchKeywordCodes", "Files", "Customer", "Tags", "Codes", "Due", "Done", "Name", "Size",
        "Modified", "Remarks", "Colour", "Qty", "Count", "Ratio", "Price", "#7-4-2003#", "#13-45-2003#", "#2-29-2001 25:61:61#",
        "2003-07-04 13:05", "\"", "'", "''", "\\", "\\\\", "%", "_", "[", "]", ";", "#", ",", "\\x41", "\\0", "%U", "%20",
        "@Variant(", "@ByteArray(", "@Rect(1 2 3 4)", "@Size(1 2)", "@Point(1 2)", "@Invalid()", "\xc3\xa9", "\xef\xbb\xbf", "\xff\xfe",
        "\xe6\x9d\xb1",
    };
}

SavedFilterHarness::SavedFilterHarness(std::shared_ptr<DatabaseHandler> db, const QString& folder)
    : m_db(std::move(db)), m_profileFile(QDir(folder).filePath(QStringLiteral("profile.ini")))
{
    DatabaseHandler& d = *m_db;
    const Dialect& dialect = d.dialect();
    const QString files = d.BracketName(QStringLiteral("Files"));
    bool built = d.ExecuteSql(QStringLiteral("CREATE TABLE ") + files + QStringLiteral(" (") + d.BracketName(QStringLiteral("FileId"))
                              + QStringLiteral(" INTEGER NOT NULL PRIMARY KEY, ") + d.BracketName(QStringLiteral("Name")) + QLatin1Char(' ')
                              + dialect.declaredType(adVarWChar, 255) + QStringLiteral(", ") + d.BracketName(QStringLiteral("Size"))
                              + QLatin1Char(' ') + dialect.declaredType(adBigInt, 0) + QStringLiteral(", ")
                              + d.BracketName(QStringLiteral("Modified")) + QLatin1Char(' ') + dialect.declaredType(adDate, 0)
                              + QLatin1Char(')'));
    const char* const rows[] = {"1, 'file%one', 100, ", "2, 'file_two', 250000, ", "3, 'it''s', NULL, ", "4, NULL, 7, "};
    for (const char* row : rows)
        built = built
             && d.ExecuteSql(QStringLiteral("INSERT INTO ") + files + QStringLiteral(" VALUES (") + QLatin1String(row)
                             + d.SqlDate(QDateTime(QDate(2003, 7, 4), QTime(13, 5))) + QLatin1Char(')'));
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    built = built && structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false)
         && structure->AddColumn(QStringLiteral("Name"), adVarWChar, 255) && structure->AddColumn(QStringLiteral("Size"), adBigInt, 0)
         && structure->AddColumn(QStringLiteral("Modified"), adDate, 0) && structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto catalog = std::make_shared<Catalog>(m_db);
    auto open = [&] {
        catalog->Refresh();
        return CCommon().CreateSearchFilterObject(m_db, std::make_shared<NamedBaseTable>(QStringLiteral("Files")), catalog, nullptr, 0, structure);
    };
    m_filter = built ? open() : nullptr;
    auto cols = m_filter ? m_filter->FilterColumns() : nullptr;
    if (!cols) {
        m_error = QStringLiteral("the search could not be opened: ") + d.lastError();
        return;
    }
    addEveryColumnType(*cols);
    if (!cols->ColumnsSave(nullptr)) {
        m_error = QStringLiteral("the columns could not be saved: ") + d.lastError();
        return;
    }
    m_filter = open();
    const QString data = d.BracketName(QStringLiteral("FilesSearchData"));
    const QString id = d.BracketName(QStringLiteral("FileId"));
    built = d.ExecuteSql(QStringLiteral("UPDATE ") + data + QStringLiteral(" SET ") + d.BracketName(QStringLiteral("Customer"))
                         + QStringLiteral(" = 'Acme Tools', ") + d.BracketName(QStringLiteral("Qty")) + QStringLiteral(" = 12 WHERE ") + id
                         + QStringLiteral(" = 1"))
         && d.ExecuteSql(QStringLiteral("INSERT INTO ") + d.BracketName(QStringLiteral("FilesSearchKeywordTags")) + QStringLiteral(" (") + id
                         + QStringLiteral(", ") + d.BracketName(QStringLiteral("Tags")) + QStringLiteral(") VALUES (1, 'one'), (2, 'tw''o')"));
    if (!built)
        m_error = QStringLiteral("the values could not be set: ") + d.lastError();
}

std::optional<qint64> SavedFilterHarness::count(const QString& predicate, const QVariantList& values) const
{
    const QString sql = QStringLiteral("SELECT COUNT(*) AS n FROM ") + m_db->BracketName(QStringLiteral("Files")) + QStringLiteral(" LEFT JOIN ")
                        + m_filter->SQLSearchTable() + QStringLiteral(" ON ") + m_filter->SQLSearchJoinOn() + QStringLiteral(" WHERE ")
                        + predicate;
    const auto rs = values.isEmpty() ? m_db->OpenSqlRecordset(sql) : m_db->OpenSqlRecordset(sql, values);
    if (!rs || rs->EndOfFile())
        return std::nullopt;
    return rs->field(QStringLiteral("n")).toDouble().valueOr(-1);
}

QString SavedFilterHarness::run(const QByteArray& profile)
{
    if (!ok())
        return m_error;
    QFile file(m_profileFile);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(profile) != profile.size())
        return QStringLiteral("the profile could not be written");
    file.close();

    IniProfile reader(m_profileFile);
    const auto terms = CSearchFilter::GetFilter(m_filter->FilterColumns(), &reader, QStringLiteral("1"), fltrDBMode_Normal);
    if (!terms)
        return QStringLiteral("the reader gave no filter");
    m_lastTerms = terms->Count();
    if (!terms->HasTerms())
        return {};
    const QString sql = terms->SQLString();
    const ParameterizedSql bound = terms->SQLStringWithParameters();
    // Terms that name nothing the table has give no SQL; the two forms must agree on that.
    if (sql.isEmpty() != bound.sql.isEmpty())
        return QStringLiteral("SQL in one form only: \"%1\", \"%2\"").arg(sql, bound.sql);
    if (sql.isEmpty())
        return {};
    const std::optional<qint64> asText = count(sql, {});
    if (!asText)
        return QStringLiteral("the database refused the filter: ") + m_db->lastError() + QStringLiteral("\n  ") + sql;
    const std::optional<qint64> withValues = count(bound.sql, bound.values);
    if (!withValues)
        return QStringLiteral("the database refused the filter with bound values: ") + m_db->lastError() + QStringLiteral("\n  ") + bound.sql;
    if (*asText != *withValues)
        return QStringLiteral("the filter selects %1 records as text and %2 with bound values: %3").arg(*asText).arg(*withValues).arg(sql);
    if (m_db->transactionLevel() != 0)
        return QStringLiteral("a transaction was left open");
    return {};
}

} // namespace searchdata::fuzz
