// The entry control in its states: viewing a record, editing every column type, a value that is not
// valid, and a window too small for its rows; and the examine window around it, viewing, editing and
// asking before it drops a change.

#include "screenshots/Scenes.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Recordset.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "searchdata/widgets/UKVOSearchContainer.h"
#include "searchdata/widgets/frmExamine.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QVBoxLayout>

namespace searchdata::shots {

namespace {

constexpr int kRecord = 7;

struct SceneEntry : ISearchBaseEntry {
    qint32 Id() const override { return kRecord; }
};

/// The base record that the scenes show, as a host reads it.
std::unique_ptr<Recordset> openRecord(SceneContext& ctx)
{
    const auto& db = ctx.database();
    return db->OpenSqlRecordset(QStringLiteral("SELECT * FROM ") + db->BracketName(QStringLiteral("Files")) + QStringLiteral(" WHERE ")
                                + db->BracketName(QStringLiteral("Id")) + QStringLiteral(" = ") + QString::number(kRecord));
}

/// Shows `window` and makes it the active one, so that its controls take the focus as the user's would.
void activate(QWidget* window)
{
    window->show();
    QApplication::setActiveWindow(window);
    (void)QTest::qWaitForWindowActive(window);
}

/// A host window that holds the control in a layout, with the record it shows.
class EntryHost : public QWidget {
public:
    EntryHost(SceneContext& ctx, QSize size, KVOSearchEditExamineModes mode) : record(openRecord(ctx))
    {
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        control = new UKVOSearch(this);
        layout->addWidget(control);
        resize(size);
        QObject::connect(control, &UKVOSearch::OnStartEditing, control, [](ISearchBaseEntry*, bool* accepted) { *accepted = true; });
        const auto& db = ctx.database();
        control->OpenSearch(std::make_shared<UKVOSearchContainer>(control), db, std::make_shared<NamedBaseTable>(QStringLiteral("Files")), ctx.catalog(),
                            ctx.profile(), 0, DescribeBaseTable(*GetCatalogTable(*ctx.catalog(), QStringLiteral("Files")), QStringLiteral("Id")));
        control->Display(record.get(), &entry, mode);
    }
    /// Shows the window and starts an edit session as the user would.
    void edit()
    {
        activate(this);
        QTest::mouseClick(control->findChild<QPushButton*>(QStringLiteral("cmdEdit")), Qt::LeftButton);
    }
    UKVOSearch* control;

private:
    std::unique_ptr<Recordset> record;
    SceneEntry entry;
};

/// The examine window on the record, opened as the search's View (or Edit) opens it.
class ExamineHost : public frmExamine {
public:
    ExamineHost(SceneContext& ctx, KVOSearchEditExamineModes mode) : record(openRecord(ctx))
    {
        const auto search = ctx.openSearch(QStringLiteral("Files"));
        Prepare(mode, *search->FilterColumns(), &entry, record.get(), nullptr);
    }
    /// Starts an edit session and types a new part number, as the user would.
    void change()
    {
        activate(this);
        QTest::mouseClick(findChild<QPushButton*>(QStringLiteral("cmdEdit")), Qt::LeftButton);
        auto* part = findChild<QLineEdit*>(QStringLiteral("txtTextField_1"));
        part->setFocus();
        part->selectAll();
        QTest::keyClicks(part, QStringLiteral("P-4707-C"));
    }

private:
    std::unique_ptr<Recordset> record;
    SceneEntry entry;
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

SD_SCENE("examine-viewing", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    return std::make_unique<ExamineHost>(ctx, kseModeExamine);
});

SD_SCENE("examine-editing", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    auto form = std::make_unique<ExamineHost>(ctx, kseModeEdit);
    form->change();
    return form;
});

SD_SCENE("examine-close-question", [](SceneContext& ctx) -> std::unique_ptr<QWidget> {
    // The window's own close asks through the services: the question is caught as it shows, and
    // answered Cancel so that the window stays as it was.
    auto form = std::make_unique<ExamineHost>(ctx, kseModeEdit);
    form->change();
    QPixmap question;
    QTimer::singleShot(0, [&question] {
        QMessageBox* box = nullptr;
        if (!QTest::qWaitFor([&box] { return (box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) != nullptr; })
            || !QTest::qWaitForWindowExposed(box))
            qFatal("the examine window closed without a question");
        question = box->grab();
        box->button(QMessageBox::Cancel)->click();
    });
    form->close();
    if (!form->isVisible())
        qFatal("the examine window closed although the question was answered Cancel");
    auto shown = std::make_unique<QLabel>();
    shown->setPixmap(question);
    shown->setFixedSize(question.deviceIndependentSize().toSize());
    return shown;
});

} // namespace searchdata::shots
