#include "platform/SqliteTableSql_p.h"

#include <QSet>
#include <algorithm>

namespace searchdata::detail {

namespace {

struct Token {
    enum Kind { Word, Quoted, String, Number, Punct } kind;
    qsizetype begin;
    qsizetype end;
    QString value; // a name unquoted, a word as written
    QString upper; // words only: upper case, for keyword tests
};

bool isWordStart(QChar c)
{
    return c.isLetter() || c == u'_' || c.unicode() >= 0x80;
}

bool isWordPart(QChar c)
{
    return isWordStart(c) || c.isDigit() || c == u'$';
}

QString unescaped(const QString& sql, qsizetype begin, qsizetype end, QChar close)
{
    QString inner = sql.mid(begin + 1, end - begin - 2);
    if (close != u']')
        inner.replace(QString(2, close), QString(close));
    return inner;
}

QList<Token> tokenize(const QString& sql)
{
    QList<Token> tokens;
    const qsizetype n = sql.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            ++i;
        } else if (c == u'-' && i + 1 < n && sql[i + 1] == u'-') {
            while (i < n && sql[i] != u'\n')
                ++i;
        } else if (c == u'/' && i + 1 < n && sql[i + 1] == u'*') {
            const qsizetype close = sql.indexOf(QLatin1String("*/"), i + 2);
            i = close < 0 ? n : close + 2;
        } else if (c == u'"' || c == u'`' || c == u'\'' || c == u'[') {
            const QChar close = c == u'[' ? QChar(u']') : c;
            qsizetype j = i + 1;
            for (;;) {
                if (j >= n)
                    break;
                if (sql[j] == close) {
                    if (close != u']' && j + 1 < n && sql[j + 1] == close) {
                        j += 2;
                        continue;
                    }
                    ++j;
                    break;
                }
                ++j;
            }
            tokens.append({c == u'\'' ? Token::String : Token::Quoted, i, j, unescaped(sql, i, j, close), {}});
            i = j;
        } else if (c.isDigit() || (c == u'.' && i + 1 < n && sql[i + 1].isDigit())) {
            qsizetype j = i + 1;
            while (j < n && (sql[j].isLetterOrNumber() || sql[j] == u'.'
                             || ((sql[j] == u'+' || sql[j] == u'-') && (sql[j - 1] == u'e' || sql[j - 1] == u'E'))))
                ++j;
            tokens.append({Token::Number, i, j, sql.mid(i, j - i), {}});
            i = j;
        } else if (isWordStart(c)) {
            qsizetype j = i + 1;
            while (j < n && isWordPart(sql[j]))
                ++j;
            const QString word = sql.mid(i, j - i);
            tokens.append({Token::Word, i, j, word, word.toUpper()});
            i = j;
        } else {
            tokens.append({Token::Punct, i, i + 1, QString(c), {}});
            ++i;
        }
    }
    return tokens;
}

// Reads a token list of one CREATE TABLE statement.
class Reader {
public:
    Reader(const QString& sql, QList<Token> tokens) : sql(sql), t(std::move(tokens)) {}

    bool word(qsizetype i, const char* keyword) const
    {
        return i < t.size() && t[i].kind == Token::Word && t[i].upper == QLatin1String(keyword);
    }
    bool punct(qsizetype i, char p) const
    {
        return i < t.size() && t[i].kind == Token::Punct && t[i].value == QLatin1Char(p);
    }
    QString value(qsizetype i) const { return i < t.size() ? t[i].value : QString(); }
    QString slice(qsizetype from, qsizetype to) const
    {
        if (to <= from)
            return {};
        return sql.mid(t[from].begin, t[to - 1].end - t[from].begin);
    }
    // The index after the group that opens at `i`.
    qsizetype skipGroup(qsizetype i) const
    {
        int depth = 0;
        for (; i < t.size(); ++i) {
            if (punct(i, '('))
                ++depth;
            else if (punct(i, ')') && --depth == 0)
                return i + 1;
        }
        return i;
    }
    // The first name of each comma-separated item of the group at `i`; `next` gets the index after it.
    QStringList nameList(qsizetype i, qsizetype* next) const
    {
        QStringList names;
        const qsizetype end = skipGroup(i);
        bool itemStart = true;
        int depth = 0;
        for (qsizetype j = i + 1; j < end - 1; ++j) {
            if (punct(j, '('))
                ++depth;
            else if (punct(j, ')'))
                --depth;
            else if (depth == 0 && punct(j, ',')) {
                itemStart = true;
                continue;
            }
            if (itemStart && depth == 0) {
                names.append(t[j].value);
                itemStart = false;
            }
        }
        *next = end;
        return names;
    }
    qsizetype skipConflict(qsizetype i) const
    {
        return word(i, "ON") && word(i + 1, "CONFLICT") ? i + 3 : i;
    }
    // REFERENCES table [(columns)] [ON DELETE|UPDATE action | MATCH name | [NOT] DEFERRABLE [INITIALLY x]]...
    qsizetype references(qsizetype i, QString* table, QStringList* columns) const
    {
        ++i; // REFERENCES
        *table = value(i++);
        if (punct(i, '('))
            *columns = nameList(i, &i);
        for (;;) {
            if (word(i, "ON")) {
                i += 2; // ON DELETE / ON UPDATE
                if (word(i, "SET") || word(i, "NO"))
                    i += 2;
                else
                    i += 1;
            } else if (word(i, "MATCH")) {
                i += 2;
            } else if (word(i, "NOT") && word(i + 1, "DEFERRABLE")) {
                i += 2;
            } else if (word(i, "DEFERRABLE")) {
                ++i;
                if (word(i, "INITIALLY"))
                    i += 2;
            } else {
                return i;
            }
        }
    }
    QStringList identifiers(qsizetype from, qsizetype to) const
    {
        QStringList names;
        for (qsizetype j = from; j < to; ++j)
            if (t[j].kind == Token::Word || t[j].kind == Token::Quoted)
                names.append(t[j].value);
        return names;
    }

    const QString& sql;
    QList<Token> t;
};

bool startsClause(const Token& token)
{
    static const QSet<QString> starts = {"CONSTRAINT", "PRIMARY", "NOT", "NULL", "UNIQUE", "CHECK", "DEFAULT",
                                         "COLLATE", "REFERENCES", "GENERATED", "AS"};
    return token.kind == Token::Word && starts.contains(token.upper);
}

bool containsName(const QStringList& names, const QString& name)
{
    return names.contains(name, Qt::CaseInsensitive);
}

} // namespace

std::optional<SqliteTableSql> SqliteTableSql::parse(const QString& sql)
{
    Reader r(sql, tokenize(sql));
    qsizetype i = 0;
    if (!r.word(i++, "CREATE"))
        return std::nullopt;
    if (r.word(i, "TEMP") || r.word(i, "TEMPORARY"))
        ++i;
    if (!r.word(i++, "TABLE"))
        return std::nullopt;
    if (r.word(i, "IF"))
        i += 3;
    ++i; // the name
    if (r.punct(i, '.'))
        i += 2;
    if (!r.punct(i, '('))
        return std::nullopt; // CREATE TABLE ... AS SELECT
    const qsizetype close = r.skipGroup(i) - 1;
    if (!r.punct(close, ')'))
        return std::nullopt;

    SqliteTableSql result;
    result.m_options = sql.mid(r.t[close].end).trimmed();
    if (result.m_options.endsWith(QLatin1Char(';')))
        result.m_options.chop(1);

    qsizetype from = i + 1;
    while (from < close) {
        qsizetype to = from;
        while (to < close && !r.punct(to, ',')) {
            if (r.punct(to, '('))
                to = r.skipGroup(to);
            else
                ++to;
        }
        Element e;
        e.text = r.slice(from, to);
        const Token& first = r.t[from];
        const bool constraint = first.kind == Token::Word
                                && (first.upper == u"CONSTRAINT" || first.upper == u"PRIMARY" || first.upper == u"UNIQUE"
                                    || first.upper == u"CHECK" || first.upper == u"FOREIGN");
        if (constraint) {
            e.isColumn = false;
            e.identifiers = r.identifiers(from, to);
            qsizetype j = from;
            Key key;
            if (r.word(j, "CONSTRAINT")) {
                key.name = r.value(j + 1);
                j += 2;
            }
            if (r.word(j, "PRIMARY") || r.word(j, "UNIQUE")) {
                key.kind = r.word(j, "PRIMARY") ? kkPrimary : kkUnique;
                j += key.kind == kkPrimary ? 2 : 1;
                if (r.punct(j, '('))
                    key.columns = r.nameList(j, &j);
                e.key = key;
            } else if (r.word(j, "FOREIGN")) {
                key.kind = kkForeign;
                j += 2;
                if (r.punct(j, '('))
                    key.columns = r.nameList(j, &j);
                if (r.word(j, "REFERENCES"))
                    r.references(j, &key.relatedTable, &key.relatedColumns);
                e.key = key;
            }
        } else {
            e.isColumn = true;
            e.nameText = r.slice(from, from + 1);
            e.columnName = first.value;
            qsizetype j = from + 1;
            while (j < to && !startsClause(r.t[j]))
                j = r.punct(j, '(') ? r.skipGroup(j) : j + 1;
            e.typeText = r.slice(from + 1, j);
            while (j < to) {
                const qsizetype start = j;
                Clause clause;
                if (r.word(j, "CONSTRAINT")) {
                    clause.name = r.value(j + 1);
                    j += 2;
                }
                if (r.word(j, "PRIMARY")) {
                    clause.kind = ClauseKind::PrimaryKey;
                    j += 2;
                    while (r.word(j, "ASC") || r.word(j, "DESC") || r.word(j, "AUTOINCREMENT") || r.word(j, "ON"))
                        j = r.word(j, "ON") ? r.skipConflict(j) : j + 1;
                } else if (r.word(j, "NOT")) {
                    clause.kind = ClauseKind::NotNull;
                    j = r.skipConflict(j + 2);
                } else if (r.word(j, "NULL")) {
                    clause.kind = ClauseKind::Null;
                    j = r.skipConflict(j + 1);
                } else if (r.word(j, "UNIQUE")) {
                    clause.kind = ClauseKind::Unique;
                    j = r.skipConflict(j + 1);
                } else if (r.word(j, "CHECK")) {
                    clause.kind = ClauseKind::Check;
                    j = r.skipGroup(j + 1);
                } else if (r.word(j, "DEFAULT")) {
                    clause.kind = ClauseKind::Default;
                    ++j;
                    if (r.punct(j, '+') || r.punct(j, '-'))
                        j += 2;
                    else if (r.punct(j, '('))
                        j = r.skipGroup(j);
                    else
                        ++j;
                } else if (r.word(j, "COLLATE")) {
                    clause.kind = ClauseKind::Collate;
                    j += 2;
                } else if (r.word(j, "REFERENCES")) {
                    clause.kind = ClauseKind::References;
                    j = r.references(j, &clause.relatedTable, &clause.relatedColumns);
                } else if (r.word(j, "GENERATED") || r.word(j, "AS")) {
                    clause.kind = ClauseKind::Generated;
                    if (r.word(j, "GENERATED"))
                        j += 2;
                    j = r.skipGroup(j + 1);
                    if (r.word(j, "STORED") || r.word(j, "VIRTUAL"))
                        ++j;
                } else {
                    j = r.punct(j, '(') ? r.skipGroup(j) : j + 1;
                }
                j = std::min(std::max(j, start + 1), to);
                clause.text = r.slice(start, j);
                e.clauses.append(clause);
            }
        }
        result.m_elements.append(e);
        from = to + 1;
    }
    return result;
}

QList<SqliteTableSql::Key> SqliteTableSql::keys() const
{
    QList<Key> keys;
    for (const Element& e : m_elements) {
        if (!e.isColumn)
            continue;
        for (const Clause& c : e.clauses) {
            if (c.kind == ClauseKind::PrimaryKey)
                keys.append({kkPrimary, c.name, {e.columnName}, {}, {}});
            else if (c.kind == ClauseKind::Unique)
                keys.append({kkUnique, c.name, {e.columnName}, {}, {}});
            else if (c.kind == ClauseKind::References)
                keys.append({kkForeign, c.name, {e.columnName}, c.relatedTable, c.relatedColumns});
        }
    }
    for (const Element& e : m_elements)
        if (!e.isColumn && e.key)
            keys.append(*e.key);
    return keys;
}

bool SqliteTableSql::withoutRowid() const
{
    return m_options.simplified().toUpper().contains(QLatin1String("WITHOUT ROWID"));
}

QStringList SqliteTableSql::columnNames() const
{
    QStringList names;
    for (const Element& e : m_elements)
        if (e.isColumn)
            names.append(e.columnName);
    return names;
}

QString SqliteTableSql::columnText(const Element& column)
{
    QString text = column.nameText;
    if (!column.typeText.isEmpty())
        text += QLatin1Char(' ') + column.typeText;
    for (const Clause& c : column.clauses)
        text += QLatin1Char(' ') + c.text;
    return text;
}

void SqliteTableSql::addColumn(const QString& definition)
{
    qsizetype at = 0;
    for (qsizetype i = 0; i < m_elements.size(); ++i)
        if (m_elements[i].isColumn)
            at = i + 1;
    Element e;
    e.text = definition;
    if (std::optional<SqliteTableSql> parsed = parse(QStringLiteral("CREATE TABLE t (") + definition + QLatin1Char(')'));
        parsed && parsed->m_elements.size() == 1)
        e = parsed->m_elements.first();
    m_elements.insert(at, e);
}

bool SqliteTableSql::replaceColumn(const QString& name, const QString& typeText, bool notNull, const QString& defaultSql)
{
    for (Element& e : m_elements) {
        if (!e.isColumn || e.columnName.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        e.typeText = typeText;
        e.clauses.removeIf([](const Clause& c) {
            return c.kind == ClauseKind::NotNull || c.kind == ClauseKind::Null || c.kind == ClauseKind::Default;
        });
        if (notNull)
            e.clauses.append({ClauseKind::NotNull, {}, QStringLiteral("NOT NULL"), {}, {}});
        if (!defaultSql.isEmpty())
            e.clauses.append({ClauseKind::Default, {}, QStringLiteral("DEFAULT ") + defaultSql, {}, {}});
        e.text = columnText(e);
        return true;
    }
    return false;
}

bool SqliteTableSql::dropColumn(const QString& name)
{
    const qsizetype before = m_elements.size();
    m_elements.removeIf([&](const Element& e) {
        if (e.isColumn)
            return e.columnName.compare(name, Qt::CaseInsensitive) == 0;
        if (e.key)
            return containsName(e.key->columns, name);
        return containsName(e.identifiers, name);
    });
    return m_elements.size() < before;
}

int SqliteTableSql::dropForeignKeys(const std::function<bool(const QString&)>& which)
{
    int dropped = 0;
    m_elements.removeIf([&](const Element& e) {
        const bool drop = !e.isColumn && e.key && e.key->kind == kkForeign && which(e.key->relatedTable);
        dropped += drop ? 1 : 0;
        return drop;
    });
    for (Element& e : m_elements) {
        if (!e.isColumn)
            continue;
        const qsizetype removed = e.clauses.removeIf([&](const Clause& c) {
            return c.kind == ClauseKind::References && which(c.relatedTable);
        });
        if (removed > 0) {
            dropped += int(removed);
            e.text = columnText(e);
        }
    }
    return dropped;
}

void SqliteTableSql::addConstraint(const QString& text)
{
    Element e;
    e.isColumn = false;
    e.text = text;
    if (std::optional<SqliteTableSql> parsed = parse(QStringLiteral("CREATE TABLE t (x, ") + text + QLatin1Char(')'));
        parsed && parsed->m_elements.size() == 2)
        e = parsed->m_elements.last();
    m_elements.append(e);
}

QString SqliteTableSql::statement(const QString& quotedName) const
{
    QStringList parts;
    for (const Element& e : m_elements)
        parts.append(e.text);
    QString sql = QStringLiteral("CREATE TABLE ") + quotedName + QStringLiteral(" (") + parts.join(QStringLiteral(", ")) + QLatin1Char(')');
    if (!m_options.isEmpty())
        sql += QLatin1Char(' ') + m_options;
    return sql;
}

} // namespace searchdata::detail
