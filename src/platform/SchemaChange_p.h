#pragma once

#include "searchdata/DatabaseHandler.h"

namespace searchdata::detail {

/// The bracket of one schema change: a transaction, or a savepoint inside the caller's, that is undone
/// unless committed. On SQLite, a change that may rebuild tables and begins outside any transaction
/// turns foreign key enforcement off for its length, as SQLite's own advice for table rebuilds has it:
/// dropping a table with enforcement on deletes the rows that refer to it through cascades. The
/// setting can only change outside a transaction, so a change inside the caller's runs with it on.
class SchemaChange {
public:
    /// Begins the bracket; throws when the database refuses.
    SchemaChange(DatabaseHandler& db, bool mayRebuild);
    ~SchemaChange();
    SchemaChange(const SchemaChange&) = delete;
    SchemaChange& operator=(const SchemaChange&) = delete;

    /// Makes the change stand; throws when the commit fails.
    void commit();
    /// True while foreign keys are not enforced on this connection.
    bool foreignKeysOff() const { return m_foreignKeysOff; }
    /// True when this change turned enforcement off, and turns it on again at its end.
    bool suspendsForeignKeys() const { return m_restoreForeignKeys; }

private:
    DatabaseHandler& m_db;
    TransactionState m_state;
    bool m_restoreForeignKeys = false;
    bool m_foreignKeysOff = false;
};

/// Runs a statement of a schema change; throws with the database's message when it fails.
void execSchemaSql(DatabaseHandler& db, const QString& sql);
/// The first field of the first row of a query; throws when the query fails.
QVariant schemaScalar(DatabaseHandler& db, const QString& sql);

} // namespace searchdata::detail
