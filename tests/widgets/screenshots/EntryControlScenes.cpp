// The entry control in its states: viewing a record, editing every column type, a value that is not
// valid, and a window too small for its rows.

#include "screenshots/Scenes.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/Recordset.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "searchdata/widgets/UKVOSearchContainer.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

namespace searchdata::shots {

namespace {

constexpr int kRecord = 7;

struct SceneEntry : ISearchBaseEntry {
    qint32 Id() const override { return kRecord; }
};

class FilesTable : public ISearchBaseTable {
public:
    QString TableName() const override { return QStringLiteral("Files"); }
};

/// A host window that holds the control in a layout, with the record it shows.
class EntryHost : public QWidget {
public:
    EntryHost(SceneContext& ctx, QSize size, KVOSearchEditExamineModes mode)
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        control = new UKVOSearch(this);
        layout->addWidget(control);
        resize(size);
        QObject::connect(control, &UKVOSearch::OnStartEditing, control, [](ISearchBaseEntry*, bool* accepted) { *accepted = true; });
        const auto& db = ctx.database();
        record = db->OpenSqlRecordset(QStringLiteral("SELECT * FROM ") + db->BracketName(QStringLiteral("Files")) + QStringLiteral(" WHERE ")
                                      + db->BracketName(QStringLiteral("Id")) + QStringLiteral(" = ") + QString::number(kRecord));
        control->OpenSearch(std::make_shared<UKVOSearchContainer>(control), db, std::make_shared<FilesTable>(), ctx.catalog(),
                            ctx.profile(), 0, DescribeBaseTable(*GetCatalogTable(*ctx.catalog(), QStringLiteral("Files")), QStringLiteral("Id")));
        control->Display(record.get(), &entry, mode);
    }
    /// Shows the window and starts an edit session as the user would.
    void edit()
    {
        show();
        QApplication::setActiveWindow(this);
        (void)QTest::qWaitForWindowActive(this);
        QTest::mouseClick(control->findChild<QPushButton*>(QStringLiteral("cmdEdit")), Qt::LeftButton);
    }
    UKVOSearch* control;

private:
    SceneEntry entry;
    std::unique_ptr<Recordset> record;
};

/// Gives the demonstration table Files a column of each type that its set lacks, and record 7 values.
void addEveryColumnType(SceneContext& ctx)
{
    const auto search = ctx.openSearch(QStringLiteral("Files"));
    CFilterColumns& cols = *search->FilterColumns();
    cols.Add("Tags", "Keywords", "Words to find the program by", fcKeyword, 20, false, false);
    cols.Add("Quantity", "", "Parts per run", fcInteger16, 0, false, false);
    cols.Add("Batch", "Batch Number", "", fcInteger32, 0, false, false);
    cols.Add("Weight", "Weight (kg)", "", fcSingle, 0, false, false);
    cols.Add("Price", "Unit Price", "", fcDouble, 0, false, false);
    cols.Add("Due", "Due Date", "", fcDateTime, 0, false, false);
    cols.Add("Approved", "Approved for Production", "", fcBoolean, 0, false, false);
    cols.Add("Remarks", "", "", fcNote, 255, false, false);
    if (!cols.ColumnsSave(nullptr))
        qFatal("cannot add the columns of the scene");

    const SceneEntry entry;
    cols.GetData(&entry);
    const QList<std::pair<const char*, Value>> values = {
        {"Quantity", Value(qint16(24))},
        {"Batch", Value(qint32(300117))},
        {"Weight", Value(2.75f)},
        {"Price", Value(18.4)},
        {"Due", Value(QDateTime(QDate(2024, 3, 15), QTime(14, 30)))},
        {"Approved", Value(true)},
        {"Remarks", Value(QStringLiteral("Check the clamp before the second pass."))}};
    for (const auto& [name, value] : values)
        cols.Item(name)->setUpdatedValue(value);
    if (!cols.SaveDataFromClientUpdates(&entry))
        qFatal("cannot write the values of the scene");
    const auto& db = ctx.database();
    for (const char* keyword : {"aluminium", "urgent"})
        db->ExecuteSql(QStringLiteral("INSERT INTO ") + db->BracketName(QStringLiteral("FilesSearchKeywordTags")) + QStringLiteral(" (")
                       + db->BracketName(QStringLiteral("Id")) + QStringLiteral(", ") + db->BracketName(QStringLiteral("Tags"))
                       + QStringLiteral(") VALUES (") + QString::number(kRecord) + QStringLiteral(", ")
                       + db->SqlQuote(QString::fromLatin1(keyword)) + QLatin1Char(')'));
    ctx.catalog()->Refresh();
}

} // namespace

SD_SCENE("entry-control-viewing", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    return std::make_unique<EntryHost>(ctx, QSize(560, 400), kseModeEdit);
});

SD_SCENE("entry-control-editing", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    addEveryColumnType(ctx);
    auto host = std::make_unique<EntryHost>(ctx, QSize(640, 620), kseModeEdit);
    host->edit();
    return host;
});

SD_SCENE("entry-control-invalid", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    addEveryColumnType(ctx);
    auto host = std::make_unique<EntryHost>(ctx, QSize(640, 660), kseModeEdit);
    host->edit();
    // The quantity, the fifth column, takes a text that is no number.
    auto* quantity = host->control->findChild<QLineEdit*>(QStringLiteral("txtTextField_4"));
    quantity->setFocus();
    quantity->selectAll();
    QTest::keyClicks(quantity, QStringLiteral("two dozen"));
    return host;
});

SD_SCENE("entry-control-scrolling", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    addEveryColumnType(ctx);
    auto host = std::make_unique<EntryHost>(ctx, QSize(520, 400), kseModeEdit);
    host->edit();
    return host;
});

} // namespace searchdata::shots
