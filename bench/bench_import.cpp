// Importing data blocks: 10,000 blocks of 10 fields (text, numbers, a date, a boolean, three
// keywords, a two-line note) into 10,000 records. Reports blocks per second for reading the blocks
// into the columns alone (aim: at least 20,000 a second), and for the whole import (load the record,
// read the block, write it) beside the baseline, what a careful developer writes by hand with
// prepared statements in one transaction per block: read the record's search row and keywords,
// parse the block with a parser made for exactly these fields, update the row with its values, and
// delete and insert the keywords that differ. Each round imports blocks with new values; prints the
// best time of each.
//
//   bench_import [blocks=10000] [rounds=3] [database] (see BenchRun.h)

#include "BenchRun.h"
#include "data/DataBlock_p.h"
#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringTokenizer>
#include <QTemporaryDir>
#include <cstdio>
#include <functional>
#include <limits>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

void check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::exit(1);
    }
}

/// The values of record `i` in pass `pass`, as a block gives them and as the baseline binds them;
/// every field differs from one pass to the next.
struct Record {
    QString customer, part;
    qint16 qty = 0;
    qint32 count = 0;
    float ratio = 0;
    double price = 0;
    QDateTime due;
    bool done = false;
    QStringList tags;
    QString remarks;

    Record() = default;
    Record(int i, int pass)
    {
        const int seed = i + 3 * pass;
        customer = QStringLiteral("Customer %1").arg(seed % 97);
        part = QStringLiteral("P-%1-%2").arg(i).arg(pass);
        qty = qint16(seed % 1000);
        count = seed * 3;
        ratio = float(seed % 100) + 0.5f;
        price = seed + 0.25;
        due = QDateTime(QDate(2003, 7, 1 + seed % 28), QTime(13, 5, 9));
        done = seed % 2 == 0;
        tags = {QStringLiteral("red%1").arg(seed % 7), QStringLiteral("green"), QStringLiteral("blue%1").arg(seed % 5)};
        remarks = QStringLiteral("first %1\r\nsecond").arg(seed);
    }

    QByteArray block() const
    {
        QString b = QStringLiteral("(Begin Search Data)\r\n");
        b += QStringLiteral("(Customer: %1)\r\n(Part: %2)\r\n").arg(customer, part);
        b += QStringLiteral("(Qty: %1)\r\n(Count: %2)\r\n").arg(qty).arg(count);
        b += QStringLiteral("(Ratio: %1)\r\n(Price: %2)\r\n").arg(double(ratio)).arg(price, 0, 'f', 2);
        b += QStringLiteral("(Due: %1)\r\n").arg(due.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
        b += QStringLiteral("(Done: %1)\r\n").arg(done ? QStringLiteral("Yes") : QStringLiteral("No"));
        b += QStringLiteral("(Tags: %1)\r\n").arg(tags.join(u','));
        b += QStringLiteral("(Remarks:)\r\n(Start Note)\r\n");
        for (const QString& line : remarks.split(QStringLiteral("\r\n")))
            b += QStringLiteral("(Line: %1)\r\n").arg(line);
        b += QStringLiteral("(End Note)\r\n(End Search Data)\r\n");
        return b.toUtf8();
    }

    /// The block read back by a parser that knows its fields and trusts its input.
    static Record parse(const QByteArray& block)
    {
        Record r;
        QStringList note;
        bool inNote = false;
        for (QStringView line : QStringTokenizer(QString::fromUtf8(block), u"\r\n", Qt::SkipEmptyParts)) {
            if (!line.startsWith(u'(') || !line.endsWith(u')'))
                continue;
            line = line.mid(1, line.size() - 2);
            const qsizetype colon = line.indexOf(u':');
            const QStringView name = colon < 0 ? line : line.left(colon);
            const QString value = colon < 0 ? QString() : line.mid(colon + 1).trimmed().toString();
            if (inNote) {
                if (name == u"Line")
                    note << value;
                else if (name == u"End Note")
                    inNote = false;
            } else if (name == u"Start Note") {
                inNote = true;
            } else if (name == u"Customer") {
                r.customer = value;
            } else if (name == u"Part") {
                r.part = value;
            } else if (name == u"Qty") {
                r.qty = value.toShort();
            } else if (name == u"Count") {
                r.count = value.toInt();
            } else if (name == u"Ratio") {
                r.ratio = value.toFloat();
            } else if (name == u"Price") {
                r.price = value.toDouble();
            } else if (name == u"Due") {
                r.due = QDateTime::fromString(value, QStringLiteral("yyyy-MM-dd hh:mm:ss"));
            } else if (name == u"Done") {
                r.done = value == u"Yes";
            } else if (name == u"Tags") {
                r.tags = value.split(u',');
            }
        }
        r.remarks = note.join(QStringLiteral("\r\n"));
        return r;
    }
};

/// The baseline's statements, prepared once.
class ByHand {
public:
    explicit ByHand(DatabaseHandler& db)
        : m_sql(db.database()), m_readRow(m_sql), m_readKeys(m_sql), m_update(m_sql), m_deleteKey(m_sql), m_insertKey(m_sql)
    {
        const auto n = [&](const char* name) { return db.BracketName(QString::fromLatin1(name)); };
        QString fields, sets;
        for (const char* field : {"Customer", "Part", "Qty", "Count", "Ratio", "Price", "Due", "Done", "Remarks"}) {
            fields += (fields.isEmpty() ? QString() : QStringLiteral(", ")) + n(field);
            sets += (sets.isEmpty() ? QString() : QStringLiteral(", ")) + n(field) + QStringLiteral(" = ?");
        }
        const QString byKey = QStringLiteral(" WHERE ") + n("FileId") + QStringLiteral(" = ?");
        const QString keywords = n("FilesSearchKeywordTags");
        const QString order = db.dialect().storageOrderLasts() ? db.dialect().storageOrder() : n("KeywordOrder");
        check(m_readRow.prepare(QStringLiteral("SELECT ") + fields + QStringLiteral(" FROM ") + n("FilesSearchData") + byKey)
                  && m_readKeys.prepare(QStringLiteral("SELECT ") + n("Tags") + QStringLiteral(" FROM ") + keywords + byKey
                                        + QStringLiteral(" ORDER BY ") + order)
                  && m_update.prepare(QStringLiteral("UPDATE ") + n("FilesSearchData") + QStringLiteral(" SET ") + sets + byKey)
                  && m_deleteKey.prepare(QStringLiteral("DELETE FROM ") + keywords + byKey + QStringLiteral(" AND ") + n("Tags") + QStringLiteral(" = ?"))
                  && m_insertKey.prepare(QStringLiteral("INSERT INTO ") + keywords + QStringLiteral(" (") + n("FileId") + QStringLiteral(", ")
                                         + n("Tags") + QStringLiteral(") VALUES (?, ?)")),
              "prepare the baseline");
    }

    void import(int id, const QByteArray& block)
    {
        check(m_sql.transaction(), "begin");
        m_readRow.bindValue(0, id);
        check(m_readRow.exec() && m_readRow.next(), "read the row");
        const QSqlRecord row = m_readRow.record();
        m_readRow.finish();
        m_readKeys.bindValue(0, id);
        check(m_readKeys.exec(), "read the keywords");
        QStringList keys;
        while (m_readKeys.next())
            keys << m_readKeys.value(0).toString();

        const Record r = Record::parse(block);
        const QVariantList values{r.customer, r.part, int(r.qty), r.count, double(r.ratio), r.price, r.due, r.done, r.remarks, id};
        for (int v = 0; v < values.size(); ++v)
            m_update.bindValue(v, values[v]);
        check(row.count() == values.size() - 1 && m_update.exec(), "update the row");
        for (const QString& gone : keys)
            if (!r.tags.contains(gone))
                bind(m_deleteKey, id, gone);
        for (const QString& added : r.tags)
            if (!keys.contains(added))
                bind(m_insertKey, id, added);
        check(m_sql.commit(), "commit");
    }

private:
    static void bind(QSqlQuery& q, int id, const QString& key)
    {
        q.bindValue(0, id);
        q.bindValue(1, key);
        check(q.exec(), "write a keyword");
    }

    QSqlDatabase m_sql;
    QSqlQuery m_readRow, m_readKeys, m_update, m_deleteKey, m_insertKey;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const BenchOptions options = ParseBenchOptions(app.arguments(), 10000, 3);
    const int blocks = int(options.size);
    QTemporaryDir dir;
    const auto db = OpenBenchDatabase(options, dir);
    if (!db)
        return 1;
    check(CreateBaseTable(*db, QStringLiteral("Files"), QStringLiteral("FileId"), blocks), "base table");
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    (void)structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false);
    (void)structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto open = [&] { return CCommon().CreateSearchFilterObject(db, std::make_shared<NamedBaseTable>(QStringLiteral("Files")), catalog, nullptr, 0, structure); };
    {
        auto columns = open()->FilterColumns();
        check(columns != nullptr, "open");
        columns->Add(QStringLiteral("Customer"), {}, {}, fcText, 40, false, false);
        columns->Add(QStringLiteral("Part"), {}, {}, fcText, 20, false, false);
        columns->Add(QStringLiteral("Qty"), {}, {}, fcInteger16, 0, false, false);
        columns->Add(QStringLiteral("Count"), {}, {}, fcInteger32, 0, false, false);
        columns->Add(QStringLiteral("Ratio"), {}, {}, fcSingle, 0, false, false);
        columns->Add(QStringLiteral("Price"), {}, {}, fcDouble, 0, false, false);
        columns->Add(QStringLiteral("Due"), {}, {}, fcDateTime, 0, false, false);
        columns->Add(QStringLiteral("Done"), {}, {}, fcBoolean, 0, false, false);
        columns->Add(QStringLiteral("Tags"), {}, {}, fcKeyword, 30, false, false);
        columns->Add(QStringLiteral("Remarks"), {}, {}, fcNote, 255, false, false);
        check(columns->ColumnsSave(nullptr), "save definitions");
    }
    catalog->Refresh();
    auto filter = open();
    CFilterColumns& columns = *filter->FilterColumns();

    // Reading alone: the blocks into the columns, no database; the best of the rounds.
    QList<QByteArray> data;
    for (int i = 1; i <= blocks; ++i)
        data << Record(i, 0).block();
    double readingMs = std::numeric_limits<double>::max();
    for (int round = 0; round < options.rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        int named = 0;
        for (const QByteArray& block : data)
            named += int(detail::ReadDataBlock(columns, block, nullptr).named.size());
        readingMs = std::min(readingMs, double(timer.nsecsElapsed()) / 1e6);
        check(named == 10 * blocks, "every field read");
    }

    const QString source = dir.filePath(QStringLiteral("program.nc"));
    const QDateTime stamp = QDateTime::currentDateTime();
    const std::function<void(int, const QByteArray&)> library = [&](int i, const QByteArray& block) {
        const CMergeBaseEntry entry(i);
        const DataBlockImport r = filter->AnalyzeDataBlock(stamp, source, &entry, block, dir.path());
        check(r.written && r.errors == 0, "import");
    };
    ByHand byHand(*db);
    const std::function<void(int, const QByteArray&)> hand = [&](int i, const QByteArray& block) { byHand.import(i, block); };
    int pass = 0;
    const auto timed = [&](const std::function<void(int, const QByteArray&)>& import) {
        ++pass;
        for (int i = 1; i <= blocks; ++i)
            data[i - 1] = Record(i, pass).block();
        QElapsedTimer t;
        t.start();
        for (int i = 1; i <= blocks; ++i)
            import(i, data[i - 1]);
        return double(t.nsecsElapsed()) / 1e6;
    };
    // What the library wrote for a record is what its block held; a keyword that the record kept
    // keeps its place among the others.
    const auto sorted = [](QStringList keys) {
        keys.sort();
        return keys;
    };
    const auto imported = [&] {
        const int i = blocks / 2 + 1;
        const Record expected(i, pass);
        const CMergeBaseEntry entry(i);
        columns.GetData(&entry);
        check(columns.Item(QStringLiteral("Part"))->SavedValue() == Value(expected.part)
                  && sorted(columns.Item(QStringLiteral("Tags"))->SavedKeys()) == sorted(expected.tags)
                  && columns.Item(QStringLiteral("Remarks"))->SavedValue() == Value(expected.remarks),
              "imported values");
    };

    const auto best = TakeTurns(
        options.rounds,
        [&] {
            const double ms = timed(library);
            imported();
            return ms;
        },
        [&] { return timed(hand); });
    check(best.has_value(), "a round");
    const double bestLibrary = best->library, bestHand = best->baseline;

    std::printf("%s, %d blocks of 10 fields (3 keywords, a two-line note), best of %d\n", qPrintable(DatabaseName(*db)), blocks, options.rounds);
    std::printf("reading the blocks alone:        %10.0f blocks/s\n", blocks * 1000 / readingMs);
    std::printf("import (load, read, write):      %10.0f blocks/s\n", blocks * 1000 / bestLibrary);
    std::printf("by hand (load, parse, write):    %10.0f blocks/s\n", blocks * 1000 / bestHand);
    std::printf("import time / baseline time:     %10.2f\n", bestLibrary / bestHand);
    PrintBenchResult(QStringLiteral("import"), DatabaseName(*db), blocks, bestLibrary, bestHand);
    // Reading alone has no baseline but its aim: the time that 20,000 blocks a second allows.
    PrintBenchResult(QStringLiteral("import-reading"), DatabaseName(*db), blocks, readingMs, blocks / 20.0);
    return 0;
}
