#include "cli/CliTestSupport.h"

#include <QAtomicInt>
#include <QJsonDocument>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

namespace searchdata::test {

QJsonObject CliRun::json() const
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(out.toUtf8(), &error);
    EXPECT_TRUE(doc.isObject()) << "no JSON object: " << qPrintable(error.errorString()) << '\n' << *this;
    return doc.object();
}

std::ostream& operator<<(std::ostream& os, const CliRun& run)
{
    return os << "exit code " << run.exitCode << "\n--- stdout:\n" << qPrintable(run.out) << "--- stderr:\n" << qPrintable(run.err);
}

void CliTest::SetUp()
{
    ASSERT_TRUE(dir.isValid());
    database = dir.filePath("demo.sqlite");
    profile = dir.filePath("profile.ini");
    const CliRun made = runRaw({"--db", database, "--quiet", "demo", "init", "--records", QString::number(records)});
    ASSERT_EQ(made.exitCode, 0) << made;
}

QString rawDatabaseText(const QString& messages)
{
    static const char* const marks[] = {
        "Unable to ", "QPSQL", "QSQLITE", "[SELECT", "[INSERT", "[UPDATE", "[DELETE", "[CREATE", "[ALTER", "[DROP", "[BEGIN",
        "[COMMIT", "[SAVEPOINT", "ERROR:  ", "FATAL:  ", "LINE 1:", "constraint failed", "duplicate key value", "no such table",
        "no such column", "database is locked", "syntax error", "does not exist",
    };
    for (const char* mark : marks)
        if (messages.contains(QLatin1String(mark)))
            return QLatin1String(mark);
    return {};
}

std::unique_ptr<QProcess> CliProgram::start(const QStringList& args, const QStringList& wrapper) const
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_CONFIG_HOME", m_folder + "/config");
    env.insert("LC_ALL", "C.UTF-8");
    for (const QString& setting : m_environment)
        env.insert(setting.section('=', 0, 0), setting.section('=', 1));
    process->setProcessEnvironment(env);
    process->setWorkingDirectory(m_folder);
    if (wrapper.isEmpty())
        process->start(SEARCHDATA_CLI, args);
    else
        process->start(wrapper.first(), wrapper.mid(1) + QStringList{SEARCHDATA_CLI} + args);
    return process;
}

CliRun CliProgram::finish(QProcess& process)
{
    CliRun run;
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(120000)) {
        ADD_FAILURE() << "the program did not finish: " << qPrintable(process.errorString());
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    run.crashed = process.exitStatus() == QProcess::CrashExit || run.err.contains("Sanitizer") || run.err.contains("runtime error:");
    return run;
}

CliRun CliTest::runRaw(const QStringList& args) const
{
    return CliProgram(dir.path()).run(args);
}

std::unique_ptr<QProcess> CliTest::start(const QStringList& args, const QStringList& environment) const
{
    auto process = CliProgram(dir.path(), environment).start(QStringList{"--db", database, "--profile", profile, "--table", "Files"} + args);
    EXPECT_TRUE(process->waitForStarted()) << qPrintable(process->errorString());
    return process;
}

CliRun CliTest::run(const QStringList& args) const
{
    return runOn("Files", args);
}

CliRun CliTest::runOn(const QString& table, const QStringList& args) const
{
    return runRaw(QStringList{"--db", database, "--profile", profile, "--table", table, "--quiet"} + args);
}

namespace {

/// A connection of the test's own, closed again at the end of the scope.
class OwnConnection {
public:
    explicit OwnConnection(const QString& path)
    {
        static QAtomicInt counter;
        m_name = QStringLiteral("cli-test-%1").arg(counter.fetchAndAddRelaxed(1));
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", m_name);
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open()) << qPrintable(db.lastError().text());
    }
    ~OwnConnection() { QSqlDatabase::removeDatabase(m_name); }
    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
    QString m_name;
};

} // namespace

QString CliTest::snapshot(const QString& path) const
{
    QStringList lines;
    {
        OwnConnection c(path.isEmpty() ? database : path);
        QSqlQuery tables(c.db());
        EXPECT_TRUE(tables.exec("SELECT name, sql FROM sqlite_master ORDER BY name")) << qPrintable(tables.lastError().text());
        QStringList names;
        while (tables.next()) {
            lines << tables.value(1).toString();
            if (!tables.value(1).toString().startsWith("CREATE TABLE"))
                continue;
            names << tables.value(0).toString();
        }
        for (const QString& name : names) {
            QSqlQuery rows(c.db());
            EXPECT_TRUE(rows.exec("SELECT * FROM [" + name + "]")) << qPrintable(rows.lastError().text());
            QStringList content;
            while (rows.next()) {
                QStringList fields;
                for (int i = 0; i < rows.record().count(); ++i)
                    fields << rows.value(i).toString();
                content << fields.join('|');
            }
            content.sort();
            lines << name + ":" << content;
        }
    }
    return lines.join('\n');
}

void CliTest::exec(const QString& sql, const QString& path) const
{
    OwnConnection c(path.isEmpty() ? database : path);
    QSqlQuery q(c.db());
    EXPECT_TRUE(q.exec(sql)) << qPrintable(q.lastError().text()) << "\n  in: " << qPrintable(sql);
}

QVariant CliTest::scalar(const QString& sql, const QString& path) const
{
    OwnConnection c(path.isEmpty() ? database : path);
    QSqlQuery q(c.db());
    if (!q.exec(sql) || !q.next()) {
        ADD_FAILURE() << qPrintable(q.lastError().text()) << "\n  in: " << qPrintable(sql);
        return {};
    }
    return q.value(0);
}

} // namespace searchdata::test
