#include "support/TestDatabase.h"

#include "searchdata/Diagnostics.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QFile>
#include <QUuid>

namespace searchdata::test {

std::string dbKindName(const ::testing::TestParamInfo<DbKind>& info)
{
    return info.param == DbKind::SQLite ? "SQLite" : "PostgreSQL";
}

QString postgresServerUrl(QString* error)
{
    const QByteArray stateDir = qEnvironmentVariableIsSet("SEARCHDATA_PG_STATE")
                                    ? qgetenv("SEARCHDATA_PG_STATE")
                                    : QByteArray(SEARCHDATA_PG_STATE_DIR);
    QFile file(QString::fromLocal8Bit(stateDir) + QStringLiteral("/pg.conn"));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("no PostgreSQL test cluster is running (%1 missing): run the tests through ctest, "
                                "which starts one").arg(file.fileName());
        return {};
    }
    const QStringList parts = QString::fromUtf8(file.readAll()).simplified().split(QLatin1Char(' '));
    if (parts.size() != 3) {
        *error = QStringLiteral("malformed %1").arg(file.fileName());
        return {};
    }
    return QStringLiteral("postgresql://%1@%2:%3/").arg(parts[2], parts[0], parts[1]);
}

TestDatabase::TestDatabase(DbKind kind) : m_kind(kind)
{
    if (kind == DbKind::SQLite) {
        m_location = m_dir.filePath(QStringLiteral("test.sqlite"));
    } else {
        const QString server = postgresServerUrl(&m_error);
        if (server.isEmpty())
            return;
        m_pgDatabase = QStringLiteral("t_") + QUuid::createUuid().toString(QUuid::Id128).left(16);
        auto admin = DatabaseHandler::open(server + QStringLiteral("postgres"));
        if (!admin) {
            m_error = admin.error();
            return;
        }
        if (!admin.value()->ExecuteSql(QStringLiteral("CREATE DATABASE ") + m_pgDatabase)) {
            m_error = admin.value()->lastError();
            return;
        }
        m_pgAdmin = server + QStringLiteral("postgres");
        m_location = server + m_pgDatabase;
    }
    auto opened = DatabaseHandler::open(m_location);
    if (!opened) {
        m_error = opened.error();
        return;
    }
    m_handler = opened.value();
}

TestDatabase::~TestDatabase()
{
    m_handler.reset();
    if (!m_pgDatabase.isEmpty() && !m_pgAdmin.isEmpty()) {
        auto admin = DatabaseHandler::open(m_pgAdmin);
        if (admin)
            admin.value()->ExecuteSql(QStringLiteral("DROP DATABASE IF EXISTS ") + m_pgDatabase + QStringLiteral(" WITH (FORCE)"));
    }
}

std::shared_ptr<DatabaseHandler> TestDatabase::openAnotherConnection() const
{
    auto opened = DatabaseHandler::open(m_location);
    return opened ? opened.value() : nullptr;
}

QString TestDatabase::exec(const QString& sql) const
{
    QSqlQuery q(m_handler->database());
    if (q.exec(sql))
        return {};
    const QString text = q.lastError().text();
    return text.isEmpty() ? QStringLiteral("statement failed") : text;
}

QVariant TestDatabase::scalar(const QString& sql) const
{
    QSqlQuery q(m_handler->database());
    if (!q.exec(sql) || !q.next())
        return {};
    return q.value(0);
}

void DatabaseTest::SetUp()
{
    m_db = std::make_unique<TestDatabase>(GetParam());
    ASSERT_TRUE(m_db->ok()) << qPrintable(m_db->error());
    Diagnostics::instance().clearReports();
}

void DatabaseTest::TearDown()
{
    m_db.reset();
}

void DatabaseTest::execAll(std::initializer_list<QString> statements)
{
    for (const QString& sql : statements)
        SD_ASSERT_SQL(*m_db, sql);
}

} // namespace searchdata::test
