// The filter dialog opened offscreen on 100 search columns and 20 base-table fields with a saved
// filter of ten terms restored into its rows, beside ten plain combo boxes filled by hand with the
// same entries (image, text, key and tag) and shown in a window of their own.
//
//   QT_QPA_PLATFORM=offscreen bench_filter_dialog [rounds=50]
//
// Prints the median processor time of each, and their ratio.

#include "BenchRun.h"
#include "filter/frmFilter.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QApplication>
#include <QComboBox>
#include <QPixmap>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <algorithm>
#include <ctime>
#include <functional>

using namespace searchdata;
using namespace searchdata::bench;

namespace {

QTextStream out(stdout);

constexpr int kColumns = 100;
constexpr int kBaseFields = 20;

/// Processor time of this thread, in milliseconds: the machine may be busy with other work, which
/// wall time would count too.
double threadMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

double msOf(const std::function<void()>& run)
{
    const double start = threadMs();
    run();
    return threadMs() - start;
}

double median(QList<double> times)
{
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

QIcon pictureIcon(int number)
{
    QPixmap pixmap;
    pixmap.loadFromData(GetResourcePicture(number), "PNG");
    return QIcon(pixmap);
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? QString::fromLocal8Bit(argv[1]).toInt() : 50;
    UiServices::install(std::make_shared<WidgetUiServices>());

    QTemporaryDir dir;
    auto opened = DatabaseHandler::open(dir.filePath(QStringLiteral("bench.sqlite")));
    if (!opened) {
        out << "cannot open the database: " << opened.error() << Qt::endl;
        return 1;
    }
    DatabaseHandler& db = *opened.value();

    // Parts with a key and twenty fields of the five kinds a filter compares.
    const int fieldTypes[] = {adVarWChar, adInteger, adDouble, adDate, adBoolean};
    auto structure = TableStructure::NewStructure(QStringLiteral("Parts"));
    bool described = structure->AddColumn(QStringLiteral("PartId"), adInteger, 0, 0, false);
    QString create = QStringLiteral("CREATE TABLE ") + db.BracketName(QStringLiteral("Parts")) + QStringLiteral(" (")
                     + db.BracketName(QStringLiteral("PartId")) + QStringLiteral(" INTEGER NOT NULL PRIMARY KEY");
    for (int i = 1; i < kBaseFields; ++i) {
        const QString name = QStringLiteral("Field%1").arg(i);
        const int type = fieldTypes[i % 5];
        create += QStringLiteral(", ") + db.BracketName(name) + QLatin1Char(' ') + db.dialect().declaredType(type, 255);
        described = described && structure->AddColumn(name, type, type == adVarWChar ? 255 : 0)
                    && structure->MarkFilterField(name, true, QStringLiteral("Base field %1").arg(i));
    }
    described = described && structure->AddPrimaryKey(QStringLiteral("PK_Parts"), {QStringLiteral("PartId")});
    QSqlQuery query(db.database());
    if (!described || !query.exec(create + QLatin1Char(')'))) {
        out << "cannot make the base table" << Qt::endl;
        return 1;
    }

    // A hundred search columns of every kind.
    auto profile = std::make_shared<IniProfile>(dir.filePath(QStringLiteral("profile.ini")), 1);
    CSearchFilter search;
    search.OpenSearch(opened.value(), std::make_shared<NamedBaseTable>(QStringLiteral("Parts")), std::make_shared<Catalog>(opened.value()), profile, 0, structure);
    const auto columns = search.FilterColumns();
    if (!columns) {
        out << "the search did not open" << Qt::endl;
        return 1;
    }
    const FilterColumnTypeConstants columnTypes[] = {fcKeyword, fcText, fcInteger32, fcDouble, fcDateTime, fcBoolean, fcNote};
    for (int i = 1; i <= kColumns; ++i)
        if (!columns->Add(QStringLiteral("Column%1").arg(i), QStringLiteral("Search column %1").arg(i), {}, columnTypes[i % 7], 40, false, false)) {
            out << "cannot add a column" << Qt::endl;
            return 1;
        }

    // The saved filter: ten terms over columns and base fields, stored in and read from the profile.
    auto saved = std::make_shared<CFilterTerms>(columns);
    for (int i = 0; i < frmFilter::kRows; ++i) {
        const auto conjunction = i == 0 ? kvoCJ_None : (i % 2 ? kvoCJ_And : kvoCJ_OR);
        if (i % 3 == 2)
            saved->Add(conjunction, columns->BaseTableName(), QStringLiteral("Field%1").arg(1 + 5 * (i / 3)), kvoCC_Numeric, kvoOP_Greater,
                       QStringLiteral("4"));
        else
            saved->Add(conjunction, columns->SearchKeyword(), QStringLiteral("Column%1").arg(i * 7 + 1), kvoCC_Text, kvoOP_IsLike,
                       QStringLiteral("A%"));
    }
    CSearchFilter::SaveFilter(saved.get(), *columns, profile.get(), QStringLiteral("1"), fltrDBMode_Normal);
    const auto restored = CSearchFilter::GetFilter(columns, profile.get(), QStringLiteral("1"), fltrDBMode_Normal);

    int restoredRows = 0;
    const auto openDialog = [&] {
        frmFilter dialog;
        dialog.Prepare(columns, restored);
        dialog.show();
        QApplication::processEvents();
        restoredRows = 0;
        for (int i = 0; i < frmFilter::kRows; ++i)
            if (dialog.findChild<QComboBox*>(QStringLiteral("imgcboFields_%1").arg(i))->currentIndex() > 0)
                ++restoredRows;
    };

    // The same entries by hand: "<<none>>", each column, each base field, in ten combo boxes.
    struct Entry {
        QString key;
        QString text;
        bool baseField;
        QVariant tag;
    };
    QList<Entry> entries;
    for (const auto& column : *columns)
        entries.append({column->Name(), column->CaptionOrName(), false,
                        QVariant::fromValue(FilterFieldTag{std::weak_ptr<const CFilterColumn>(column), std::nullopt})});
    for (const StructureColumn& field : frmFilter::BaseFields(*columns))
        entries.append({db.dialect().QualifiedName(field.name, columns->BaseTableName()), field.displayNameOrName(), true,
                        QVariant::fromValue(FilterFieldTag{{}, field})});
    const auto fillByHand = [&] {
        const QIcon baseImage = pictureIcon(501);
        const QIcon columnImage = pictureIcon(502);
        QWidget window;
        for (int i = 0; i < frmFilter::kRows; ++i) {
            auto* combo = new QComboBox(&window);
            combo->setGeometry(10, 10 + 30 * i, 200, 24);
            combo->addItem(GetResourceText(7587), frmFilter::noneKey());
            for (const Entry& entry : entries) {
                combo->addItem(entry.baseField ? baseImage : columnImage, entry.text, entry.key);
                combo->setItemData(combo->count() - 1, entry.tag, frmFilter::TagRole);
            }
            combo->setCurrentIndex(1 + i);
        }
        window.show();
        QApplication::processEvents();
    };

    // Turn about, after one of each to warm the caches, so that both meet the same load of the machine.
    openDialog();
    fillByHand();
    QList<double> dialogTimes;
    QList<double> handTimes;
    for (int i = 0; i < rounds; ++i) {
        dialogTimes << msOf(openDialog);
        handTimes << msOf(fillByHand);
    }
    const double dialogMs = median(dialogTimes);
    const double handMs = median(handTimes);

    out << "filter dialog, " << columns->Count() << " columns and " << frmFilter::BaseFields(*columns).size()
        << " base fields, " << restoredRows << " rows restored: " << QString::number(dialogMs, 'f', 2) << " ms (median of " << rounds
        << ")\n";
    out << "ten combo boxes filled by hand with the same " << entries.size() + 1
        << " entries: " << QString::number(handMs, 'f', 2) << " ms\n";
    out << "ratio: " << QString::number(dialogMs / handMs, 'f', 2) << Qt::endl;
    PrintBenchResult(QStringLiteral("filter-dialog"), DatabaseName(db), kColumns, dialogMs, handMs);
    return restoredRows == frmFilter::kRows ? 0 : 1;
}
