#include "searchdata/DatabaseHandler.h"

#include "platform/Logging_p.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"

#include <QAtomicInt>
#include <QElapsedTimer>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QThread>
#include <QUrl>
#include <optional>

namespace searchdata {

namespace {

constexpr auto kStatementSavepoint = "sd_statement";

QString newConnectionName()
{
    static QAtomicInt counter;
    return QStringLiteral("searchdata-%1").arg(counter.fetchAndAddRelaxed(1) + 1);
}

int kindOfDriver(const QString& driver)
{
    return driver.startsWith(QLatin1String("QPSQL")) ? dbkPostgreSQL : dbkSQLite;
}

// Dates are bound as the same text that date literals use: drivers would otherwise store another
// text form (SQLite) or move the value through UTC (PostgreSQL).
QVariant bindable(const QVariant& v)
{
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return v;
}

bool isSchemaChange(const QString& sql)
{
    const QStringView head = QStringView(sql).trimmed().left(6);
    return head.startsWith(u"CREATE", Qt::CaseInsensitive) || head.startsWith(u"ALTER", Qt::CaseInsensitive)
        || head.startsWith(u"DROP", Qt::CaseInsensitive);
}

QString savepointName(int level)
{
    return QStringLiteral("sd_level_%1").arg(level);
}

} // namespace

DatabaseHandler::DatabaseHandler(const QString& connectionName)
    : m_connectionName(connectionName),
      m_dialect(&Dialect::forKind(kindOfDriver(QSqlDatabase::database(connectionName, false).driverName())))
{
    QSqlDatabase db = database();
    if (!db.isOpen())
        return;
    if (DatabaseKind() == dbkSQLite) {
        // Cascades and picklist relations need enforcement, which SQLite leaves off per connection.
        execPlain(QStringLiteral("PRAGMA foreign_keys = ON"));
        // A short wait inside SQLite; longer waits go through the locked message and its retries.
        execPlain(QStringLiteral("PRAGMA busy_timeout = 200"));
    } else {
        execPlain(QStringLiteral("SET lock_timeout = 500"));
        // SqlQuote doubles quotes and leaves backslashes alone, which holds only with this setting on.
        if (!execPlain(QStringLiteral("SET standard_conforming_strings = on"))) {
            m_refusal = GetResourceText(9203, {ConnectionString()});
            reportFailure(QStringLiteral("SET standard_conforming_strings = on"), m_refusal);
        }
    }
}

DatabaseHandler::~DatabaseHandler()
{
    m_prepared.clear(); // prepared statements go before their connection
    if (!m_ownsConnection)
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

Result<std::shared_ptr<DatabaseHandler>> DatabaseHandler::open(const QString& location)
{
    using R = Result<std::shared_ptr<DatabaseHandler>>;
    const QString name = newConnectionName();
    const bool postgres = location.startsWith(QLatin1String("postgresql://")) || location.startsWith(QLatin1String("postgres://"));
    QString error;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(postgres ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE"), name);
        if (postgres) {
            const QUrl url(location);
            db.setHostName(url.host().isEmpty() ? QStringLiteral("localhost") : url.host());
            db.setPort(url.port(5432));
            db.setUserName(url.userName());
            db.setPassword(url.password());
            db.setDatabaseName(url.path().mid(1));
        } else {
            db.setDatabaseName(location);
            db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=200"));
        }
        if (!db.isValid())
            error = QStringLiteral("the database driver for %1 is not available").arg(postgres ? "PostgreSQL" : "SQLite");
        else if (!db.open())
            error = db.lastError().text();
    }
    if (!error.isEmpty()) {
        QSqlDatabase::removeDatabase(name);
        // A message never carries the password.
        const QString shown = postgres ? QUrl(location).toString(QUrl::RemovePassword) : location;
        Diagnostics::instance().report({0, QStringLiteral("cannot open %1: %2").arg(shown, error), QStringLiteral("open"),
                                        QStringLiteral("DatabaseHandler"), __LINE__, {}});
        return R::failure(QStringLiteral("cannot open %1: %2").arg(shown, error));
    }
    auto handler = std::make_shared<DatabaseHandler>(name);
    handler->m_ownsConnection = true;
    if (!handler->m_refusal.isEmpty())
        return R::failure(handler->m_refusal);
    return handler;
}

QSqlDatabase DatabaseHandler::database() const
{
    // A refused connection takes no statement.
    return m_refusal.isEmpty() ? QSqlDatabase::database(m_connectionName, false) : QSqlDatabase();
}

QString DatabaseHandler::ConnectionString() const
{
    const QSqlDatabase db = database();
    if (DatabaseKind() == dbkPostgreSQL)
        return QStringLiteral("%1://%2:%3/%4").arg(db.driverName(), db.hostName()).arg(db.port()).arg(db.databaseName());
    return db.driverName() + QStringLiteral("://") + db.databaseName();
}

int DatabaseHandler::QueryConversion(const QString& connectionString, const QString& table, int flag)
{
    // Without a host that answers, a check goes on: the caller's mode decides whether anything changes.
    return m_queryConversion ? m_queryConversion(connectionString, table, flag) : 0;
}

void DatabaseHandler::reportFailure(const QString& sql, const QString& error)
{
    m_lastError = error;
    Diagnostics::instance().report({0, QStringLiteral("%1 [%2]").arg(error, sql), QStringLiteral("ExecuteSql"),
                                    QStringLiteral("DatabaseHandler"), 0, {}});
}

bool DatabaseHandler::execPlain(const QString& sql)
{
    QSqlQuery q(database());
    if (q.exec(sql))
        return true;
    reportFailure(sql, q.lastError().text());
    return false;
}

bool DatabaseHandler::runWithRetry(const QString& sql, const QVariantList* values, const IDebugLockedMessage* lockedMessage,
                                   const std::function<void(QSqlQuery&)>& onSuccess, bool forwardOnly)
{
    QSqlDatabase db = database();
    if (!db.isOpen()) {
        reportFailure(sql, m_refusal.isEmpty() ? QStringLiteral("the database is not open") : m_refusal);
        return false;
    }
    // On PostgreSQL a failed statement spoils the whole transaction; a savepoint before each
    // statement keeps a failure (or a lock to wait for) to that statement, as on SQLite. It stays open
    // after a success: releasing it on its own would cost a round trip for every statement.
    const bool statementSavepoint = DatabaseKind() == dbkPostgreSQL && m_level > 0 && !m_unguarded;
    if (m_unguarded && m_unguardedFailed)
        return false; // the transaction is spoilt; it runs again

    if (!values && isSchemaChange(sql))
        m_prepared.clear(); // a prepared statement may depend on the shape of a table
    UiServices& ui = UiServices::current();
    QElapsedTimer waited;
    waited.start();
    bool shown = false;
    for (;;) {
        if (statementSavepoint) {
            bool& open = statementSavepointOpen(m_level);
            // A plain query takes both statements in one round trip.
            execPlain((open ? QStringLiteral("RELEASE SAVEPOINT ") + QLatin1String(kStatementSavepoint) + QStringLiteral("; ") : QString())
                      + QStringLiteral("SAVEPOINT ") + QLatin1String(kStatementSavepoint));
            open = true;
        }
        QSqlError error;
        {
            std::shared_ptr<QSqlQuery> cached = values ? preparedQuery(sql) : nullptr;
            std::optional<QSqlQuery> plain;
            QSqlQuery& q = cached ? *cached : plain.emplace(db);
            bool ok;
            if (values && cached) {
                for (int i = 0; i < values->size(); ++i)
                    q.bindValue(i, bindable(values->at(i)));
                ok = q.exec();
            } else if (values) {
                ok = false; // the statement could not be prepared
                error = m_preparedError;
            } else {
                q.setForwardOnly(forwardOnly);
                ok = q.exec(sql);
            }
            if (ok) {
                onSuccess(q);
                q.finish();
                if (shown)
                    ui.ClearLockedMessage();
                return true;
            }
            if (!values || cached)
                error = q.lastError();
            q.finish();
            // A statement that failed is prepared again next time: the table it names may have
            // changed under it.
            if (cached)
                m_prepared.remove(sql);
        }
        if (m_unguarded) {
            m_unguardedFailed = true;
            m_lastError = error.text();
            return false;
        }
        if (statementSavepoint)
            execPlain(QStringLiteral("ROLLBACK TO SAVEPOINT ") + QLatin1String(kStatementSavepoint));
        if (!m_dialect->isLockError(error)) {
            if (shown)
                ui.ClearLockedMessage();
            reportFailure(sql, error.text());
            return false;
        }
        if (!shown) {
            const CDebugLockedMessage standard = MakeLockedMessage();
            ui.ShowLockedMessage(lockedMessage ? *lockedMessage : standard);
            shown = true;
            qCInfo(lcDatabase).noquote() << "waiting for a lock:" << sql;
        }
        if (!ui.KeepWaitingForLock(std::chrono::milliseconds(waited.elapsed()))) {
            ui.ClearLockedMessage();
            reportFailure(sql, QStringLiteral("gave up waiting for a lock after %1 ms: %2").arg(waited.elapsed()).arg(error.text()));
            return false;
        }
        QThread::msleep(50);
    }
}

const QVariantList* DatabaseHandler::transactionControlValues() const
{
    // SQLite parses a statement as it prepares it, some 10,000 instructions even for a COMMIT; kept
    // prepared, the two of every transaction cost nothing of that. PostgreSQL cannot prepare them.
    static const QVariantList none;
    return DatabaseKind() == dbkSQLite ? &none : nullptr;
}

bool& DatabaseHandler::statementSavepointOpen(int level)
{
    if (m_statementSavepointOpen.size() <= level)
        m_statementSavepointOpen.resize(level + 1, false);
    return m_statementSavepointOpen[level];
}

std::shared_ptr<QSqlQuery> DatabaseHandler::preparedQuery(const QString& sql)
{
    if (auto it = m_prepared.constFind(sql); it != m_prepared.constEnd())
        return *it;
    auto q = std::make_shared<QSqlQuery>(database());
    q->setForwardOnly(true);
    if (!q->prepare(sql)) {
        m_preparedError = q->lastError();
        return nullptr;
    }
    if (m_prepared.size() >= 256)
        m_prepared.clear();
    m_prepared.insert(sql, q);
    return q;
}

bool DatabaseHandler::ExecuteSql(const QString& sql, const IDebugLockedMessage* lockedMessage, int* rowsAffected)
{
    return runWithRetry(sql, nullptr, lockedMessage, [rowsAffected](QSqlQuery& q) {
        if (rowsAffected)
            *rowsAffected = q.numRowsAffected();
    });
}

bool DatabaseHandler::ExecuteSql(const QString& sql, const QVariantList& values, const IDebugLockedMessage* lockedMessage, int* rowsAffected)
{
    return runWithRetry(sql, &values, lockedMessage, [rowsAffected](QSqlQuery& q) {
        if (rowsAffected)
            *rowsAffected = q.numRowsAffected();
    });
}

namespace {

std::function<void(QSqlQuery&)> collectRows(std::unique_ptr<Recordset>& out, const QString& source)
{
    return [&out, source](QSqlQuery& q) {
        // Values by position: a QSqlRecord for each row would copy every field's name and type too.
        const QSqlRecord shape = q.record();
        QStringList names;
        for (int i = 0; i < shape.count(); ++i)
            names << shape.fieldName(i);
        QVector<QVariantList> rows;
        while (q.next()) {
            QVariantList row;
            row.reserve(names.size());
            for (int i = 0; i < names.size(); ++i)
                row << q.value(i);
            rows.append(std::move(row));
        }
        out = std::make_unique<Recordset>(std::move(names), std::move(rows), source);
    };
}

} // namespace

std::unique_ptr<Recordset> DatabaseHandler::OpenSqlRecordset(const QString& sql, int, int, const IDebugLockedMessage* lockedMessage)
{
    std::unique_ptr<Recordset> result;
    runWithRetry(sql, nullptr, lockedMessage, collectRows(result, sql));
    return result;
}

std::unique_ptr<Recordset> DatabaseHandler::OpenSqlRecordset(const QString& sql, const QVariantList& values, const IDebugLockedMessage* lockedMessage)
{
    std::unique_ptr<Recordset> result;
    runWithRetry(sql, &values, lockedMessage, collectRows(result, sql));
    return result;
}

std::unique_ptr<Recordset> DatabaseHandler::OpenTableRecordset(const QString& table, int, int, const IDebugLockedMessage* lockedMessage)
{
    if (!tableExists(table))
        return nullptr;
    std::unique_ptr<Recordset> result;
    runWithRetry(QStringLiteral("SELECT * FROM ") + BracketName(table), nullptr, lockedMessage, collectRows(result, table));
    return result;
}

std::unique_ptr<SqlCursor> DatabaseHandler::OpenSqlCursor(const QString& sql, const IDebugLockedMessage* lockedMessage)
{
    // A forward-only result on PostgreSQL arrives row by row and is lost to the next statement on
    // the connection; SQLite steps each statement on its own.
    const bool forwardOnly = DatabaseKind() != dbkPostgreSQL;
    std::unique_ptr<SqlCursor> result;
    runWithRetry(sql, nullptr, lockedMessage, [&result, &sql](QSqlQuery& q) { result = std::make_unique<SqlCursor>(q, sql); },
                 forwardOnly);
    return result;
}

bool DatabaseHandler::tableExists(const QString& table) const
{
    const QStringList tables = database().tables(QSql::Tables);
    if (tables.contains(table))
        return true;
    return tables.contains(table, Qt::CaseInsensitive);
}

bool DatabaseHandler::BeginTableTransaction(TransactionState& state, const IDebugLockedMessage* lockedMessage)
{
    if (state.begun && !state.committed)
        return true; // already open for this caller
    QString sql;
    if (m_level == 0)
        // IMMEDIATE takes the write lock at once, so that a busy database is met here, where it can
        // be waited for, and not in the middle of the work.
        sql = DatabaseKind() == dbkSQLite ? QStringLiteral("BEGIN IMMEDIATE") : QStringLiteral("BEGIN");
    else
        sql = QStringLiteral("SAVEPOINT ") + savepointName(m_level + 1);
    // Transaction control never runs inside a statement savepoint: releasing that would release
    // the savepoint made here too.
    const int level = m_level;
    m_level = 0;
    const bool ok = runWithRetry(sql, transactionControlValues(), lockedMessage, [](QSqlQuery&) {});
    m_level = level;
    if (!ok)
        return false;
    ++m_level;
    statementSavepointOpen(m_level) = false;
    state = TransactionState{true, false, m_level};
    return true;
}

bool DatabaseHandler::RunTransaction(const std::function<bool()>& work, const IDebugLockedMessage* lockedMessage)
{
    const auto run = [&] {
        TableTransaction tx(*this, lockedMessage);
        return tx.begun() && work() && tx.commit();
    };
    if (DatabaseKind() != dbkPostgreSQL || m_level > 0)
        return run();
    Diagnostics& diagnostics = Diagnostics::instance();
    const qsizetype held = diagnostics.holdReports();
    m_unguarded = true;
    m_unguardedFailed = false;
    bool done = false;
    try {
        done = run();
    } catch (...) {
        m_unguarded = false;
        if (!m_unguardedFailed) {
            diagnostics.releaseHeld(held, true);
            throw;
        }
    }
    m_unguarded = false;
    diagnostics.releaseHeld(held, !m_unguardedFailed);
    return m_unguardedFailed ? run() : done;
}

bool DatabaseHandler::CommitTableTransaction(TransactionState& state)
{
    if (!state.begun || state.committed)
        return false;
    if (state.level != m_level) {
        reportFailure(QStringLiteral("COMMIT"), QStringLiteral("transactions committed out of order"));
        return false;
    }
    const QString sql = m_level == 1 ? QStringLiteral("COMMIT") : QStringLiteral("RELEASE SAVEPOINT ") + savepointName(m_level);
    const int level = m_level;
    m_level = 0;
    const bool ok = runWithRetry(sql, transactionControlValues(), nullptr, [](QSqlQuery&) {});
    m_level = level;
    if (!ok)
        return false;
    // The level's statement savepoint went with it.
    statementSavepointOpen(m_level) = false;
    --m_level;
    state.committed = true;
    return true;
}

void DatabaseHandler::EndTableTransaction(TransactionState& state)
{
    if (!state.begun || state.committed) {
        state.begun = false;
        return;
    }
    // Inner brackets left open are undone with this one.
    while (m_level >= state.level && m_level > 0) {
        if (m_level == 1) {
            execPlain(QStringLiteral("ROLLBACK"));
        } else {
            execPlain(QStringLiteral("ROLLBACK TO SAVEPOINT ") + savepointName(m_level));
            execPlain(QStringLiteral("RELEASE SAVEPOINT ") + savepointName(m_level));
        }
        statementSavepointOpen(m_level) = false;
        --m_level;
    }
    state.begun = false;
}

Result<bool> DatabaseHandler::RowExists(const QString& field, const QString& table, const QString& literal)
{
    const QString sql = QStringLiteral("SELECT 1 FROM %1 WHERE %2 = %3 LIMIT 1").arg(BracketName(table), BracketName(field), literal);
    std::unique_ptr<Recordset> rs = OpenSqlRecordset(sql);
    if (!rs)
        return Result<bool>::failure(m_lastError);
    return !rs->EndOfFile();
}

void DatabaseHandler::AddInsertPair(QString& fields, QString& values, const QString& field, const QString& valueSql) const
{
    if (!fields.isEmpty()) {
        fields += QLatin1String(", ");
        values += QLatin1String(", ");
    }
    fields += BracketName(field);
    values += valueSql;
}

void DatabaseHandler::AddSetPair(QString& list, const QString& field, const QString& valueSql) const
{
    if (!list.isEmpty())
        list += QLatin1String(", ");
    list += BracketName(field) + QLatin1String(" = ") + valueSql;
}

} // namespace searchdata
