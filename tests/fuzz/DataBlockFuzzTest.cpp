// The data block path under a bounded stream of inputs: the seed corpus of real blocks, then
// mutations of it with a fixed seed. SEARCHDATA_FUZZ_INPUTS sets how many inputs run (2,000 by
// default); SEARCHDATA_FUZZ_SEED another seed.

#include "fuzz/DataBlockHarness.h"
#include "fuzz/Mutator.h"

#include <QElapsedTimer>
#include <gtest/gtest.h>

using namespace searchdata::fuzz;

namespace {

TEST(DataBlockFuzz, NoBlockCrashesHangsOrWritesOutsideItsRecordAndLog)
{
    const QList<QByteArray> corpus = DataBlockHarness::seedCorpus();
    ASSERT_GE(corpus.size(), 5);
    const int inputs = qEnvironmentVariableIsSet("SEARCHDATA_FUZZ_INPUTS") ? qEnvironmentVariableIntValue("SEARCHDATA_FUZZ_INPUTS") : 2000;
    const unsigned seed = qEnvironmentVariableIsSet("SEARCHDATA_FUZZ_SEED") ? unsigned(qEnvironmentVariableIntValue("SEARCHDATA_FUZZ_SEED")) : 0x5eedu;
    DataBlockHarness harness;
    ASSERT_TRUE(harness.ok()) << qPrintable(harness.error());
    Mutator mutator(corpus, DataBlockHarness::tokens(), seed);

    int written = 0, logged = 0;
    qint64 slowest = 0;
    QElapsedTimer total;
    total.start();
    for (int i = 0; i < inputs; ++i) {
        const QByteArray block = i < corpus.size() ? corpus[i] : mutator.next();
        QElapsedTimer timer;
        timer.start();
        const QString fault = harness.run(block);
        slowest = std::max(slowest, timer.elapsed());
        ASSERT_TRUE(fault.isEmpty()) << "input " << i << " (" << block.size() << " bytes): " << block.left(300).toHex().constData()
                                     << "\n" << qPrintable(fault);
        ASSERT_LT(timer.elapsed(), 10000) << "input " << i << " took too long";
        written += harness.lastResult().written;
        logged += harness.lastResult().errors > 0;
    }
    // The inputs must reach both ends of the path, or they test little.
    EXPECT_GT(written, inputs / 10);
    EXPECT_GT(logged, inputs / 10);
    std::printf("[ fuzz ] %d inputs in %lld ms, slowest %lld ms; %d written, %d with a log\n", inputs, qint64(total.elapsed()),
                slowest, written, logged);
}

} // namespace
