#pragma once

#include <QByteArray>
#include <QList>
#include <random>

namespace searchdata::fuzz {

/// Deterministic mutations of a seed corpus: byte changes, inserted bytes and tokens of the format,
/// cuts, repeats, splices, lines repeated many times, and now and then bytes at random.
class Mutator {
public:
    Mutator(QList<QByteArray> corpus, QList<QByteArray> tokens, unsigned seed);

    /// The next input.
    QByteArray next();

private:
    int pick(qsizetype bound);
    QByteArray randomBytes(int size);
    void mutate(QByteArray& b);

    QList<QByteArray> m_corpus;
    QList<QByteArray> m_tokens;
    std::mt19937 m_rng;
};

/// The files of a corpus folder whose names end in `suffix`, in name order.
QList<QByteArray> readCorpus(const QString& folder, const QString& suffix);

} // namespace searchdata::fuzz
