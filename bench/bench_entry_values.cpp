// Loading and saving one record's search data through the library, beside the same statements
// issued directly through prepared QSqlQuery objects. SQLite, 20 columns of which 5 are keyword
// columns with 3 keywords each. Usage: bench_entry_values [records]

#include "searchdata/CCommon.h"
#include "searchdata/Catalog.h"
#include "searchdata/ControlInterfaces.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <cstdio>

using namespace searchdata;

namespace {

class Table : public ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Files"); }
};

struct Entry : ISearchBaseEntry {
    qint32 id = 0;
    qint32 Id() const override { return id; }
};

class Box : public ITextBoxControl {
public:
    QString Text() const override { return text; }
    void SetText(const QString& t) override { text = t; }
    int MaxLength() const override { return 0; }
    void SetMaxLength(int) override {}
    QString text;
};

class Combo : public IComboBoxControl {
public:
    QString Text() const override { return {}; }
    void SetText(const QString&) override {}
    QString List(int i) const override { return items.value(i); }
    int ListCount() const override { return int(items.size()); }
    int ListIndex() const override { return -1; }
    void SetListIndex(int) override {}
    int NewIndex() const override { return int(items.size()) - 1; }
    void Clear() override { items.clear(); }
    void AddItem(const QString& t) override { items.append(t); }
    void RemoveItem(int i) override { items.removeAt(i); }
    void SetFocus() override {}
    QStringList items;
};

constexpr int kStandard = 15;
constexpr int kKeyword = 5;

void check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::exit(1);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const int records = argc > 1 ? std::atoi(argv[1]) : 10000;
    QTemporaryDir dir;
    auto db = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite"))).value();
    check(db->ExecuteSql(QStringLiteral("PRAGMA synchronous = OFF")), "pragma");
    check(db->ExecuteSql(QStringLiteral("CREATE TABLE Files (FileId INTEGER PRIMARY KEY, Name VARCHAR(255))")), "base table");
    {
        TableTransaction tx(*db);
        for (int i = 1; i <= records; ++i)
            db->ExecuteSql(QStringLiteral("INSERT INTO Files VALUES (?, ?)"), QVariantList{i, QStringLiteral("file %1").arg(i)});
        check(tx.commit(), "base rows");
    }
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    (void)structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false);
    (void)structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto columns = CCommon().CreateSearchFilterObject(db, std::make_shared<Table>(), catalog, nullptr, 0, structure)->FilterColumns();
    check(columns != nullptr, "open");
    for (int i = 0; i < kStandard; ++i)
        columns->Add(QStringLiteral("S%1").arg(i), {}, {}, i % 3 == 0 ? fcInteger32 : fcText, 40, false, false);
    for (int i = 0; i < kKeyword; ++i)
        columns->Add(QStringLiteral("K%1").arg(i), {}, {}, fcKeyword, 40, false, false);
    check(columns->ColumnsSave(nullptr), "save definitions");
    columns->ColumnsFetch();

    std::vector<std::unique_ptr<Box>> boxes;
    std::vector<std::unique_ptr<Combo>> combos;
    for (const auto& c : *columns) {
        c->setIsValid(true);
        if (c->ColumnType() == fcKeyword) {
            combos.push_back(std::make_unique<Combo>());
            c->setMyControl(combos.back().get());
        } else {
            boxes.push_back(std::make_unique<Box>());
            c->setMyControl(boxes.back().get());
        }
    }
    auto fill = [&](int i) {
        for (size_t b = 0; b < boxes.size(); ++b)
            boxes[b]->text = b % 3 == 0 ? QString::number(i + int(b)) : QStringLiteral("value %1 %2").arg(i).arg(b);
        for (auto& c : combos)
            c->items = {QStringLiteral("red%1").arg(i % 7), QStringLiteral("green"), QStringLiteral("blue%1").arg(i % 5)};
    };

    QElapsedTimer timer;
    timer.start();
    Entry entry;
    for (int i = 1; i <= records; ++i) {
        entry.id = i;
        columns->GetData(&entry);
        fill(i);
        check(columns->SaveDataFromEditControl(&entry), "library save");
    }
    const double library = double(timer.nsecsElapsed()) / records / 1000.0;

    // The same statements, prepared once, bound per record.
    QSqlDatabase sql = db->database();
    QSqlQuery readRow(sql), exists(sql), update(sql), begin(sql), commit(sql);
    readRow.prepare(QStringLiteral("SELECT * FROM FilesSearchData WHERE FileId = ?"));
    exists.prepare(QStringLiteral("SELECT 1 FROM FilesSearchData WHERE FileId = ?"));
    QStringList sets;
    for (int i = 0; i < kStandard; ++i)
        sets << QStringLiteral("S%1 = ?").arg(i);
    update.prepare(QStringLiteral("UPDATE FilesSearchData SET %1 WHERE FileId = ?").arg(sets.join(QStringLiteral(", "))));
    std::vector<std::unique_ptr<QSqlQuery>> readKeys, deleteKeys, insertKeys;
    for (int k = 0; k < kKeyword; ++k) {
        readKeys.push_back(std::make_unique<QSqlQuery>(sql));
        readKeys.back()->prepare(QStringLiteral("SELECT K%1 FROM FilesSearchKeywordK%1 WHERE FileId = ? ORDER BY rowid").arg(k));
        deleteKeys.push_back(std::make_unique<QSqlQuery>(sql));
        deleteKeys.back()->prepare(QStringLiteral("DELETE FROM FilesSearchKeywordK%1 WHERE FileId = ?").arg(k));
        insertKeys.push_back(std::make_unique<QSqlQuery>(sql));
        insertKeys.back()->prepare(QStringLiteral("INSERT INTO FilesSearchKeywordK%1 (FileId, K%1) VALUES (?, ?)").arg(k));
    }
    timer.restart();
    for (int i = 1; i <= records; ++i) {
        readRow.bindValue(0, i);
        readRow.exec();
        const int fieldCount = readRow.record().count();
        while (readRow.next())
            for (int f = 0; f < fieldCount; ++f)
                (void)readRow.value(f);
        for (auto& q : readKeys) {
            q->bindValue(0, i);
            q->exec();
            while (q->next())
                (void)q->value(0);
        }
        fill(i);
        begin.exec(QStringLiteral("BEGIN IMMEDIATE"));
        exists.bindValue(0, i);
        exists.exec();
        exists.next();
        for (int b = 0; b < kStandard; ++b)
            update.bindValue(b, b % 3 == 0 ? QVariant(boxes[b]->text.toInt()) : QVariant(boxes[b]->text));
        update.bindValue(kStandard, i);
        update.exec();
        for (int k = 0; k < kKeyword; ++k) {
            deleteKeys[k]->bindValue(0, i);
            deleteKeys[k]->exec();
            for (const QString& item : combos[k]->items) {
                insertKeys[k]->bindValue(0, i);
                insertKeys[k]->bindValue(1, item);
                insertKeys[k]->exec();
            }
        }
        commit.exec(QStringLiteral("COMMIT"));
    }
    const double baseline = double(timer.nsecsElapsed()) / records / 1000.0;

    std::printf("records: %d, 20 columns (5 keyword columns with 3 keywords), SQLite, synchronous off\n", records);
    std::printf("library load+save:  %8.1f us per record\n", library);
    std::printf("prepared baseline:  %8.1f us per record\n", baseline);
    std::printf("ratio:              %8.2f\n", library / baseline);
    return 0;
}
