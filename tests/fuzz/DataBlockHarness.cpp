#include "fuzz/DataBlockHarness.h"

#include "fuzz/FuzzColumns.h"
#include "fuzz/Mutator.h"

#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/TableStructure.h"

#include <QDir>
#include <QDirIterator>
#include <QSet>
#include <QSqlQuery>
#include <QSqlRecord>

namespace searchdata::fuzz {

namespace {

const QDateTime kStamp(QDate(2021, 6, 1), QTime(12, 0, 0));
constexpr qint32 kTarget = 2;

QString cell(const QVariant& v)
{
    return v.isNull() ? QStringLiteral("<null>") : QString::fromLatin1(v.typeName()) + u':' + v.toString();
}

} // namespace

QList<QByteArray> DataBlockHarness::seedCorpus()
{
    return readCorpus(QStringLiteral(SEARCHDATA_SOURCE_DIR "/tests/fuzz/corpus"), QStringLiteral(".txt"));
}

QList<QByteArray> DataBlockHarness::tokens()
{
    return {
        "Begin Search Data", "(Begin Search Data)\r\n", "End Search Data", "(End Search Data)\r\n", "(Start Note)\r\n", "(End Note)\r\n",
        "(Line: ", "Line:", "\r\n", "\n\r\r", ":", "((", "))", ",,", ", ", "Customer", "client", "Qty", "Count", "Ratio", "Price", "Due",
        "Done", "Tags", "Codes", "Remarks", "Colour", "yes", "NO", "maybe", "1e400", "-32769", "2147483648", "3.4e39", "nan",
        "2003-07-04 13:05", "9999-12-31", "'", "\"", "%", "_", "\\", "\xef\xbb\xbf", "\xc3\xa9", "\xff\xfe", "\xe6\x9d\xb1",
    };
}

DataBlockHarness::DataBlockHarness()
{
    if (!m_root.isValid()) {
        m_error = QStringLiteral("no temporary folder");
        return;
    }
    QDir root(m_root.path());
    root.mkpath(QStringLiteral("source"));
    root.mkpath(QStringLiteral("logs"));
    m_sourceFile = root.filePath(QStringLiteral("source/block.nc"));
    m_logFolder = root.filePath(QStringLiteral("logs"));

    auto opened = DatabaseHandler::open(root.filePath(QStringLiteral("fuzz.sqlite")));
    if (!opened) {
        m_error = opened.error();
        return;
    }
    m_db = opened.value();
    DatabaseHandler& db = *m_db;
    // Durability is no concern here, and waiting for the disk would make most of the run.
    bool built = db.ExecuteSql(QStringLiteral("PRAGMA synchronous = OFF"))
              && db.ExecuteSql(QStringLiteral("CREATE TABLE Files (FileId INTEGER PRIMARY KEY, Name VARCHAR(255))"));
    for (int i = 1; i <= 3; ++i)
        built = built && db.ExecuteSql(QStringLiteral("INSERT INTO Files VALUES (%1, 'file')").arg(i));
    m_catalog = std::make_shared<Catalog>(m_db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    built = built && structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false)
         && structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto open = [&] {
        m_catalog->Refresh();
        return CCommon().CreateSearchFilterObject(m_db, std::make_shared<NamedBaseTable>(QStringLiteral("Files")), m_catalog, nullptr, 0, structure);
    };
    m_filter = open();
    auto cols = built ? m_filter->FilterColumns() : nullptr;
    if (!cols) {
        m_error = QStringLiteral("the search could not be opened: ") + db.lastError();
        return;
    }
    addEveryColumnType(*cols);
    if (!cols->ColumnsSave(nullptr)) {
        m_error = QStringLiteral("the columns could not be saved: ") + db.lastError();
        return;
    }
    m_filter = open();
    // The neighbours of the target hold values and keywords that no import may touch.
    built = db.ExecuteSql(QStringLiteral("UPDATE FilesSearchData SET Customer = 'neighbour', Qty = 7, Remarks = 'n' WHERE FileId <> 2"))
         && db.ExecuteSql(QStringLiteral("INSERT INTO FilesSearchKeywordTags VALUES (1, 'one'), (3, 'three'), (2, 'mine')"))
         && db.ExecuteSql(QStringLiteral("INSERT INTO PicklistFilesCodes (Codes, HideEntry) VALUES ('A1', 0)"))
         && db.ExecuteSql(QStringLiteral("INSERT INTO FilesSearchKeywordCodes VALUES (1, 'A1'), (3, 'A1')"));
    if (!built) {
        m_error = QStringLiteral("the neighbours could not be filled: ") + db.lastError();
        return;
    }
    m_others = snapshot();
}

DataBlockHarness::~DataBlockHarness() = default;

QString DataBlockHarness::snapshot() const
{
    QSqlQuery q(m_db->database());
    QStringList lines;
    QStringList tables;
    q.exec(QStringLiteral("SELECT type, name, sql FROM sqlite_master ORDER BY name"));
    while (q.next()) {
        lines << q.value(0).toString() + u' ' + q.value(1).toString() + u' ' + q.value(2).toString();
        if (q.value(0).toString() == QStringLiteral("table"))
            tables << q.value(1).toString();
    }
    for (const QString& table : tables) {
        if (table.startsWith(QStringLiteral("Picklist")))
            continue; // may grow: checked on its own
        const QString where = table.startsWith(QStringLiteral("FilesSearch")) ? QStringLiteral(" WHERE FileId <> 2") : QString();
        QStringList rows;
        q.exec(QStringLiteral("SELECT * FROM %1%2").arg(m_db->BracketName(table), where));
        while (q.next()) {
            QStringList cells;
            for (int i = 0; i < q.record().count(); ++i)
                cells << cell(q.value(i));
            rows << cells.join(u'|');
        }
        rows.sort();
        lines << table + QStringLiteral(": ") + rows.join(QStringLiteral(" / "));
    }
    return lines.join(u'\n');
}

QStringList DataBlockHarness::picklistEntries() const
{
    QSqlQuery q(m_db->database());
    QStringList entries;
    for (const char* table : {"PicklistFilesColour", "PicklistFilesCodes"}) {
        q.exec(QStringLiteral("SELECT * FROM %1").arg(QLatin1String(table)));
        while (q.next())
            entries << QLatin1String(table) + u':' + cell(q.value(0)) + u'|' + cell(q.value(1));
    }
    return entries;
}

QStringList DataBlockHarness::filesUnder(const QString& folder) const
{
    QStringList files;
    const QDir base(folder);
    for (QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories); it.hasNext();)
        files << base.relativeFilePath(it.next());
    files.sort();
    return files;
}

QString DataBlockHarness::run(const QByteArray& block)
{
    if (!ok())
        return m_error;
    QDir(m_logFolder).removeRecursively();
    QDir().mkpath(m_logFolder);
    QFile source(m_sourceFile);
    if (!source.open(QIODevice::WriteOnly | QIODevice::Truncate) || source.write(block) != block.size())
        return QStringLiteral("the source file could not be written");
    source.close();
    const QStringList listBefore = picklistEntries();

    const CMergeBaseEntry target(kTarget);
    m_last = m_filter->AnalyzeDataBlock(kStamp, m_sourceFile, &target, block, m_logFolder);
    const DataBlockImport& r = m_last;

    if (r.written && !r.imported)
        return QStringLiteral("written without anything imported");
    const QString after = snapshot();
    if (after != m_others)
        return QStringLiteral("rows outside the target record changed:\n") + after + QStringLiteral("\n--- was ---\n") + m_others;
    const QStringList entriesAfter = picklistEntries();
    const QSet<QString> listAfter(entriesAfter.cbegin(), entriesAfter.cend());
    for (const QString& entry : listBefore)
        if (!listAfter.contains(entry))
            return QStringLiteral("a picklist entry changed or went: ") + entry;
    QSqlQuery q(m_db->database());
    if (!q.exec(QStringLiteral("PRAGMA foreign_key_check")) || q.next())
        return QStringLiteral("a foreign key no longer holds");
    if (m_db->transactionLevel() != 0)
        return QStringLiteral("a transaction was left open");

    QStringList expected{QStringLiteral("fuzz.sqlite"), QStringLiteral("source/block.nc")};
    const QString folder = QStringLiteral("logs/ImportSearchDataErrors/") + kStamp.toString(QStringLiteral("yyyyMMdd_hhmmss"));
    if (r.errors > 0) {
        expected << folder + QStringLiteral("/block.nc") << folder + QStringLiteral("/block.nc.ImportErrors.log");
        QFile log(r.logFile);
        if (r.logFile.isEmpty() || !log.open(QIODevice::ReadOnly))
            return QStringLiteral("%1 errors but no log").arg(r.errors);
        const QByteArray text = log.readAll();
        if (!text.startsWith("----------\r\nError processing line: ") || text.count("----------\r\n") < r.errors)
            return QStringLiteral("the log does not hold its %1 entries").arg(r.errors);
    } else if (!r.logFile.isEmpty()) {
        return QStringLiteral("a log without errors");
    }
    expected.sort();
    const QStringList files = filesUnder(m_root.path());
    if (files != expected)
        return QStringLiteral("files: ") + files.join(u',') + QStringLiteral("; expected: ") + expected.join(u',');
    return {};
}

} // namespace searchdata::fuzz
