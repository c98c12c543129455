#include "reliability/ReliabilitySupport.h"

#include <QFile>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QThread>
#include <QUuid>
#include <cstdio>

namespace searchdata::test {

bool longRun()
{
    return qEnvironmentVariable("SEARCHDATA_RELIABILITY") == QLatin1String("long");
}

int trials(int few, int full)
{
    return longRun() ? full : few;
}

std::mt19937 scenarioRandom(const QString& scenario)
{
    const unsigned seed = qEnvironmentVariableIsSet("SEARCHDATA_RELIABILITY_SEED") ? unsigned(qEnvironmentVariableIntValue("SEARCHDATA_RELIABILITY_SEED"))
                                                                                  : 0x5eedu;
    return std::mt19937(seed ^ unsigned(qHash(scenario)));
}

namespace {

QList<Figures>& table()
{
    static QList<Figures> rows;
    return rows;
}

/// Prints the table of figures once every scenario has run.
class FiguresPrinter : public ::testing::Environment {
public:
    void TearDown() override
    {
        if (table().isEmpty())
            return;
        QList<QStringList> lines = {{"scenario", "database", "trials", "passed", "lost", "crashed"}};
        for (const Figures& f : table())
            lines.append({f.scenario, f.database, QString::number(f.trials), QString::number(f.passed), QString::number(f.lost),
                          QString::number(f.crashed)});
        QList<qsizetype> widths(6, 0);
        for (const QStringList& line : lines)
            for (int i = 0; i < 6; ++i)
                widths[i] = std::max(widths[i], line[i].size());
        std::printf("\nreliability figures (%s run)\n", longRun() ? "long" : "short");
        for (const QStringList& line : lines) {
            QString text = line[0].leftJustified(widths[0]) + QStringLiteral("  ") + line[1].leftJustified(widths[1]);
            for (int i = 2; i < 6; ++i)
                text += QStringLiteral("  ") + line[i].rightJustified(widths[i]);
            std::printf("%s\n", qPrintable(text));
        }
        std::fflush(stdout);
    }
};

const auto* const kPrinter = ::testing::AddGlobalTestEnvironment(new FiguresPrinter);

} // namespace

void recordFigures(const Figures& figures)
{
    table().append(figures);
}

Ending endingOf(const CliRun& run)
{
    if (run.crashed)
        return Ending::Crashed;
    if (!rawDatabaseText(run.err).isEmpty())
        return Ending::RawText;
    return run.exitCode == 0 ? Ending::Done : Ending::Refused;
}

bool ended(QProcess& process, int ms)
{
    if (process.state() != QProcess::NotRunning)
        process.waitForFinished(ms);
    return process.state() == QProcess::NotRunning;
}

Databases::Databases(DbKind kind, QString folder) : m_kind(kind), m_folder(std::move(folder))
{
    if (kind == DbKind::SQLite)
        return;
    m_server = postgresServerUrl(&m_error);
    if (m_server.isEmpty())
        return;
    auto admin = DatabaseHandler::open(m_server + QStringLiteral("postgres"));
    if (!admin) {
        m_error = admin.error();
        return;
    }
    m_admin = admin.value();
}

Databases::~Databases()
{
    for (const QString& name : std::as_const(m_made))
        adminExec(QStringLiteral("DROP DATABASE IF EXISTS ") + name + QStringLiteral(" WITH (FORCE)"));
}

QString Databases::pgName(const QString& location) const
{
    return location.mid(m_server.size());
}

bool Databases::adminExec(const QString& sql)
{
    QSqlQuery q(m_admin->database());
    if (q.exec(sql))
        return true;
    m_error = q.lastError().text();
    return false;
}

QString Databases::create()
{
    if (m_kind == DbKind::SQLite)
        return m_folder + QStringLiteral("/db-%1.sqlite").arg(++m_count);
    const QString name = QStringLiteral("r_") + QUuid::createUuid().toString(QUuid::Id128).left(16);
    if (!adminExec(QStringLiteral("CREATE DATABASE ") + name)) {
        ADD_FAILURE() << "cannot make a database: " << qPrintable(m_error);
        return {};
    }
    m_made << name;
    return m_server + name;
}

QString Databases::copy(const QString& location)
{
    if (m_kind == DbKind::SQLite) {
        const QString copied = create();
        EXPECT_TRUE(QFile::copy(location, copied)) << "cannot copy " << qPrintable(location);
        return copied;
    }
    const QString name = QStringLiteral("r_") + QUuid::createUuid().toString(QUuid::Id128).left(16);
    // The server lets a connection of a program that ended go a moment later, and copies no
    // database that is in use.
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (adminExec(QStringLiteral("CREATE DATABASE ") + name + QStringLiteral(" TEMPLATE ") + pgName(location))) {
            m_made << name;
            return m_server + name;
        }
        QThread::msleep(50);
    }
    ADD_FAILURE() << "cannot copy " << qPrintable(location) << ": " << qPrintable(m_error);
    return {};
}

void Databases::drop(const QString& location)
{
    if (m_kind == DbKind::SQLite) {
        QFile::remove(location);
        QFile::remove(location + QStringLiteral("-journal"));
        return;
    }
    const QString name = pgName(location);
    if (adminExec(QStringLiteral("DROP DATABASE IF EXISTS ") + name + QStringLiteral(" WITH (FORCE)")))
        m_made.removeAll(name);
}

Look::Look(const QString& location)
{
    auto opened = DatabaseHandler::open(location);
    EXPECT_TRUE(opened) << qPrintable(opened.error());
    if (!opened)
        return;
    m_db = opened.value();
    // A look waits as long as the work of a program that was killed takes to be undone.
    exec(m_db->DatabaseKind() == dbkSQLite ? QStringLiteral("PRAGMA busy_timeout = 30000") : QStringLiteral("SET lock_timeout = 0"));
}

QString Look::exec(const QString& sql)
{
    QSqlQuery q(m_db->database());
    if (q.exec(sql))
        return {};
    return q.lastError().text() + QStringLiteral(" in: ") + sql;
}

QVariant Look::scalar(const QString& sql)
{
    QSqlQuery q(m_db->database());
    if (!q.exec(sql) || !q.next()) {
        ADD_FAILURE() << qPrintable(q.lastError().text()) << "\n  in: " << qPrintable(sql);
        return {};
    }
    return q.value(0);
}

QString Look::snapshot()
{
    QSqlDatabase db = m_db->database();
    QStringList tables = db.tables(QSql::Tables);
    tables.sort(Qt::CaseInsensitive);
    QStringList lines;
    for (const QString& table : tables) {
        const QSqlRecord fields = db.record(table);
        QStringList names;
        for (int i = 0; i < fields.count(); ++i)
            names << fields.fieldName(i) + QLatin1Char(' ') + QString::fromLatin1(fields.field(i).metaType().name());
        lines << table + QStringLiteral(" (") + names.join(QStringLiteral(", ")) + QLatin1Char(')');
        QSqlQuery rows(db);
        if (!rows.exec(QStringLiteral("SELECT * FROM ") + m_db->BracketName(table))) {
            lines << QStringLiteral("  unreadable: ") + rows.lastError().text();
            continue;
        }
        QStringList content;
        while (rows.next()) {
            QStringList cells;
            for (int i = 0; i < rows.record().count(); ++i)
                cells << (rows.value(i).isNull() ? QStringLiteral("<null>") : rows.value(i).toString());
            content << QStringLiteral("  ") + cells.join(QLatin1Char('|'));
        }
        content.sort();
        lines << content;
    }
    return lines.join(QLatin1Char('\n'));
}

void ReliabilityTest::SetUp()
{
    ASSERT_TRUE(dir.isValid());
    databases = std::make_unique<Databases>(GetParam(), dir.path());
    ASSERT_TRUE(databases->ok()) << qPrintable(databases->error());
    program = std::make_unique<CliProgram>(dir.path());
}

QString ReliabilityTest::databaseName() const
{
    return GetParam() == DbKind::SQLite ? QStringLiteral("SQLite") : QStringLiteral("PostgreSQL");
}

QString ReliabilityTest::demo(int records)
{
    const QString location = databases->create();
    const CliRun made = program->run({"--db", location, "--quiet", "demo", "init", "--records", QString::number(records)});
    EXPECT_EQ(made.exitCode, 0) << made;
    const CliRun tags = sd(location, {"columns", "add", "Tags", "--type", "keyword", "--size", "20"});
    EXPECT_EQ(tags.exitCode, 0) << tags;
    return location;
}

QStringList ReliabilityTest::on(const QString& location, const QStringList& args) const
{
    return QStringList{"--db", location, "--table", "Files", "--quiet", "--profile", dir.filePath("profile.ini")} + args;
}

QString ReliabilityTest::searchField(const QString& location, const QString& field, int id)
{
    Look look(location);
    DatabaseHandler& db = look.db();
    return look
        .scalar(QStringLiteral("SELECT ") + db.BracketName(field) + QStringLiteral(" FROM ") + db.BracketName(QStringLiteral("FilesSearchData"))
                + QStringLiteral(" WHERE ") + db.BracketName(QStringLiteral("Id")) + QStringLiteral(" = ") + QString::number(id))
        .toString();
}

void ReliabilityTest::record(Figures figures) const
{
    figures.database = databaseName();
    recordFigures(figures);
}

} // namespace searchdata::test
