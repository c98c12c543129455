#pragma once

#include "searchdata/Enums.h"
#include "searchdata/ISearchBaseEntry.h"

#include <QMainWindow>
#include <functional>
#include <memory>

class QAction;
class QActionGroup;
class QDockWidget;
class QLabel;
class QSqlTableModel;
class QTableView;

namespace searchdata {

class CFilterTerms;
class CSearchFilter;
class Catalog;
class DatabaseHandler;
class IProfile;
class IProgress;
class Recordset;
class UKVOSearch;

namespace demo {

/// One record of the shown base table, by its key.
class DemoRecord : public ISearchBaseEntry {
public:
    qint32 Id() const override { return id; }
    qint32 id = 0;
};

/// The demo's main window: a base table of the database in a table view, the entry control docked
/// beside it on the current record, and the library's operations in menus and a tool bar. It uses
/// the library as any host does, through its public headers alone.
class DemoWindow : public QMainWindow {
    Q_OBJECT
public:
    /// A window over the open database `db` with its `catalog`; filters are kept in `profile`.
    /// `tables` are the base tables the user may switch between; the first is shown.
    DemoWindow(std::shared_ptr<DatabaseHandler> db, std::shared_ptr<Catalog> catalog, std::shared_ptr<IProfile> profile,
               const QStringList& tables, QWidget* parent = nullptr);
    ~DemoWindow() override;

    /// Shows the base table `table`: its records, and the entry control opened on its search.
    void showTable(const QString& table);
    QString tableName() const { return m_table; }
    /// Imports the data block of the file `path` into the current record; an error log, when the
    /// import wrote one, is shown.
    void importDataBlock(const QString& path);
    /// Shows the records that `terms` select (null: every record), as after the filter dialog.
    void applyFilter(std::shared_ptr<CFilterTerms> terms);
    /// The key of the record the entry control shows; 0 for none.
    qint32 currentId() const { return m_entry.id; }

    QSqlTableModel* model() const { return m_model; }
    UKVOSearch* entryControl() const { return m_control; }
    const std::shared_ptr<DatabaseHandler>& database() const { return m_db; }

private:
    void makeActions(const QStringList& tables);
    void makeMenusAndToolBar();
    QAction* makeAction(const char* name, const QString& text, void (DemoWindow::*slot)());

    void filter();
    void clearFilter();
    void configureColumns();
    void editPicklists();
    void viewData();
    void checkAndRepair();
    void populate();
    void importFromFile();
    void about();
    void exit();

    /// Opens the entry control on the shown table again, as after a change of its columns.
    void openSearch();
    std::shared_ptr<CSearchFilter> search() const;
    /// Reads the table's records under the present filter, keeping the shown record where it stays.
    void reload();
    void currentRowChanged(int row);
    /// Points the entry control at `id` (0: no record).
    void display(qint32 id);
    void updateStatus();
    void updateActions();
    void startEditing(ISearchBaseEntry* entry, bool* accepted);
    void saveFromControl();

    enum class Reply { NotAsked, Yes, No };
    /// While `work` runs, the library's questions about the search tables of the shown table go to
    /// the user as the text `question`, once: Yes gives the library `yes`, anything else ends the
    /// check. Tells what the user replied.
    Reply askingUser(int question, int yes, const std::function<void()>& work);

    /// Tells the user, when the library reported an error since its reports were last cleared, what
    /// failed (`what`) and why; true when it did.
    bool tellFailure(const QString& what);
    /// An information by text number; its arguments are the shown table's name unless given.
    void tell(int text, const QStringList& arguments = {});
    void warn(const QString& text);

    std::shared_ptr<DatabaseHandler> m_db;
    std::shared_ptr<Catalog> m_catalog;
    std::shared_ptr<IProfile> m_profile;
    QString m_table;
    QString m_key;
    std::shared_ptr<CFilterTerms> m_terms;
    // What the entry control shows; both stay alive while shown.
    DemoRecord m_entry;
    std::unique_ptr<Recordset> m_record;
    bool m_returning = false; // going back to the record being edited

    QSqlTableModel* m_model = nullptr;
    QTableView* m_view = nullptr;
    UKVOSearch* m_control = nullptr;
    QDockWidget* m_dock = nullptr;
    QLabel* m_status = nullptr;
    QActionGroup* m_tables = nullptr;
    QAction* m_filter = nullptr;
    QAction* m_clearFilter = nullptr;
    QAction* m_viewData = nullptr;
    QAction* m_editPicklists = nullptr;
    QAction* m_configure = nullptr;
    QAction* m_check = nullptr;
    QAction* m_populate = nullptr;
    QAction* m_import = nullptr;
    QAction* m_about = nullptr;
    QAction* m_exit = nullptr;
};

} // namespace demo
} // namespace searchdata
