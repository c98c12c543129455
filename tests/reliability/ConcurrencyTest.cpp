// Two users of one database, each running the program: saves of one record at the same moment, saves
// while the other changes the columns, and a lock that another connection holds.

#include "reliability/ReliabilitySupport.h"

#include <QElapsedTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

using Concurrency = ReliabilityTest;

/// The trials of a scenario, with the first run of each kind that did not pass, for the message.
struct Tally {
    explicit Tally(const QString& scenario = {}, int trials = 0) : figures{scenario, {}, trials} {}

    Figures figures;
    int refused = 0;
    int raw = 0;
    QString example;

    /// Whether the run ended well; counts it when it did not.
    bool done(const CliRun& run)
    {
        switch (endingOf(run)) {
        case Ending::Done:
            return true;
        case Ending::Crashed:
            ++figures.crashed;
            break;
        case Ending::RawText:
            ++raw;
            break;
        case Ending::Refused:
            ++refused;
            break;
        }
        if (example.isEmpty())
            example = QStringLiteral("exit code %1: %2").arg(run.exitCode).arg(run.err);
        return false;
    }
    void lost(const QString& what)
    {
        ++figures.lost;
        if (example.isEmpty())
            example = what;
    }
    /// Every trial passed: nothing lost, no crash, no message with the database's own text.
    void expectAllPassed() const
    {
        EXPECT_EQ(figures.lost, 0) << qPrintable(example);
        EXPECT_EQ(figures.crashed, 0) << qPrintable(example);
        EXPECT_EQ(raw, 0) << qPrintable(example);
        EXPECT_EQ(figures.passed, figures.trials) << refused << " refused; " << qPrintable(example);
    }
};

TEST_P(Concurrency, TwoProcessesSavingOtherColumnsOfOneRecordLoseNothing)
{
    const QString db = demo();
    Tally tally("2 processes save other columns of 1 record", trials(12, 300));
    for (int i = 0; i < tally.figures.trials; ++i) {
        const QString part = QStringLiteral("P-%1").arg(i), drawing = QStringLiteral("D-%1").arg(i);
        auto first = startSd(db, {"values", "set", "--record", "5", "PartNo=" + part});
        auto second = startSd(db, {"values", "set", "--record", "5", "DrawingNo=" + drawing});
        const bool firstDone = tally.done(CliProgram::finish(*first));
        if (!(tally.done(CliProgram::finish(*second)) && firstDone))
            continue;
        const QString gotPart = searchField(db, "PartNo", 5), gotDrawing = searchField(db, "DrawingNo", 5);
        if (gotPart == part && gotDrawing == drawing)
            ++tally.figures.passed;
        else
            tally.lost(QStringLiteral("trial %1 saved %2 and %3, the record holds %4 and %5").arg(i).arg(part, drawing, gotPart, gotDrawing));
    }
    record(tally.figures);
    tally.expectAllPassed();
}

TEST_P(Concurrency, TwoProcessesAddingKeywordsToOneRecordLoseNone)
{
    const QString db = demo();
    Tally tally("2 processes add keywords to 1 record", trials(12, 300));
    for (int i = 0; i < tally.figures.trials; ++i) {
        const QString mine = QStringLiteral("a%1").arg(i), theirs = QStringLiteral("b%1").arg(i);
        auto first = startSd(db, {"keywords", "add", "--record", "5", "Tags", mine});
        auto second = startSd(db, {"keywords", "add", "--record", "5", "Tags", theirs});
        const bool firstDone = tally.done(CliProgram::finish(*first));
        if (!(tally.done(CliProgram::finish(*second)) && firstDone))
            continue;
        Look look(db);
        DatabaseHandler& d = look.db();
        const int kept = look.scalar(QStringLiteral("SELECT COUNT(*) FROM ") + d.BracketName("FilesSearchKeywordTags") + QStringLiteral(" WHERE ")
                                     + d.BracketName("Id") + QStringLiteral(" = 5 AND ") + d.BracketName("Tags") + QStringLiteral(" IN (")
                                     + d.SqlQuote(mine) + QStringLiteral(", ") + d.SqlQuote(theirs) + QStringLiteral(")"))
                             .toInt();
        if (kept == 2)
            ++tally.figures.passed;
        else
            tally.lost(QStringLiteral("trial %1 added %2 and %3, the record keeps %4 of them").arg(i).arg(mine, theirs).arg(kept));
    }
    record(tally.figures);
    tally.expectAllPassed();
}

// A column that goes or comes under a save gives a clear message at worst, never a crash, and a
// save that reports success has saved.
TEST_P(Concurrency, SavesWhileAnotherProcessChangesTheColumnsNeverCrash)
{
    const QString db = demo();
    Tally saves("saves while another changes the columns", trials(20, 300));
    Tally changes;
    auto changeArgs = [](int n) {
        return n % 2 == 0 ? QStringList{"columns", "add", "Extra", "--type", "int32"} : QStringList{"columns", "delete", "Extra", "--yes"};
    };
    int changed = 0;
    auto change = startSd(db, changeArgs(changed));
    for (int i = 0; i < saves.figures.trials; ++i) {
        const QString part = QStringLiteral("C-%1").arg(i);
        auto save = startSd(db, {"values", "set", "--record", "5", "PartNo=" + part});
        while (!ended(*save, 10)) {
            if (ended(*change, 10)) {
                changes.done(CliProgram::finish(*change));
                change = startSd(db, changeArgs(++changed));
            }
        }
        if (!saves.done(CliProgram::finish(*save)))
            continue;
        const QString got = searchField(db, "PartNo", 5);
        if (got == part)
            ++saves.figures.passed;
        else
            saves.lost(QStringLiteral("save %1 of %2 reported success, the record holds %3").arg(i).arg(part, got));
    }
    changes.done(CliProgram::finish(*change));
    saves.figures.crashed += changes.figures.crashed;
    saves.raw += changes.raw;
    record(saves.figures);
    EXPECT_EQ(saves.figures.crashed, 0) << qPrintable(saves.example) << qPrintable(changes.example);
    EXPECT_EQ(saves.raw, 0) << qPrintable(saves.example) << qPrintable(changes.example);
    EXPECT_EQ(saves.figures.lost, 0) << qPrintable(saves.example);
    EXPECT_GT(changed, 0) << "the columns never changed under the saves";
}

/// Another user's connection holding a write lock on record 5's search row.
class OtherUsersLock {
public:
    OtherUsersLock(const QString& location, DbKind kind) : m_look(location)
    {
        DatabaseHandler& d = m_look.db();
        if (kind == DbKind::SQLite) {
            m_error = m_look.exec("BEGIN IMMEDIATE");
        } else {
            m_error = m_look.exec("BEGIN");
            if (m_error.isEmpty())
                m_error = m_look.exec(QStringLiteral("SELECT * FROM ") + d.BracketName("FilesSearchData") + QStringLiteral(" WHERE ")
                                      + d.BracketName("Id") + QStringLiteral(" = 5 FOR UPDATE"));
        }
    }
    const QString& error() const { return m_error; }
    void release() { EXPECT_EQ(m_look.exec("ROLLBACK"), ""); }

private:
    Look m_look;
    QString m_error;
};

/// What the program has said on standard error until it says `text`, ends, or `ms` pass.
QString messagesUntil(QProcess& process, const QString& text, int ms)
{
    QString said;
    QElapsedTimer clock;
    clock.start();
    while (!said.contains(text) && clock.elapsed() < ms && process.state() != QProcess::NotRunning) {
        process.waitForReadyRead(100);
        said += QString::fromUtf8(process.readAllStandardError());
    }
    return said + QString::fromUtf8(process.readAllStandardError());
}

const QString kWaiting = QStringLiteral("(waiting for another user)");

TEST_P(Concurrency, ASaveWaitsForALockHeldAFewSecondsAndSucceeds)
{
    const QString db = demo();
    Tally tally("a lock held 2 s: the save waits, then saves", trials(1, 5));
    for (int i = 0; i < tally.figures.trials; ++i) {
        const QString part = QStringLiteral("L-%1").arg(i);
        OtherUsersLock lock(db, GetParam());
        ASSERT_EQ(lock.error(), "");
        auto save = startSd(db, {"--lock-wait", "30", "values", "set", "--record", "5", "PartNo=" + part});
        const QString said = messagesUntil(*save, kWaiting, 20000);
        const bool waited = said.contains(kWaiting) && !ended(*save, 2000);
        lock.release();
        CliRun run = CliProgram::finish(*save);
        run.err.prepend(said);
        if (!tally.done(run))
            continue;
        if (!waited)
            tally.example = QStringLiteral("the save did not wait with the message: ") + run.err;
        else if (searchField(db, "PartNo", 5) != part)
            tally.lost(QStringLiteral("the save of %1 after the wait reported success and was not kept").arg(part));
        else
            ++tally.figures.passed;
    }
    record(tally.figures);
    tally.expectAllPassed();
}

TEST_P(Concurrency, ALockHeldPastTheWaitEndsTheSaveClearlyWithNothingChanged)
{
    const QString db = demo();
    Tally tally("a lock held past the wait: refused, unchanged", trials(1, 5));
    for (int i = 0; i < tally.figures.trials; ++i) {
        const QString before = Look(db).snapshot();
        OtherUsersLock lock(db, GetParam());
        ASSERT_EQ(lock.error(), "");
        auto save = startSd(db, {"--lock-wait", "1", "values", "set", "--record", "5", "PartNo=Never", "DrawingNo=Never"});
        const bool gaveUp = ended(*save, 20000);
        lock.release();
        const CliRun run = CliProgram::finish(*save);
        if (tally.done(run)) {
            tally.example = QStringLiteral("the save went on under the lock: ") + run.err;
            continue;
        }
        if (!gaveUp || run.exitCode != 1 || !run.err.contains(kWaiting)
            || !run.err.contains("another user kept the data locked for longer than the program waits")) {
            tally.example = QStringLiteral("not refused with a clear message: exit code %1: %2").arg(run.exitCode).arg(run.err);
            continue;
        }
        if (Look(db).snapshot() == before)
            ++tally.figures.passed;
        else
            tally.lost(QStringLiteral("the refused save changed the database"));
    }
    record(tally.figures);
    EXPECT_EQ(tally.figures.passed, tally.figures.trials) << qPrintable(tally.example);
    EXPECT_EQ(tally.figures.lost, 0) << qPrintable(tally.example);
    EXPECT_EQ(tally.raw, 0) << qPrintable(tally.example);
}

SD_INSTANTIATE_DATABASE_SUITE(Concurrency);

} // namespace
