#include "platform/SchemaChange_p.h"

#include "platform/Guard_p.h"
#include "platform/Logging_p.h"

namespace searchdata::detail {

void execSchemaSql(DatabaseHandler& db, const QString& sql)
{
    qCDebug(lcSchema).noquote() << sql;
    if (!db.ExecuteSql(sql))
        fail(QStringLiteral("the database refused a schema change: %1").arg(db.lastError()));
}

QVariant schemaScalar(DatabaseHandler& db, const QString& sql)
{
    std::unique_ptr<Recordset> rs = db.OpenSqlRecordset(sql);
    if (!rs)
        fail(QStringLiteral("the database refused a schema query: %1").arg(db.lastError()));
    const QStringList fields = rs->fieldNames();
    return fields.isEmpty() ? QVariant() : rs->rawField(fields.first());
}

SchemaChange::SchemaChange(DatabaseHandler& db, bool mayRebuild) : m_db(db)
{
    if (db.DatabaseKind() == dbkSQLite && mayRebuild) {
        const bool wasOn = schemaScalar(db, QStringLiteral("PRAGMA foreign_keys")).toInt() != 0;
        if (wasOn && db.transactionLevel() == 0) {
            execSchemaSql(db, QStringLiteral("PRAGMA foreign_keys = OFF"));
            // The pragma does nothing while a transaction is open that the handler does not know of.
            m_foreignKeysOff = schemaScalar(db, QStringLiteral("PRAGMA foreign_keys")).toInt() == 0;
            m_restoreForeignKeys = m_foreignKeysOff;
        } else {
            m_foreignKeysOff = !wasOn;
        }
    }
    if (!m_db.BeginTableTransaction(m_state)) {
        if (m_restoreForeignKeys)
            m_db.ExecuteSql(QStringLiteral("PRAGMA foreign_keys = ON"));
        fail(QStringLiteral("cannot begin a schema change: %1").arg(m_db.lastError()));
    }
}

SchemaChange::~SchemaChange()
{
    m_db.EndTableTransaction(m_state);
    if (m_restoreForeignKeys)
        m_db.ExecuteSql(QStringLiteral("PRAGMA foreign_keys = ON"));
}

void SchemaChange::commit()
{
    if (!m_db.CommitTableTransaction(m_state))
        fail(QStringLiteral("cannot commit a schema change: %1").arg(m_db.lastError()));
}

} // namespace searchdata::detail
