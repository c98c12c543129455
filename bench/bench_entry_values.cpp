// Loading and saving one record's search data, 20 columns of which 5 are keyword columns with three
// keywords each: each edit changes three of the fifteen other columns and swaps one keyword of one
// keyword column, as a user's edit of a record does.
//
//   bench_entry_values [records=2000] [rounds=3] [database] (see BenchRun.h)
//
// The library loads the record (GetData) into the controls (ResetData), as the entry control does,
// the edit goes into the controls, and SaveDataFromEditControl writes it. The baseline is what a careful developer writes by hand with
// prepared statements, in one transaction per record: read the search row and the keywords, work out
// what changed, update only the changed fields, delete the removed keyword and insert the added one.
// Prints the best time of each over the rounds.

#include "BenchRun.h"
#include "searchdata/CCommon.h"
#include "searchdata/Catalog.h"
#include "searchdata/ControlInterfaces.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <cstdio>
#include <functional>
#include <map>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

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

QString standardName(int b) { return QStringLiteral("S") + QString::number(b); }
QString keywordName(int k) { return QStringLiteral("K") + QString::number(k); }
bool isNumber(int b) { return b % 3 == 0; }

/// The edit of record `i` in pass `pass`: three standard fields get new texts, and one keyword column
/// trades "green" for "yellow" or back, so that every pass changes what the one before wrote.
struct Edit {
    int record, pass;
    bool changes(int b) const { return (b - record) % 5 == 0; }
    int keywordColumn() const { return record % kKeyword; }
    QString text(int b) const
    {
        return isNumber(b) ? QString::number(record * 100 + pass * 20 + b) : QStringLiteral("edited %1 %2 %3").arg(record).arg(b).arg(pass);
    }
    void apply(QStringList& keys) const
    {
        const qsizetype green = keys.indexOf(QStringLiteral("green"));
        if (green >= 0) {
            keys.removeAt(green);
            keys.append(QStringLiteral("yellow"));
        } else {
            keys.removeAll(QStringLiteral("yellow"));
            keys.append(QStringLiteral("green"));
        }
    }
};

/// The baseline: prepared statements by hand.
class ByHand {
public:
    explicit ByHand(DatabaseHandler& db) : m_db(db), m_sql(db.database()), m_readRow(m_sql)
    {
        const QString id = db.BracketName(QStringLiteral("FileId"));
        QStringList fields;
        for (int b = 0; b < kStandard; ++b)
            fields << db.BracketName(standardName(b));
        check(m_readRow.prepare(QStringLiteral("SELECT ") + fields.join(QStringLiteral(", ")) + QStringLiteral(" FROM ")
                                + db.BracketName(QStringLiteral("FilesSearchData")) + QStringLiteral(" WHERE ") + id + QStringLiteral(" = ?")),
              "prepare the row");
        const QString order = db.dialect().storageOrderLasts() ? db.dialect().storageOrder() : db.BracketName(QStringLiteral("KeywordOrder"));
        for (int k = 0; k < kKeyword; ++k) {
            const QString table = db.BracketName(QStringLiteral("FilesSearchKeyword") + keywordName(k));
            const QString field = db.BracketName(keywordName(k));
            Keyword& kw = m_keywords.emplace_back(m_sql);
            check(kw.read.prepare(QStringLiteral("SELECT ") + field + QStringLiteral(" FROM ") + table + QStringLiteral(" WHERE ") + id
                                  + QStringLiteral(" = ? ORDER BY ") + order)
                      && kw.remove.prepare(QStringLiteral("DELETE FROM ") + table + QStringLiteral(" WHERE ") + id + QStringLiteral(" = ? AND ")
                                           + field + QStringLiteral(" = ?"))
                      && kw.add.prepare(QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + id + QStringLiteral(", ") + field
                                        + QStringLiteral(") VALUES (?, ?)")),
                  "prepare the keywords");
        }
    }

    void loadAndSave(const Edit& edit)
    {
        check(m_db.database().transaction(), "begin");
        m_readRow.bindValue(0, edit.record);
        check(m_readRow.exec() && m_readRow.next(), "read the row");
        QStringList changed;
        QVariantList values;
        for (int b = 0; b < kStandard; ++b) {
            const QString now = m_readRow.value(b).toString();
            const QString next = edit.changes(b) ? edit.text(b) : now;
            if (next != now) {
                changed << standardName(b);
                values << (isNumber(b) ? QVariant(next.toInt()) : QVariant(next));
            }
        }
        m_readRow.finish();
        std::vector<QStringList> keys(kKeyword);
        for (int k = 0; k < kKeyword; ++k) {
            QSqlQuery& read = m_keywords[k].read;
            read.bindValue(0, edit.record);
            check(read.exec(), "read the keywords");
            while (read.next())
                keys[k] << read.value(0).toString();
        }

        if (!changed.isEmpty()) {
            QSqlQuery& update = updateOf(changed);
            for (int v = 0; v < values.size(); ++v)
                update.bindValue(v, values[v]);
            update.bindValue(int(values.size()), edit.record);
            check(update.exec(), "update the row");
        }
        const int k = edit.keywordColumn();
        QStringList next = keys[k];
        edit.apply(next);
        for (const QString& gone : keys[k])
            if (!next.contains(gone))
                bind(m_keywords[k].remove, edit.record, gone);
        for (const QString& added : next)
            if (!keys[k].contains(added))
                bind(m_keywords[k].add, edit.record, added);
        check(m_db.database().commit(), "commit");
    }

private:
    struct Keyword {
        explicit Keyword(const QSqlDatabase& sql) : read(sql), remove(sql), add(sql) {}
        QSqlQuery read, remove, add;
    };

    static void bind(QSqlQuery& q, int record, const QString& key)
    {
        q.bindValue(0, record);
        q.bindValue(1, key);
        check(q.exec(), "write a keyword");
    }

    /// An UPDATE of these fields, prepared the first time they change together.
    QSqlQuery& updateOf(const QStringList& fields)
    {
        const QString key = fields.join(u',');
        auto& q = m_updates[key];
        if (!q) {
            QString sets;
            for (const QString& f : fields)
                sets += (sets.isEmpty() ? QString() : QStringLiteral(", ")) + m_db.BracketName(f) + QStringLiteral(" = ?");
            q = std::make_unique<QSqlQuery>(m_sql);
            check(q->prepare(QStringLiteral("UPDATE ") + m_db.BracketName(QStringLiteral("FilesSearchData")) + QStringLiteral(" SET ") + sets
                             + QStringLiteral(" WHERE ") + m_db.BracketName(QStringLiteral("FileId")) + QStringLiteral(" = ?")),
                  "prepare an update");
        }
        return *q;
    }

    DatabaseHandler& m_db;
    QSqlDatabase m_sql;
    QSqlQuery m_readRow;
    std::vector<Keyword> m_keywords;
    std::map<QString, std::unique_ptr<QSqlQuery>> m_updates;
};

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const BenchOptions options = ParseBenchOptions(app.arguments(), 2000, 3);
    const int records = int(options.size);
    QTemporaryDir dir;
    const auto db = OpenBenchDatabase(options, dir);
    if (!db)
        return 1;
    const auto n = [&](const QString& name) { return db->BracketName(name); };
    const QString id = n(QStringLiteral("FileId"));
    const QString upTo = QStringLiteral(" FROM ") + CountingSql(records) + QStringLiteral(" AS k");
    check(CreateBaseTable(*db, QStringLiteral("Files"), QStringLiteral("FileId"), records), "base table");
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    (void)structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false);
    (void)structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto columns = CCommon().CreateSearchFilterObject(db, std::make_shared<NamedBaseTable>(QStringLiteral("Files")), catalog, nullptr, 0, structure)->FilterColumns();
    check(columns != nullptr, "open");
    for (int b = 0; b < kStandard; ++b)
        columns->Add(standardName(b), {}, {}, isNumber(b) ? fcInteger32 : fcText, 40, false, false);
    for (int k = 0; k < kKeyword; ++k)
        columns->Add(keywordName(k), {}, {}, fcKeyword, 40, false, false);
    check(columns->ColumnsSave(nullptr), "save definitions");
    columns->ColumnsFetch();

    // Every record starts with values in every field and three keywords in each keyword column.
    {
        QString sets;
        for (int b = 0; b < kStandard; ++b)
            sets += (b ? QStringLiteral(", ") : QString()) + n(standardName(b))
                    + (isNumber(b) ? QStringLiteral(" = ") + id + QStringLiteral(" + ") + QString::number(b)
                                   : QStringLiteral(" = 'value ' || ") + id);
        TableTransaction tx(*db);
        check(db->ExecuteSql(QStringLiteral("UPDATE ") + n(QStringLiteral("FilesSearchData")) + QStringLiteral(" SET ") + sets), "values");
        for (int k = 0; k < kKeyword; ++k)
            for (const QString& key : {QStringLiteral("'red' || (i % 7)"), QStringLiteral("'green'"), QStringLiteral("'blue' || (i % 5)")})
                check(db->ExecuteSql(QStringLiteral("INSERT INTO ") + n(QStringLiteral("FilesSearchKeyword") + keywordName(k)) + QStringLiteral(" (")
                                     + id + QStringLiteral(", ") + n(keywordName(k)) + QStringLiteral(") SELECT i, ") + key + upTo),
                      "keywords");
        check(tx.commit(), "commit the values");
    }

    std::map<QString, std::unique_ptr<Box>> boxes;
    std::vector<std::unique_ptr<Combo>> combos(kKeyword);
    for (const auto& c : *columns) {
        c->setIsValid(true);
        if (c->ColumnType() == fcKeyword) {
            auto& combo = combos[c->Name().mid(1).toInt()];
            combo = std::make_unique<Combo>();
            c->setMyControl(combo.get());
        } else {
            auto& box = boxes[c->Name()];
            box = std::make_unique<Box>();
            c->setMyControl(box.get());
        }
    }
    const auto throughLibrary = [&](const Edit& edit) {
        Entry entry;
        entry.id = edit.record;
        // As the entry control shows a record: its stored values, then each column's into its control.
        columns->GetData(&entry);
        for (const auto& c : *columns)
            c->ResetData();
        for (int b = 0; b < kStandard; ++b)
            if (edit.changes(b))
                boxes[standardName(b)]->text = edit.text(b);
        edit.apply(combos[edit.keywordColumn()]->items);
        check(columns->SaveDataFromEditControl(&entry), "library save");
    };
    ByHand byHand(*db);

    int pass = 0;
    const auto timed = [&](const std::function<void(const Edit&)>& loadAndSave) {
        ++pass;
        QElapsedTimer timer;
        timer.start();
        for (int i = 1; i <= records; ++i)
            loadAndSave(Edit{i, pass});
        return double(timer.nsecsElapsed()) / 1e6;
    };
    // What the library wrote for a record is what the edit made of it.
    const auto written = [&](const Edit& edit) {
        const QString where = QStringLiteral(" WHERE ") + id + QStringLiteral(" = ") + QString::number(edit.record);
        QSqlQuery q(db->database());
        QStringList keys;
        check(q.exec(QStringLiteral("SELECT ") + n(keywordName(edit.keywordColumn())) + QStringLiteral(" FROM ")
                     + n(QStringLiteral("FilesSearchKeyword") + keywordName(edit.keywordColumn())) + where),
              "read back the keywords");
        while (q.next())
            keys << q.value(0).toString();
        const int b = edit.record % 5;
        check(q.exec(QStringLiteral("SELECT ") + n(standardName(b)) + QStringLiteral(" FROM ") + n(QStringLiteral("FilesSearchData")) + where),
              "read back the row");
        return q.next() && q.value(0).toString() == edit.text(b) && keys.size() == 3
               && keys.contains(edit.pass % 2 ? QStringLiteral("yellow") : QStringLiteral("green"));
    };
    const std::function<void(const Edit&)> library = throughLibrary;
    const std::function<void(const Edit&)> hand = [&](const Edit& e) { byHand.loadAndSave(e); };

    const auto best = TakeTurns(
        options.rounds,
        [&] {
            const double ms = timed(library);
            check(written(Edit{records / 2 + 1, pass}), "the library's values");
            return ms;
        },
        [&] { return timed(hand); });
    check(best.has_value(), "a round");
    const double bestLibrary = best->library, bestHand = best->baseline;

    std::printf("%s, %d records of 20 columns (5 keyword columns of 3 keywords), best of %d\n", qPrintable(DatabaseName(*db)), records, options.rounds);
    std::printf("library load+save:  %8.1f us per record\n", bestLibrary * 1000 / records);
    std::printf("by hand:            %8.1f us per record\n", bestHand * 1000 / records);
    std::printf("ratio:              %8.2f\n", bestLibrary / bestHand);
    PrintBenchResult(QStringLiteral("load-save"), DatabaseName(*db), records, bestLibrary, bestHand);
    return 0;
}
