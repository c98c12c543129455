#pragma once

// What a command works on: the database, its catalog, the user's profile, and the search of one base
// table, opened the way a host opens it.

#include "searchdata/CSearchFilter.h"
#include "searchdata/Catalog.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/ISearchBaseTable.h"
#include "searchdata/NamedBaseTable.h"
#include "searchdata/Profile.h"

#include <memory>

namespace searchdata::cli {

class Invocation;

/// One record of a base table, named by its key.
class RecordEntry : public ISearchBaseEntry {
public:
    explicit RecordEntry(qint32 id) : m_id(id) {}
    qint32 Id() const override { return m_id; }

private:
    qint32 m_id;
};

class Session {
public:
    /// Opens the database of --db. An SQLite file must exist unless `mayCreate`. Fails when the location
    /// is malformed, cannot be opened, or is no database.
    explicit Session(const Invocation& invocation, bool mayCreate = false);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    DatabaseHandler& db() const { return *m_db; }
    const std::shared_ptr<DatabaseHandler>& handler() const { return m_db; }
    const std::shared_ptr<Catalog>& catalog() const { return m_catalog; }
    const std::shared_ptr<IniProfile>& profile() const { return m_profile; }
    /// Fails with `what` when the profile could not be written (a folder that cannot be made, a file
    /// without the permission).
    void checkProfileWritten(const QString& what) const;
    /// The location of --db as messages show it, without a password.
    QString location() const { return m_location; }

    /// Opens the search of the base table of --table (or `table`); fails with a clear message when the
    /// table is missing or has no single-column primary key.
    void openSearch(const QString& table = {});
    const std::shared_ptr<CSearchFilter>& search() const { return m_search; }
    CFilterColumns& columns() const { return *m_search->FilterColumns(); }
    const std::shared_ptr<CFilterColumns>& columnsPtr() const { return m_search->FilterColumns(); }
    QString tableName() const { return m_table ? m_table->name : QString(); }
    const CatalogTablePtr& baseTable() const { return m_table; }
    QString keyName() const { return m_key; }

    /// The column named (or captioned) `name`; fails naming the columns there are.
    std::shared_ptr<CFilterColumn> column(const QString& name) const;
    /// The record of key `idText` of the base table; fails when it is no key or no record has it.
    RecordEntry record(const QString& idText) const;
    /// The key values of the base table, in order.
    QList<qint32> recordIds() const;

    /// The base tables that have search columns, from the definition table; empty when it is missing.
    QStringList tablesWithColumns() const;

private:
    QString m_location;
    QString m_connectionName;
    std::shared_ptr<DatabaseHandler> m_db;
    std::shared_ptr<Catalog> m_catalog;
    std::shared_ptr<IniProfile> m_profile;
    std::shared_ptr<CSearchFilter> m_search;
    CatalogTablePtr m_table;
    QString m_key;
    const Invocation& m_invocation;
};

} // namespace searchdata::cli
