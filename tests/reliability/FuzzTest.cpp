// The readers of outside input under a stream of mutated inputs: data blocks, and the saved filters of a
// profile. A bounded stream in the test command, a million inputs each in a long run.

#include "fuzz/DataBlockHarness.h"
#include "fuzz/Mutator.h"
#include "fuzz/SavedFilterHarness.h"
#include "reliability/ReliabilitySupport.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

using namespace searchdata;
using namespace searchdata::fuzz;
using namespace searchdata::test;

namespace {

/// Inputs per reader: SEARCHDATA_FUZZ_INPUTS, else a few hundred, or a million in a long run.
int fuzzInputs()
{
    return qEnvironmentVariableIsSet("SEARCHDATA_FUZZ_INPUTS") ? qEnvironmentVariableIntValue("SEARCHDATA_FUZZ_INPUTS") : trials(600, 1000000);
}

/// Feeds `inputs` inputs, the corpus first, to `run`; counts those that held, and keeps the first fault.
template <typename Run>
Figures fuzz(const QString& scenario, const QList<QByteArray>& corpus, const QList<QByteArray>& tokens, int inputs, Run run, QString& firstFault)
{
    Figures figures{scenario, {}, inputs};
    Mutator mutator(corpus, tokens, scenarioRandom(scenario)());
    // Most inputs are refused in part, each with a report; a million of them would bury the figures.
    QLoggingCategory::setFilterRules(QStringLiteral("searchdata.*=false"));
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < inputs; ++i) {
        const QByteArray input = i < corpus.size() ? corpus[i] : mutator.next();
        QElapsedTimer timer;
        timer.start();
        QString fault = run(input);
        if (fault.isEmpty() && timer.elapsed() > 10000)
            fault = QStringLiteral("took %1 ms").arg(timer.elapsed());
        if (fault.isEmpty())
            ++figures.passed;
        else if (firstFault.isEmpty())
            firstFault = QStringLiteral("input %1 (%2 bytes): %3\n%4").arg(i).arg(input.size()).arg(QString::fromLatin1(input.left(300).toHex()), fault);
        if ((i + 1) % 100000 == 0)
            std::printf("[ fuzz ] %s: %d inputs in %lld s\n", qPrintable(scenario), i + 1, qint64(clock.elapsed() / 1000));
    }
    QLoggingCategory::setFilterRules(QString());
    return figures;
}

TEST(ReliabilityFuzz, DataBlocksNeverCrashTheReaderOrReachBeyondTheirRecord)
{
    DataBlockHarness harness;
    ASSERT_TRUE(harness.ok()) << qPrintable(harness.error());
    QString fault;
    Figures figures = fuzz("fuzzed data blocks", DataBlockHarness::seedCorpus(), DataBlockHarness::tokens(), fuzzInputs(),
                           [&](const QByteArray& block) { return harness.run(block); }, fault);
    figures.database = QStringLiteral("SQLite");
    recordFigures(figures);
    EXPECT_EQ(figures.passed, figures.trials) << qPrintable(fault);
}

using ProfileFuzz = ReliabilityTest;

TEST_P(ProfileFuzz, SavedFiltersOfAnyProfileGiveSqlTheDatabaseTakes)
{
    const QString location = databases->create();
    auto opened = DatabaseHandler::open(location);
    ASSERT_TRUE(opened) << qPrintable(opened.error());
    SavedFilterHarness harness(opened.value(), dir.path());
    ASSERT_TRUE(harness.ok()) << qPrintable(harness.error());
    QString fault;
    int withTerms = 0;
    const Figures figures = fuzz("fuzzed saved filters", SavedFilterHarness::seedCorpus(), SavedFilterHarness::tokens(), fuzzInputs(),
                                 [&](const QByteArray& profile) {
                                     const QString result = harness.run(profile);
                                     withTerms += harness.lastTermCount() > 0;
                                     return result;
                                 },
                                 fault);
    record(figures);
    EXPECT_EQ(figures.passed, figures.trials) << qPrintable(fault);
    // Inputs that give no terms test little.
    EXPECT_GT(withTerms, figures.trials / 4);
}

SD_INSTANTIATE_DATABASE_SUITE(ProfileFuzz);

} // namespace
