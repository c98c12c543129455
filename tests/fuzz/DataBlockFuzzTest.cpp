// The data block path under a bounded stream of inputs: the seed corpus of real blocks, then
// mutations of it with a fixed seed. SEARCHDATA_FUZZ_INPUTS sets how many inputs run (2,000 by
// default); SEARCHDATA_FUZZ_SEED another seed.

#include "fuzz/DataBlockHarness.h"

#include <QDir>
#include <QElapsedTimer>
#include <gtest/gtest.h>
#include <random>

using namespace searchdata::fuzz;

namespace {

const QByteArray kTokens[] = {
    "Begin Search Data", "(Begin Search Data)\r\n", "End Search Data", "(End Search Data)\r\n", "(Start Note)\r\n", "(End Note)\r\n",
    "(Line: ", "Line:", "\r\n", "\n\r\r", ":", "((", "))", ",,", ", ", "Customer", "client", "Qty", "Count", "Ratio", "Price", "Due",
    "Done", "Tags", "Codes", "Remarks", "Colour", "yes", "NO", "maybe", "1e400", "-32769", "2147483648", "3.4e39", "nan",
    "2003-07-04 13:05", "9999-12-31", "'", "\"", "%", "_", "\\", "\xef\xbb\xbf", "\xc3\xa9", "\xff\xfe", "\xe6\x9d\xb1",
};

/// Deterministic mutations of the corpus: byte changes, inserted bytes and tokens, cuts, repeats,
/// splices, and now and then bytes at random.
class Mutator {
public:
    Mutator(QList<QByteArray> corpus, unsigned seed) : m_corpus(std::move(corpus)), m_rng(seed) {}

    QByteArray next()
    {
        if (pick(20) == 0)
            return randomBytes(pick(400));
        QByteArray b = m_corpus[pick(m_corpus.size())];
        for (int n = 1 + pick(4); n > 0; --n)
            mutate(b);
        return b;
    }

private:
    int pick(qsizetype bound) { return bound <= 0 ? 0 : int(std::uniform_int_distribution<qsizetype>(0, bound - 1)(m_rng)); }
    QByteArray randomBytes(int size)
    {
        QByteArray b(size, '\0');
        for (char& c : b)
            c = char(pick(256));
        return b;
    }
    void mutate(QByteArray& b)
    {
        const int at = pick(b.size() + 1);
        switch (pick(8)) {
        case 0:
            if (!b.isEmpty())
                b[pick(b.size())] = char(pick(256));
            break;
        case 1: {
            static const char interesting[] = {'\r', '\n', '(', ')', ':', ',', ' ', '\0', '\xff', '\xc3', '\x80'};
            b.insert(at, interesting[pick(sizeof interesting)]);
            break;
        }
        case 2:
            b.insert(at, kTokens[pick(std::size(kTokens))]);
            break;
        case 3:
            b.remove(at, pick(b.size() - at + 1));
            break;
        case 4:
            b.truncate(at);
            break;
        case 5: {
            const int from = pick(b.size() + 1);
            b.insert(at, b.mid(from, pick(b.size() - from + 1)));
            break;
        }
        case 6: {
            const QByteArray& other = m_corpus[pick(m_corpus.size())];
            b = b.left(at) + other.mid(pick(other.size() + 1));
            break;
        }
        default: {
            // A line repeated: long notes, many keywords, many errors.
            const QByteArray line = pick(2) ? QByteArray("(Line: ") + randomBytes(pick(30)).toHex() + ")\r\n" : QByteArray("(Tags: a,b,a)\r\n");
            b.insert(at, line.repeated(1 + pick(40)));
            break;
        }
        }
    }

    QList<QByteArray> m_corpus;
    std::mt19937 m_rng;
};

QList<QByteArray> seedCorpus()
{
    QList<QByteArray> corpus;
    const QDir dir(QStringLiteral(SEARCHDATA_SOURCE_DIR "/tests/fuzz/corpus"));
    for (const QString& name : dir.entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name)) {
        QFile f(dir.filePath(name));
        if (f.open(QIODevice::ReadOnly))
            corpus << f.readAll();
    }
    return corpus;
}

TEST(DataBlockFuzz, NoBlockCrashesHangsOrWritesOutsideItsRecordAndLog)
{
    const QList<QByteArray> corpus = seedCorpus();
    ASSERT_GE(corpus.size(), 5);
    const int inputs = qEnvironmentVariableIsSet("SEARCHDATA_FUZZ_INPUTS") ? qEnvironmentVariableIntValue("SEARCHDATA_FUZZ_INPUTS") : 2000;
    const unsigned seed = qEnvironmentVariableIsSet("SEARCHDATA_FUZZ_SEED") ? unsigned(qEnvironmentVariableIntValue("SEARCHDATA_FUZZ_SEED")) : 0x5eedu;
    DataBlockHarness harness;
    ASSERT_TRUE(harness.ok()) << qPrintable(harness.error());
    Mutator mutator(corpus, seed);

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
