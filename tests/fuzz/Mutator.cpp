#include "fuzz/Mutator.h"

#include <QDir>
#include <QFile>

namespace searchdata::fuzz {

Mutator::Mutator(QList<QByteArray> corpus, QList<QByteArray> tokens, unsigned seed)
    : m_corpus(std::move(corpus)), m_tokens(std::move(tokens)), m_rng(seed)
{
}

QByteArray Mutator::next()
{
    if (m_corpus.isEmpty() || pick(20) == 0)
        return randomBytes(pick(400));
    QByteArray b = m_corpus[pick(m_corpus.size())];
    for (int n = 1 + pick(4); n > 0; --n)
        mutate(b);
    return b;
}

int Mutator::pick(qsizetype bound)
{
    return bound <= 0 ? 0 : int(std::uniform_int_distribution<qsizetype>(0, bound - 1)(m_rng));
}

QByteArray Mutator::randomBytes(int size)
{
    QByteArray b(size, '\0');
    for (char& c : b)
        c = char(pick(256));
    return b;
}

void Mutator::mutate(QByteArray& b)
{
    const int at = pick(b.size() + 1);
    switch (pick(8)) {
    case 0:
        if (!b.isEmpty())
            b[pick(b.size())] = char(pick(256));
        break;
    case 1: {
        static const char interesting[] = {'\r', '\n', '(', ')', ':', ',', ' ', '=', '[', ']', '"', '\\', '\0', '\xff', '\xc3', '\x80'};
        b.insert(at, interesting[pick(sizeof interesting)]);
        break;
    }
    case 2:
        if (!m_tokens.isEmpty())
            b.insert(at, m_tokens[pick(m_tokens.size())]);
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
        // A line of the corpus repeated, or one of random bytes: long notes, many keywords, many terms.
        const QList<QByteArray> lines = m_corpus[pick(m_corpus.size())].split('\n');
        const QByteArray line = pick(2) ? lines[pick(lines.size())] + '\n' : randomBytes(pick(30)).toHex() + '\n';
        b.insert(at, line.repeated(1 + pick(40)));
        break;
    }
    }
}

QList<QByteArray> readCorpus(const QString& folder, const QString& suffix)
{
    QList<QByteArray> corpus;
    const QDir dir(folder);
    for (const QString& name : dir.entryList({QStringLiteral("*") + suffix}, QDir::Files, QDir::Name)) {
        QFile f(dir.filePath(name));
        if (f.open(QIODevice::ReadOnly))
            corpus << f.readAll();
    }
    return corpus;
}

} // namespace searchdata::fuzz
