// Importing data blocks: 10,000 blocks of 10 fields (text, numbers, a date, a boolean, three
// keywords, a two-line note) into 10,000 records of a SQLite database. Reports blocks per second for
// reading the blocks into the columns alone, for the whole import (load the record, read the block,
// write it), and for a baseline that writes the same values with prepared statements, one
// transaction per record. Usage: bench_import [blocks]

#include "data/DataBlock_p.h"
#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLocale>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <cstdio>

using namespace searchdata;

namespace {

class Table : public ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Files"); }
};

void check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::exit(1);
    }
}

/// The values of record `i`, as a block gives them and as the baseline binds them.
struct Record {
    QString customer, part;
    qint16 qty;
    qint32 count;
    float ratio;
    double price;
    QDateTime due;
    bool done;
    QStringList tags;
    QString remarks;

    explicit Record(int i)
        : customer(QStringLiteral("Customer %1").arg(i % 97)), part(QStringLiteral("P-%1").arg(i)), qty(qint16(i % 1000)),
          count(i * 3), ratio(float(i % 100) + 0.5f), price(i + 0.25), due(QDateTime(QDate(2003, 7, 1 + i % 28), QTime(13, 5, 9))),
          done(i % 2 == 0), tags({QStringLiteral("red%1").arg(i % 7), QStringLiteral("green"), QStringLiteral("blue%1").arg(i % 5)}),
          remarks(QStringLiteral("first %1\r\nsecond").arg(i))
    {
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
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    const int blocks = argc > 1 ? std::atoi(argv[1]) : 10000;
    QTemporaryDir dir;
    auto db = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite"))).value();
    check(db->ExecuteSql(QStringLiteral("PRAGMA synchronous = OFF")), "pragma");
    check(db->ExecuteSql(QStringLiteral("CREATE TABLE Files (FileId INTEGER PRIMARY KEY, Name VARCHAR(255))")), "base table");
    {
        TableTransaction tx(*db);
        for (int i = 1; i <= blocks; ++i)
            db->ExecuteSql(QStringLiteral("INSERT INTO Files VALUES (?, ?)"), QVariantList{i, QStringLiteral("file %1").arg(i)});
        check(tx.commit(), "base rows");
    }
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    (void)structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false);
    (void)structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto open = [&] { return CCommon().CreateSearchFilterObject(db, std::make_shared<Table>(), catalog, nullptr, 0, structure); };
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

    QList<QByteArray> data;
    for (int i = 1; i <= blocks; ++i)
        data << Record(i).block();

    // Reading alone: the blocks into the columns, no database.
    QElapsedTimer timer;
    timer.start();
    int named = 0;
    for (const QByteArray& block : data)
        named += int(detail::ReadDataBlock(columns, block, nullptr).named.size());
    const double parseSeconds = double(timer.nsecsElapsed()) / 1e9;
    check(named == 10 * blocks, "every field read");

    // The whole import of each block into its record.
    const QString source = dir.filePath(QStringLiteral("program.nc"));
    const QDateTime stamp = QDateTime::currentDateTime();
    timer.restart();
    for (int i = 1; i <= blocks; ++i) {
        const CMergeBaseEntry entry(i);
        const DataBlockImport r = filter->AnalyzeDataBlock(stamp, source, &entry, data[i - 1], dir.path());
        check(r.written && r.errors == 0, "import");
    }
    const double importSeconds = double(timer.nsecsElapsed()) / 1e9;
    {
        const Record expected(blocks / 2 + 1);
        const CMergeBaseEntry entry(blocks / 2 + 1);
        columns.GetData(&entry);
        check(columns.Item(QStringLiteral("Part"))->SavedValue() == Value(expected.part)
                  && columns.Item(QStringLiteral("Tags"))->SavedKeys() == expected.tags
                  && columns.Item(QStringLiteral("Remarks"))->SavedValue() == Value(expected.remarks),
              "imported values");
    }

    // The same values, prepared once and bound per record.
    QSqlDatabase sql = db->database();
    QSqlQuery update(sql), deleteKeys(sql), insertKey(sql), begin(sql), commit(sql);
    check(update.prepare(QStringLiteral("UPDATE FilesSearchData SET Customer = ?, Part = ?, Qty = ?, Count = ?, Ratio = ?, Price = ?, "
                                        "Due = ?, Done = ?, Remarks = ? WHERE FileId = ?")),
          "prepare update");
    check(deleteKeys.prepare(QStringLiteral("DELETE FROM FilesSearchKeywordTags WHERE FileId = ?")), "prepare delete");
    check(insertKey.prepare(QStringLiteral("INSERT INTO FilesSearchKeywordTags (FileId, Tags) VALUES (?, ?)")), "prepare insert");
    QList<Record> records;
    for (int i = 1; i <= blocks; ++i)
        records << Record(i);
    timer.restart();
    for (int i = 1; i <= blocks; ++i) {
        const Record& r = records[i - 1];
        begin.exec(QStringLiteral("BEGIN"));
        const QVariantList values{r.customer, r.part, int(r.qty), r.count, double(r.ratio), r.price, r.due, r.done, r.remarks, i};
        for (int v = 0; v < values.size(); ++v)
            update.bindValue(v, values[v]);
        check(update.exec(), "baseline update");
        deleteKeys.bindValue(0, i);
        deleteKeys.exec();
        for (const QString& tag : r.tags) {
            insertKey.bindValue(0, i);
            insertKey.bindValue(1, tag);
            check(insertKey.exec(), "baseline keyword");
        }
        commit.exec(QStringLiteral("COMMIT"));
    }
    const double baselineSeconds = double(timer.nsecsElapsed()) / 1e9;

    std::printf("blocks: %d of 10 fields (3 keywords, a two-line note), SQLite, synchronous off\n", blocks);
    std::printf("reading the blocks alone:        %10.0f blocks/s\n", blocks / parseSeconds);
    std::printf("import (load, read, write):      %10.0f blocks/s\n", blocks / importSeconds);
    std::printf("prepared statements (write only):%10.0f blocks/s\n", blocks / baselineSeconds);
    std::printf("import time / baseline time:     %10.2f\n", importSeconds / baselineSeconds);
    return 0;
}
