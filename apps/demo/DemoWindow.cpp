#include "DemoWindow.h"

#include "ProgressTask.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CFilterTerms.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"
#include "searchdata/Recordset.h"
#include "searchdata/Resources.h"
#include "searchdata/TableStructure.h"
#include "searchdata/UiServices.h"
#include "searchdata/widgets/AboutBox.h"
#include "searchdata/widgets/CFormInfo.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "searchdata/widgets/UKVOSearchContainer.h"

#include <QActionGroup>
#include <QDialog>
#include <QDockWidget>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSqlError>
#include <QSqlRecord>
#include <QSqlTableModel>
#include <QStatusBar>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

namespace searchdata::demo {

namespace {

/// The answer to the library's schema questions that ends the check before anything changes.
constexpr int kEndCheck = 1;

QString title()
{
    return GetResourceText(9450);
}

/// A filter as a user reads it: "Customer equals "Acme" Or Size is greater than "1000"".
QString inWords(const CFilterTerms& terms)
{
    QString text;
    for (const auto& term : terms) {
        if (!text.isEmpty())
            text += QLatin1Char(' ') + GetResourceText(term->Conjunction() == kvoCJ_OR ? 7589 : 7588) + QLatin1Char(' ');
        const QString field = term->Column() ? term->Column()->CaptionOrName() : term->Field();
        // The comparisons' texts are the filter dialog's, in the order of the operations.
        const QString comparison = GetResourceText(7488 + int(term->Operation()));
        const bool takesValue = term->Operation() != kvoOP_IsTrue && term->Operation() != kvoOP_IsFalse;
        text += takesValue ? GetResourceText(9468, {field, comparison, term->CompareTo()}) : field + QLatin1Char(' ') + comparison;
    }
    return text;
}

/// The single field of the table's primary key; blank when it has none of one field.
QString primaryKey(const CatalogTable& table)
{
    for (const CatalogKey& key : table.keys)
        if (key.kind == kkPrimary && key.columns.size() == 1)
            return key.columns.first();
    return {};
}

/// The error log of an import, shown to the user.
void showErrorLog(QWidget* parent, const QString& source, const DataBlockImport& result)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("dlgImportErrors"));
    dialog.setWindowTitle(GetResourceText(9483));
    auto* layout = new QVBoxLayout(&dialog);
    auto* label = new QLabel(GetResourceText(9484, {QString::number(result.errors), source, result.logFile}), &dialog);
    label->setWordWrap(true);
    auto* log = new QPlainTextEdit(&dialog);
    log->setObjectName(QStringLiteral("txtErrorLog"));
    log->setReadOnly(true);
    QFile file(result.logFile);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        log->setPlainText(QString::fromUtf8(file.readAll()));
    auto* ok = new QPushButton(GetResourceText(8066), &dialog);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
    layout->addWidget(label);
    layout->addWidget(log);
    layout->addWidget(ok, 0, Qt::AlignRight);
    dialog.resize(560, 320);
    dialog.exec();
}

} // namespace

DemoWindow::DemoWindow(std::shared_ptr<DatabaseHandler> db, std::shared_ptr<Catalog> catalog, std::shared_ptr<IProfile> profile,
                       const QStringList& tables, QWidget* parent)
    : QMainWindow(parent), m_db(std::move(db)), m_catalog(std::move(catalog)), m_profile(std::move(profile))
{
    setObjectName(QStringLiteral("frmDemo"));
    setWindowTitle(title());

    m_model = new QSqlTableModel(this, m_db->database());
    m_model->setEditStrategy(QSqlTableModel::OnManualSubmit);
    m_view = new QTableView(this);
    m_view->setObjectName(QStringLiteral("tblRecords"));
    m_view->setModel(m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setAlternatingRowColors(true);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    setCentralWidget(m_view);
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { currentRowChanged(current.row()); });

    m_control = new UKVOSearch;
    m_control->setObjectName(QStringLiteral("kvoSearch"));
    // The table beside the control shows the base record already.
    m_control->SetDisplayBaseRecord(false);
    m_dock = new QDockWidget(GetResourceText(9459), this);
    m_dock->setObjectName(QStringLiteral("dockSearch"));
    m_dock->setWidget(m_control);
    m_dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::RightDockWidgetArea, m_dock);
    connect(m_control, &UKVOSearch::OnStartEditing, this, &DemoWindow::startEditing);
    connect(m_control, &UKVOSearch::OkButtonClick, this, &DemoWindow::saveFromControl);
    connect(m_control, &UKVOSearch::ApplyButtonClick, this,
            [this] { tellFailure(GetResourceText(9488, {QString::number(m_entry.id)})); });

    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lblStatus"));
    statusBar()->addWidget(m_status, 1);

    makeActions(tables);
    makeMenusAndToolBar();
    resize(1100, 620);
    if (!tables.isEmpty())
        showTable(tables.first());
}

DemoWindow::~DemoWindow()
{
    // The database goes with the members: nothing may use it after them.
    m_control->CloseSearch();
    m_view->setModel(nullptr);
    delete m_model;
}

QAction* DemoWindow::makeAction(const char* name, const QString& text, void (DemoWindow::*slot)())
{
    auto* action = new QAction(text, this);
    action->setObjectName(QString::fromLatin1(name));
    connect(action, &QAction::triggered, this, slot);
    return action;
}

void DemoWindow::makeActions(const QStringList& tables)
{
    // The library's own captions and pictures for the items a host puts in its menus; one icon with
    // both pictures, so that menus take the small one and the tool bar the large one.
    const auto libraryAction = [this](const char* name, FilterMenuItems item, void (DemoWindow::*slot)()) {
        QAction* action = makeAction(name, m_control->StandardCaption(item), slot);
        QIcon icon;
        for (const QPixmap& picture : {m_control->BitmapSmall(item), m_control->BitmapLarge(item)})
            if (!picture.isNull())
                icon.addPixmap(picture);
        action->setIcon(icon);
        return action;
    };
    m_filter = libraryAction("actFilter", fltr_FMI_FILTER, &DemoWindow::filter);
    m_filter->setShortcut(QKeySequence::Find);
    m_clearFilter = libraryAction("actClearFilter", fltr_FMI_CLEARFILTER, &DemoWindow::clearFilter);
    m_viewData = libraryAction("actViewData", fltr_FMI_VIEWDATA, &DemoWindow::viewData);
    m_editPicklists = libraryAction("actEditPicklists", fltr_FMI_EDITPICKLISTS, &DemoWindow::editPicklists);
    m_configure = makeAction("actConfigure", GetResourceText(9460), &DemoWindow::configureColumns);
    m_check = makeAction("actCheck", GetResourceText(9461), &DemoWindow::checkAndRepair);
    m_populate = makeAction("actPopulate", GetResourceText(9462), &DemoWindow::populate);
    m_import = makeAction("actImport", GetResourceText(9463), &DemoWindow::importFromFile);
    m_about = makeAction("actAbout", GetResourceText(9464), &DemoWindow::about);
    m_exit = makeAction("actExit", GetResourceText(9465), &DemoWindow::exit);
    m_exit->setShortcut(QKeySequence::Quit);
    m_tables = new QActionGroup(this);
    m_tables->setExclusive(true);
    for (const QString& table : tables) {
        QAction* action = m_tables->addAction(table);
        action->setObjectName(QStringLiteral("actTable") + table);
        action->setCheckable(true);
        action->setData(table);
    }
    connect(m_tables, &QActionGroup::triggered, this, [this](QAction* action) { showTable(action->data().toString()); });
}

void DemoWindow::makeMenusAndToolBar()
{
    QMenu* file = menuBar()->addMenu(GetResourceText(9454));
    file->addAction(m_import);
    file->addSeparator();
    file->addAction(m_exit);
    menuBar()->addMenu(GetResourceText(9455))->addActions(m_tables->actions());
    QMenu* search = menuBar()->addMenu(GetResourceText(9456));
    search->addActions({m_filter, m_clearFilter});
    search->addSeparator();
    search->addAction(m_viewData);
    QAction* showDock = m_dock->toggleViewAction();
    showDock->setText(m_control->StandardCaption(fltr_FMI_SHOWSEARCHDATAWINDOW));
    search->addAction(showDock);
    QMenu* administration = menuBar()->addMenu(GetResourceText(9457));
    administration->addActions({m_configure, m_editPicklists});
    administration->addSeparator();
    administration->addActions({m_check, m_populate});
    QMenu* help = menuBar()->addMenu(GetResourceText(9458));
    help->addAction(m_about);

    QToolBar* bar = addToolBar(GetResourceText(9456));
    bar->setObjectName(QStringLiteral("tbrSearch"));
    bar->setIconSize(m_control->BitmapLarge(fltr_FMI_FILTER).size());
    bar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    bar->addActions({m_filter, m_clearFilter, m_viewData});
}

// ---- the shown table and record ---------------------------------------------------------------------

void DemoWindow::showTable(const QString& table)
{
    m_control->CloseSearch();
    const CatalogTablePtr base = GetCatalogTable(*m_catalog, table);
    m_table = base ? base->name : table;
    m_key = base ? primaryKey(*base) : QString();
    m_terms.reset();
    m_entry.id = 0;
    for (QAction* action : m_tables->actions())
        action->setChecked(action->data().toString() == table);
    openSearch();
    m_model->setTable(m_table);
    m_model->setFilter({});
    m_model->setSort(m_model->record().indexOf(m_key), Qt::AscendingOrder);
    reload();
}

void DemoWindow::openSearch()
{
    Diagnostics::instance().clearReports();
    const CatalogTablePtr base = GetCatalogTable(*m_catalog, m_table);
    std::shared_ptr<TableStructure> structure = base ? DescribeBaseTable(*base, m_key) : nullptr;
    // The key means nothing to a user: the filter does not offer it.
    if (structure)
        (void)structure->MarkFilterField(m_key, false);
    if (!structure || !m_control->OpenSearch(std::make_shared<UKVOSearchContainer>(m_control), m_db, std::make_shared<NamedBaseTable>(m_table),
                                             m_catalog, m_profile, 0, structure))
        tellFailure(GetResourceText(9471, {m_table}));
    display(m_entry.id);
}

std::shared_ptr<CSearchFilter> DemoWindow::search() const
{
    return m_control->MyFilter();
}

void DemoWindow::reload()
{
    const qint32 shown = m_entry.id;
    if (!m_model->select())
        warn(GetResourceText(9472, {m_table, m_model->lastError().text()}));
    // Every row at once: the count is the filter's, and no statement stays open on the database.
    while (m_model->canFetchMore())
        m_model->fetchMore();
    const int keyColumn = m_model->record().indexOf(m_key);
    int row = 0;
    for (int r = 0; r < m_model->rowCount(); ++r)
        if (m_model->index(r, keyColumn).data().toInt() == shown)
            row = r;
    if (m_model->rowCount() > 0)
        m_view->setCurrentIndex(m_model->index(row, 0));
    else
        display(0);
    updateStatus();
}

void DemoWindow::currentRowChanged(int row)
{
    const qint32 id = row >= 0 ? m_model->record(row).value(m_key).toInt() : 0;
    if (id == m_entry.id || m_returning)
        return;
    if (m_control->IsEditing() && m_control->IsDirty()) {
        switch (UiServices::current().AskYesNoCancel(title(), GetResourceText(9487, {QString::number(m_entry.id)}), Answer::Yes)) {
        case Answer::Yes:
            saveFromControl();
            break;
        case Answer::No:
            break;
        default: {
            // Back to the record being edited, which keeps its changes.
            m_returning = true;
            const int keyColumn = m_model->record().indexOf(m_key);
            for (int r = 0; r < m_model->rowCount(); ++r)
                if (m_model->index(r, keyColumn).data().toInt() == m_entry.id)
                    m_view->setCurrentIndex(m_model->index(r, 0));
            m_returning = false;
            return;
        }
        }
    }
    // The session belongs to the record left: it ends there, saved or not.
    if (m_control->IsEditing())
        m_control->Display(m_record.get(), &m_entry, kseModeExamine);
    display(id);
}

void DemoWindow::display(qint32 id)
{
    m_entry.id = id;
    std::unique_ptr<Recordset> record;
    if (id != 0)
        record = m_db->OpenSqlRecordset(QStringLiteral("SELECT * FROM ") + m_db->BracketName(m_table) + QStringLiteral(" WHERE ")
                                            + m_db->BracketName(m_key) + QStringLiteral(" = ?"),
                                        QVariantList{id});
    m_control->Display(record.get(), id != 0 ? &m_entry : nullptr, kseModeEdit);
    m_record = std::move(record);
    updateActions();
}

void DemoWindow::updateStatus()
{
    qint32 total = 0;
    if (auto count = m_db->OpenSqlRecordset(QStringLiteral("SELECT COUNT(*) AS n FROM ") + m_db->BracketName(m_table)))
        total = count->field(QStringLiteral("n")).toInt32().valueOr(0);
    const QString shown = QString::number(m_model->rowCount());
    m_status->setText(m_terms ? GetResourceText(9467, {shown, QString::number(total), m_table, inWords(*m_terms)})
                              : GetResourceText(9466, {shown, m_table}));
}

void DemoWindow::updateActions()
{
    const std::shared_ptr<CSearchFilter> s = search();
    const bool open = s && s->FilterColumns();
    const bool exists = open && s->Exists();
    for (QAction* action : {m_filter, m_configure, m_check})
        action->setEnabled(open);
    m_clearFilter->setEnabled(m_terms != nullptr);
    m_editPicklists->setEnabled(open && s->FilterColumns()->HasPicklists());
    m_populate->setEnabled(exists);
    m_viewData->setEnabled(exists && m_entry.id != 0);
    m_import->setEnabled(exists && m_entry.id != 0);
}

// ---- editing through the entry control ---------------------------------------------------------------

void DemoWindow::startEditing(ISearchBaseEntry* entry, bool* accepted)
{
    *accepted = entry != nullptr && entry->Id() != 0;
    // What goes wrong in the session is told when it is saved.
    Diagnostics::instance().clearReports();
}

void DemoWindow::saveFromControl()
{
    m_control->SaveData();
    tellFailure(GetResourceText(9488, {QString::number(m_entry.id)}));
}

// ---- the menus' operations ---------------------------------------------------------------------------

void DemoWindow::filter()
{
    const std::shared_ptr<CSearchFilter> s = search();
    if (!s)
        return;
    Diagnostics::instance().clearReports();
    const auto owner = MakeFormInfo(this);
    // Null after Cancel; a filter without terms clears the one shown.
    if (const std::shared_ptr<CFilterTerms> terms = s->Filter(nullptr, qEnvironmentVariable("USER"), owner.get(), fltrDBMode_Normal))
        applyFilter(terms->HasTerms() ? terms : nullptr);
    tellFailure(GetResourceText(9489, {m_table}));
}

void DemoWindow::clearFilter()
{
    applyFilter(nullptr);
}

void DemoWindow::applyFilter(std::shared_ptr<CFilterTerms> terms)
{
    m_terms = std::move(terms);
    m_model->setFilter(m_terms ? m_terms->SQLString() : QString());
    reload();
    updateActions();
}

void DemoWindow::configureColumns()
{
    if (const std::shared_ptr<CSearchFilter> s = search()) {
        Diagnostics::instance().clearReports();
        s->Configure(MakeFormInfo(this).get());
        tellFailure(GetResourceText(9489, {m_table}));
        // The control builds its rows from the columns as they now stand.
        openSearch();
    }
}

void DemoWindow::editPicklists()
{
    const std::shared_ptr<CSearchFilter> s = search();
    if (!s || !s->FilterColumns())
        return;
    Diagnostics::instance().clearReports();
    s->FilterColumns()->EditPicklists(MakeFormInfo(this).get());
    tellFailure(GetResourceText(9489, {m_table}));
    openSearch();
}

void DemoWindow::viewData()
{
    if (const std::shared_ptr<CSearchFilter> s = search(); s && m_entry.id != 0) {
        Diagnostics::instance().clearReports();
        s->View(m_record.get(), &m_entry, MakeFormInfo(this).get());
        tellFailure(GetResourceText(9489, {m_table}));
    }
}

DemoWindow::Reply DemoWindow::askingUser(int question, int yes, const std::function<void()>& work)
{
    Reply reply = Reply::NotAsked;
    m_db->setQueryConversion([&](const QString&, const QString&, int) {
        // The library may ask again within one run; the user is asked once.
        if (reply == Reply::NotAsked)
            reply = UiServices::current().AskYesNoCancel(title(), GetResourceText(question, {m_table}), Answer::Yes) == Answer::Yes
                        ? Reply::Yes
                        : Reply::No;
        return reply == Reply::Yes ? yes : kEndCheck;
    });
    work();
    m_db->setQueryConversion(nullptr);
    return reply;
}

void DemoWindow::checkAndRepair()
{
    const std::shared_ptr<CSearchFilter> s = search();
    if (!s)
        return;
    const auto owner = MakeFormInfo(this);
    Diagnostics::instance().clearReports();
    // The tables are judged as they stand now, whoever changed them since they were read.
    m_catalog->Refresh();
    // A look that asks the user at the first difference; the repair itself is the check's mode 1,
    // which mends the fields of the search tables too.
    const Reply reply = askingUser(9473, kEndCheck, [&] {
        RunWithProgress([&](IProgress& progress) { s->CheckTable(&progress, 0, true); }, owner.get());
    });
    if (tellFailure(GetResourceText(9476, {m_table})))
        return;
    if (reply == Reply::NotAsked) {
        tell(9474);
        return;
    }
    if (reply == Reply::No)
        return;
    int result = 0;
    RunWithProgress([&](IProgress& progress) { result = s->CheckTable(&progress, 1, true); }, owner.get());
    if (Diagnostics::instance().ConversionFailed() || result != 0) {
        if (!tellFailure(GetResourceText(9476, {m_table})))
            warn(GetResourceText(9476, {m_table}));
    } else {
        tell(9475);
    }
    openSearch();
}

void DemoWindow::populate()
{
    const std::shared_ptr<CSearchFilter> s = search();
    if (!s || !s->Exists())
        return;
    const auto owner = MakeFormInfo(this);
    Diagnostics::instance().clearReports();
    int result = 0;
    const Reply reply = askingUser(9477, 0, [&] {
        result = s->FilterColumns()->StartProcessDataReportProgress(owner.get(), true, 0, QDateTime::currentDateTime());
    });
    if (!tellFailure(GetResourceText(9480, {m_table}))) {
        if (reply == Reply::NotAsked)
            tell(9478);
        else if (reply == Reply::Yes && result == 0)
            tell(9479);
    }
    display(m_entry.id);
}

void DemoWindow::importFromFile()
{
    const QString path = QFileDialog::getOpenFileName(this, GetResourceText(9493), {}, GetResourceText(9486));
    if (!path.isEmpty())
        importDataBlock(path);
}

void DemoWindow::importDataBlock(const QString& path)
{
    const std::shared_ptr<CSearchFilter> s = search();
    if (!s || !s->Exists() || m_entry.id == 0)
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        warn(GetResourceText(9482, {path, file.errorString()}));
        return;
    }
    Diagnostics::instance().clearReports();
    const QFileInfo info(path);
    const DataBlockImport result = s->AnalyzeDataBlock(info.lastModified(), info.absoluteFilePath(), &m_entry, file.readAll());
    if (result.imported && !result.written) {
        if (!tellFailure(GetResourceText(9485, {QString::number(m_entry.id)})))
            warn(GetResourceText(9485, {QString::number(m_entry.id)}));
    } else if (!result.imported && result.errors == 0) {
        tell(9481, {path});
    }
    if (result.errors > 0 && !result.logFile.isEmpty())
        showErrorLog(this, path, result);
    display(m_entry.id);
}

void DemoWindow::about()
{
    OpenAboutBox(this);
}

void DemoWindow::exit()
{
    close();
}

// ---- telling the user ---------------------------------------------------------------------------------

bool DemoWindow::tellFailure(const QString& what)
{
    Diagnostics& diagnostics = Diagnostics::instance();
    const std::optional<ErrorReport> last = diagnostics.lastError();
    if (diagnostics.reportCount() == 0 || !last)
        return false;
    diagnostics.clearReports();
    warn(what + QStringLiteral("\n\n") + last->text);
    return true;
}

void DemoWindow::tell(int text, const QStringList& arguments)
{
    UiServices::current().ShowMessage(MessageKind::Information, title(), GetResourceText(text, arguments.isEmpty() ? QStringList{m_table} : arguments));
}

void DemoWindow::warn(const QString& text)
{
    UiServices::current().ShowMessage(MessageKind::Warning, title(), text);
}

} // namespace searchdata::demo
