// The program killed (SIGKILL) at random moments of work that changes several tables: the database is
// afterwards wholly as it was or wholly as the work leaves it, and the check finds it in order.

#include "reliability/ReliabilitySupport.h"

#include <QElapsedTimer>
#include <QFile>
#include <functional>
#include <random>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// One kind of work to interrupt: how its database is made, and the command that does the work.
struct Work {
    QString scenario;
    std::function<QString()> prepare; ///< makes the database as it is before the work; gives its location
    QStringList command;
};

class KillNine : public ReliabilityTest {
protected:
    /// Runs `work` once to its end on a copy, then kills it at random moments on fresh copies. Each
    /// time the database must be the one before or the one after, and the check must say of it what it
    /// says of that one.
    void killAtRandomMoments(const Work& work);
};

void KillNine::killAtRandomMoments(const Work& work)
{
    const QString base = work.prepare();
    ASSERT_FALSE(base.isEmpty());
    // A command's first look at a table makes the definition table where there is none, so the state
    // before the work is the one that the check leaves.
    const CliRun checkedBefore = sd(base, {"check"});
    ASSERT_FALSE(checkedBefore.crashed) << checkedBefore;
    const QString before = Look(base).snapshot();

    const QString done = databases->copy(base);
    QElapsedTimer clock;
    clock.start();
    const CliRun finished = sd(done, work.command);
    const qint64 length = clock.elapsed();
    ASSERT_EQ(finished.exitCode, 0) << finished;
    const QString after = Look(done).snapshot();
    ASSERT_NE(after, before) << "the work changed nothing";
    const CliRun checkedAfter = sd(done, {"check"});
    EXPECT_EQ(checkedAfter.exitCode, 0) << "the check after the work ran to its end: " << checkedAfter;
    databases->drop(done);

    Figures figures{work.scenario, {}, trials(3, 60)};
    std::mt19937 random = scenarioRandom(work.scenario);
    std::uniform_int_distribution<qint64> moment(0, length * 6 / 5);
    QString example;
    for (int i = 0; i < figures.trials; ++i) {
        const QString copy = databases->copy(base);
        auto run = startSd(copy, work.command);
        const qint64 at = moment(random);
        bool crashed = false;
        if (ended(*run, int(at))) {
            crashed = CliProgram::finish(*run).crashed;
        } else {
            run->kill();
            run->waitForFinished();
        }
        const QString state = Look(copy).snapshot();
        const bool whole = state == before || state == after;
        const CliRun checked = sd(copy, {"check"});
        const int expected = state == after ? checkedAfter.exitCode : checkedBefore.exitCode;
        crashed = crashed || checked.crashed;
        if (crashed) {
            ++figures.crashed;
        } else if (!whole || checked.exitCode != expected) {
            ++figures.lost;
            if (example.isEmpty())
                example = QStringLiteral("killed after %1 ms: %2; check gave %3 where %4 was due:\n%5\n--- state:\n%6")
                              .arg(at)
                              .arg(whole ? QStringLiteral("whole") : QStringLiteral("half done"))
                              .arg(checked.exitCode)
                              .arg(expected)
                              .arg(checked.out, state);
        } else {
            ++figures.passed;
        }
        databases->drop(copy);
    }
    record(figures);
    EXPECT_EQ(figures.lost, 0) << qPrintable(example);
    EXPECT_EQ(figures.crashed, 0);
    EXPECT_EQ(figures.passed, figures.trials);
}

TEST_P(KillNine, ADefinitionChangeIsWhollyDoneOrNotAtAll)
{
    const Work work{"kill -9 during a definition change", [&] { return demo(); },
                    {"columns", "add", "Grade", "--type", "text", "--size", "10", "--picklist", "--allow-blanks"}};
    killAtRandomMoments(work);
}

TEST_P(KillNine, ADataBlockImportIsWhollyDoneOrNotAtAll)
{
    QFile block(dir.filePath("block.nc"));
    ASSERT_TRUE(block.open(QIODevice::WriteOnly));
    block.write("%\nO5000 (BLOCK)\n(Begin Search Data)\n(Drawing Number: D-500)\n(PartNo: P-500)\n(Customer: Phillips Mfg)\n(Tags: ");
    for (int i = 0; i < 40; ++i)
        block.write(QByteArray(i ? "," : "") + "k" + QByteArray::number(i));
    block.write(")\n(End Search Data)\nM30\n");
    block.close();
    const Work work{"kill -9 during a data block import", [&] { return demo(); }, {"import", "block", block.fileName(), "--record", "5"}};
    killAtRandomMoments(work);
}

TEST_P(KillNine, ARepairIsWhollyDoneOrNotAtAll)
{
    auto damaged = [&] {
        const QString location = demo();
        Look look(location);
        DatabaseHandler& d = look.db();
        const QString data = d.BracketName("FilesSearchData");
        for (const QString& sql : {QStringLiteral("ALTER TABLE ") + data + QStringLiteral(" DROP COLUMN ") + d.BracketName("PartNo"),
                                   QStringLiteral("ALTER TABLE ") + data + QStringLiteral(" ADD COLUMN ") + d.BracketName("Extra") + QStringLiteral(" INTEGER"),
                                   QStringLiteral("DELETE FROM ") + data + QStringLiteral(" WHERE ") + d.BracketName("Id") + QStringLiteral(" IN (3, 4)"),
                                   QStringLiteral("DROP INDEX ") + d.BracketName("IX_FilesSearchKeywordTags")})
            EXPECT_EQ(look.exec(sql), "");
        return location;
    };
    const Work work{"kill -9 during a repair", damaged, {"check", "--repair"}};
    killAtRandomMoments(work);
}

TEST_P(KillNine, AMergeIsWhollyDoneOrNotAtAll)
{
    // The source: a demo database with values and keywords; the target: the same files without search data.
    const QString source = dir.filePath("source.sqlite");
    ASSERT_EQ(program->run({"--db", source, "--quiet", "demo", "init", "--records", "20"}).exitCode, 0);
    ASSERT_EQ(sd(source, {"columns", "add", "Tags", "--type", "keyword"}).exitCode, 0);
    for (int id = 1; id <= 20; id += 3)
        ASSERT_EQ(sd(source, {"keywords", "add", "--record", QString::number(id), "Tags", "red", "k" + QString::number(id)}).exitCode, 0);
    auto target = [&] {
        const QString location = databases->create();
        Look look(location);
        DatabaseHandler& d = look.db();
        EXPECT_EQ(look.exec(QStringLiteral("CREATE TABLE ") + d.BracketName("Files") + QStringLiteral(" (") + d.BracketName("Id")
                            + QStringLiteral(" INTEGER NOT NULL PRIMARY KEY, ") + d.BracketName("Name") + QStringLiteral(" VARCHAR(255))")),
                  "");
        for (int id = 1; id <= 20; ++id)
            EXPECT_EQ(look.exec(QStringLiteral("INSERT INTO ") + d.BracketName("Files") + QStringLiteral(" VALUES (%1, 'f%1')").arg(id)), "");
        return location;
    };
    const Work work{"kill -9 during a merge", target, {"merge", "--from", source}};
    killAtRandomMoments(work);
}

SD_INSTANTIATE_DATABASE_SUITE(KillNine);

} // namespace
