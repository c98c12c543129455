// The entry control on a table of 100 search columns of every type, beside a hand-built form of the
// same 100 label and editor pairs in a QFormLayout that reads the same record with its own queries.
// Offscreen; build in Release. Measures: building and showing a record, one resize of the control
// against one relayout of the form, and the time from the last of 50 keystrokes to the end of the
// update of the buttons. Usage: bench_entry_control [runs]

#include "BenchRun.h"
#include "searchdata/CCommon.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "searchdata/widgets/UKVOSearchContainer.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <functional>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

constexpr int kColumns = 100;
constexpr int kRecord = 1;
constexpr int kKeys = 50;

struct Entry : ISearchBaseEntry {
    qint32 Id() const override { return kRecord; }
};

void check(bool ok, const char* what)
{
    if (!ok) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::exit(1);
    }
}

FilterColumnTypeConstants typeOf(int i)
{
    return FilterColumnTypeConstants(i % 9);
}

QString nameOf(int i)
{
    return QStringLiteral("C%1").arg(i, 3, 10, QLatin1Char('0'));
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double msSince(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

/// The record's values, written once through the library.
void fillRecord(DatabaseHandler& db, CFilterColumns& columns)
{
    const Entry entry;
    for (int i = 0; i < kColumns; ++i) {
        const auto column = columns.Item(nameOf(i));
        switch (typeOf(i)) {
        case fcKeyword:
            for (const char* key : {"red", "green"})
                check(db.ExecuteSql(QStringLiteral("INSERT INTO FilesSearchKeyword%1 (FileId, %1) VALUES (?, ?)").arg(nameOf(i)),
                                    QVariantList{kRecord, QString::fromLatin1(key)}),
                      "keyword");
            break;
        case fcText: column->setUpdatedValue(Value(QStringLiteral("text %1").arg(i))); break;
        case fcInteger16: column->setUpdatedValue(Value(qint16(i))); break;
        case fcInteger32: column->setUpdatedValue(Value(qint32(100000 + i))); break;
        case fcSingle: column->setUpdatedValue(Value(float(i) / 4)); break;
        case fcDouble: column->setUpdatedValue(Value(double(i) / 8)); break;
        case fcDateTime: column->setUpdatedValue(Value(QDateTime(QDate(2024, 1, 1 + i % 28), QTime(8, 30)))); break;
        case fcBoolean: column->setUpdatedValue(Value(i % 2 == 0)); break;
        default: column->setUpdatedValue(Value(QStringLiteral("a note of column %1").arg(i))); break;
        }
    }
    check(columns.SaveDataFromClientUpdates(&entry), "values");
}

/// The hand-built form: 100 label and editor pairs in a form layout, in a scroll area, showing the
/// record as its own queries read it.
class HandForm : public QScrollArea {
public:
    explicit HandForm(QSqlDatabase db)
    {
        auto* sheet = new QWidget;
        auto* form = new QFormLayout(sheet);
        QSqlQuery row(db);
        row.prepare(QStringLiteral("SELECT * FROM FilesSearchData WHERE FileId = ?"));
        row.addBindValue(kRecord);
        check(row.exec() && row.next(), "hand row");
        for (int i = 0; i < kColumns; ++i) {
            const QString name = nameOf(i);
            QWidget* editor = nullptr;
            switch (typeOf(i)) {
            case fcKeyword: {
                auto* combo = new QComboBox;
                combo->setEditable(true);
                QSqlQuery keys(db);
                keys.prepare(QStringLiteral("SELECT %1 FROM FilesSearchKeyword%1 WHERE FileId = ?").arg(name));
                keys.addBindValue(kRecord);
                check(keys.exec(), "hand keywords");
                while (keys.next())
                    combo->addItem(keys.value(0).toString());
                editor = combo;
                break;
            }
            case fcBoolean: {
                auto* box = new QCheckBox(QStringLiteral("Column %1").arg(i));
                box->setChecked(row.value(name).toBool());
                editor = box;
                break;
            }
            case fcNote: editor = new QPlainTextEdit(row.value(name).toString()); break;
            default: editor = new QLineEdit(row.value(name).toString()); break;
            }
            form->addRow(new QLabel(QStringLiteral("Column %1:").arg(i)), editor);
        }
        setWidget(sheet);
        setWidgetResizable(true);
    }
};

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    const int runs = argc > 1 ? std::max(3, std::atoi(argv[1])) : 15;

    QTemporaryDir dir;
    auto db = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite"))).value();
    check(db->ExecuteSql(QStringLiteral("CREATE TABLE Files (FileId INTEGER PRIMARY KEY, Name VARCHAR(255))")), "base table");
    for (int i = 1; i <= 20; ++i)
        check(db->ExecuteSql(QStringLiteral("INSERT INTO Files VALUES (?, ?)"), QVariantList{i, QStringLiteral("file %1").arg(i)}), "base row");
    auto catalog = std::make_shared<Catalog>(db);
    auto structure = TableStructure::NewStructure(QStringLiteral("Files"));
    (void)structure->AddColumn(QStringLiteral("FileId"), adInteger, 0, 0, false);
    (void)structure->AddPrimaryKey(QStringLiteral("PK_Files"), {QStringLiteral("FileId")});
    auto table = std::make_shared<NamedBaseTable>(QStringLiteral("Files"));
    {
        auto columns = CCommon().CreateSearchFilterObject(db, table, catalog, nullptr, 0, structure)->FilterColumns();
        check(columns != nullptr, "open");
        for (int i = 0; i < kColumns; ++i)
            columns->Add(nameOf(i), QStringLiteral("Column %1").arg(i), {}, typeOf(i), 40, false, false);
        check(columns->ColumnsSave(nullptr), "definitions");
        catalog->Refresh();
        fillRecord(*db, *columns);
    }
    const QSize size(900, 700);
    Entry entry;

    // Build and show a record.
    std::vector<double> controlBuild, formBuild;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        {
            UKVOSearch control;
            control.resize(size);
            check(control.OpenSearch(std::make_shared<UKVOSearchContainer>(&control), db, table, catalog, nullptr, 0, structure),
                  "control open");
            control.Display(nullptr, &entry, kseModeEdit);
            control.show();
            QCoreApplication::processEvents();
            control.repaint();
            controlBuild.push_back(msSince(timer));
        }
        QCoreApplication::processEvents();
        timer.restart();
        {
            HandForm form(db->database());
            form.resize(size);
            form.show();
            QCoreApplication::processEvents();
            form.repaint();
            formBuild.push_back(msSince(timer));
        }
        QCoreApplication::processEvents();
    }

    // One resize against one relayout.
    UKVOSearch control;
    control.resize(size);
    check(control.OpenSearch(std::make_shared<UKVOSearchContainer>(&control), db, table, catalog, nullptr, 0, structure), "control open");
    QObject::connect(&control, &UKVOSearch::OnStartEditing, &control, [](ISearchBaseEntry*, bool* accepted) { *accepted = true; });
    control.Display(nullptr, &entry, kseModeEdit);
    control.show();
    HandForm form(db->database());
    form.resize(size);
    form.show();
    QCoreApplication::processEvents();
    const int resizes = 40 * runs;
    const auto timeResizes = [&](QWidget& w) {
        std::vector<double> times;
        for (int i = 0; i < resizes; ++i) {
            const QSize next = i % 2 ? size : QSize(size.width() - 80 - i % 7, size.height() - 60);
            QElapsedTimer timer;
            timer.start();
            w.resize(next);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
            times.push_back(double(timer.nsecsElapsed()) / 1e3);
        }
        return median(times);
    };
    const double controlResize = timeResizes(control);
    const double formResize = timeResizes(form);

    // 50 keystrokes in an edit session, and the update of the buttons after the last.
    QTest::mouseClick(control.findChild<QPushButton*>(QStringLiteral("cmdEdit")), Qt::LeftButton);
    auto* timer = control.findChild<QTimer*>(QStringLiteral("tmrUpdate"));
    check(QTest::qWaitFor([timer] { return !timer->isActive(); }), "edit session");
    auto* box = control.findChild<QLineEdit*>(QStringLiteral("txtTextField_1"));
    box->setFocus();
    QElapsedTimer sinceLastKey;
    double updateEnd = -1;
    // Connected after the control's own handler, so it runs when the update has ended.
    QObject::connect(timer, &QTimer::timeout, &control, [&] { updateEnd = msSince(sinceLastKey); });
    QElapsedTimer keys;
    keys.start();
    for (int i = 0; i < kKeys; ++i) {
        if (i == kKeys - 1)
            sinceLastKey.start();
        QTest::keyClick(box, char('a' + i % 26));
    }
    const double perKey = msSince(keys) / kKeys;
    (void)QTest::qWaitFor([&] { return updateEnd >= 0; }, 5000);
    check(updateEnd >= 0, "button update");

    std::printf("entry control, %d search columns of 9 types, SQLite, offscreen, median of %d runs\n", kColumns, runs);
    std::printf("build and display:   control %8.1f ms   form %8.1f ms   ratio %5.2f (aim 1.5 or better)\n", median(controlBuild),
                median(formBuild), median(controlBuild) / median(formBuild));
    std::printf("one resize:          control %8.1f us   form %8.1f us   ratio %5.2f (aim 1.0 or better)\n", controlResize, formResize,
                controlResize / formResize);
    std::printf("keystrokes:          %d keys, %.2f ms per key; last key to the end of the button update %.1f ms (200 ms of it the wait for quiet)\n",
                kKeys, perKey, updateEnd);
    PrintBenchResult(QStringLiteral("entry-build"), DatabaseName(*db), kColumns, median(controlBuild), median(formBuild));
    PrintBenchResult(QStringLiteral("entry-resize"), DatabaseName(*db), kColumns, controlResize / 1000, formResize / 1000);
    return 0;
}
