// filter, filter save|load: terms in a readable form ("Customer = Acme Machine", "Tags includes red"),
// the predicate the library makes of them, and the records it selects.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/CFilterTerms.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

struct OperatorWord {
    const char* text;
    EComparisonOperations operation;
    bool word; ///< must be followed by a blank or the end
};

// Longer spellings first, so that "<=" is not read as "<".
constexpr OperatorWord kOperators[] = {
    {"is true", kvoOP_IsTrue, true},    {"is false", kvoOP_IsFalse, true},  {"not like", kvoOP_IsNotLike, true},
    {"like", kvoOP_IsLike, true},       {"includes", kvoOP_Includes, true}, {"excludes", kvoOP_Excludes, true},
    {"<>", kvoOP_NotEquals, false},     {"!=", kvoOP_NotEquals, false},     {"<=", kvoOP_LessOrEqual, false},
    {">=", kvoOP_GreatorOrEqual, false}, {"=", kvoOP_Equals, false},        {"<", kvoOP_Less, false},
    {">", kvoOP_Greater, false},
};

QString operationText(EComparisonOperations op)
{
    for (const OperatorWord& o : kOperators)
        if (o.operation == op)
            return QLatin1String(o.text);
    return QStringLiteral("?");
}

QString classText(FilterComparisonClasses c)
{
    switch (c) {
    case kvoCC_Boolean: return QStringLiteral("a boolean");
    case kvoCC_Keyword: return QStringLiteral("a keyword");
    case kvoCC_Text: return QStringLiteral("a text");
    case kvoCC_Numeric: return QStringLiteral("a number");
    case kvoCC_Date: return QStringLiteral("a date");
    default: return QStringLiteral("an unknown");
    }
}

QString operatorsOf(FilterComparisonClasses c)
{
    switch (c) {
    case kvoCC_Boolean: return QStringLiteral("is true, is false");
    case kvoCC_Keyword: return QStringLiteral("includes, excludes");
    case kvoCC_Text: return QStringLiteral("=, <>, <, >, <=, >=, like, not like");
    default: return QStringLiteral("=, <>, <, >, <=, >=");
    }
}

bool endsName(const QString& text, qsizetype at)
{
    return at >= text.size() || text[at].isSpace() || QStringLiteral("=<>!").contains(text[at]);
}

[[noreturn]] void malformed(const QString& term, const QString& why)
{
    usageError(QStringLiteral("malformed term \"%1\": %2; write FIELD OPERATOR VALUE, e.g. \"Customer = Acme Machine\" or "
                              "\"Tags includes red\"")
                   .arg(term, why));
}

/// What a term's field is: a search column, or a field of the base table.
struct FieldRef {
    QString field;
    QString table;
};

class TermReader {
public:
    explicit TermReader(const Session& session) : m_session(session)
    {
        for (const auto& c : session.columns()) {
            m_names.append({c->Name(), {c->Name(), session.columns().SearchKeyword(c.get())}});
            if (!c->Caption().trimmed().isEmpty())
                m_names.append({c->Caption(), {c->Name(), session.columns().SearchKeyword(c.get())}});
        }
        // A base field of the same name as a column is reached as Table.Field.
        for (const CatalogColumn& f : session.baseTable()->columns) {
            m_names.append({session.tableName() + QLatin1Char('.') + f.name, {f.name, session.tableName()}});
            if (!session.columns().Item(f.name))
                m_names.append({f.name, {f.name, session.tableName()}});
        }
    }

    /// Adds the term `text` to `terms`; usage errors for what cannot be read, failures for names and
    /// values that the table does not have or take.
    void add(CFilterTerms& terms, EConjunctions conjunction, const QString& text) const
    {
        QString rest = text.trimmed();
        if (rest.isEmpty())
            malformed(text, QStringLiteral("it is empty"));

        std::optional<FieldRef> ref;
        qsizetype length = 0;
        if (rest.startsWith(QLatin1Char('"')) || rest.startsWith(QLatin1Char('['))) {
            const QChar close = rest.startsWith(QLatin1Char('"')) ? QLatin1Char('"') : QLatin1Char(']');
            const qsizetype end = rest.indexOf(close, 1);
            if (end < 0)
                malformed(text, QStringLiteral("the field name is not closed by %1").arg(close));
            ref = lookUp(rest.mid(1, end - 1), text);
            length = end + 1;
        } else {
            for (const auto& [name, candidate] : m_names) {
                if (name.size() > length && rest.startsWith(name, Qt::CaseInsensitive) && endsName(rest, name.size())) {
                    ref = candidate;
                    length = name.size();
                }
            }
        }
        if (!ref) {
            // Say what is wrong with the form before saying that a name is unknown.
            qsizetype end = 0;
            while (end < rest.size() && !endsName(rest, end))
                ++end;
            if (end == 0)
                malformed(text, QStringLiteral("it does not begin with a field"));
            if (!findOperator(rest.mid(end).trimmed()))
                malformed(text, QStringLiteral("no operator follows the field"));
            lookUp(rest.left(end), text);
        }
        rest = rest.mid(length).trimmed();
        const auto op = findOperator(rest);
        if (!op)
            malformed(text, rest.isEmpty() ? QStringLiteral("no operator follows the field")
                                           : QStringLiteral("\"%1\" is no operator (=, <>, <, >, <=, >=, like, not like, includes, "
                                                            "excludes, is true, is false)")
                                                 .arg(rest.section(QLatin1Char(' '), 0, 0)));
        EComparisonOperations operation = op->first;
        QString value = rest.mid(op->second).trimmed();
        if (value.size() >= 2 && (value.front() == QLatin1Char('\'') || value.front() == QLatin1Char('"')) && value.back() == value.front())
            value = value.mid(1, value.size() - 2);
        const bool takesValue = operation != kvoOP_IsTrue && operation != kvoOP_IsFalse;
        if (takesValue && rest.mid(op->second).trimmed().isEmpty())
            malformed(text, QStringLiteral("no value follows \"%1\"").arg(operationText(operation)));
        if (!takesValue && !value.isEmpty())
            malformed(text, QStringLiteral("\"%1\" takes no value").arg(operationText(operation)));

        const auto columns = m_session.columnsPtr();
        const FilterComparisonClasses comparisonClass = CSearchFilter::FilterFieldClass(ref->field, ref->table, *columns);
        if (comparisonClass == kvoCC_Unknown)
            fail(QStringLiteral("the field %1 of term \"%2\" cannot be filtered on").arg(ref->field, text));
        // "Approved = true" reads as the boolean test it means.
        if (comparisonClass == kvoCC_Boolean && operation == kvoOP_Equals && Value(value).toBoolean().ok()) {
            operation = Value(value).toBoolean().value() ? kvoOP_IsTrue : kvoOP_IsFalse;
            value.clear();
        }
        const bool suits = comparisonClass == kvoCC_Keyword ? (operation == kvoOP_Includes || operation == kvoOP_Excludes) : true;
        auto term = terms.Add(conjunction, ref->table, ref->field, comparisonClass, operation, value);
        if (!term)
            fail(QStringLiteral("cannot add the term \"%1\"").arg(text));
        if (!suits || (comparisonClass != kvoCC_Keyword && term->SQLOperator().isEmpty()))
            usageError(QStringLiteral("\"%1\" does not apply to %2, %3 field; use %4")
                     .arg(operationText(operation), ref->field, classText(comparisonClass), operatorsOf(comparisonClass)));
        if (comparisonClass != kvoCC_Boolean && term->SQLCompareTo().isEmpty())
            fail(QStringLiteral("\"%1\" in term \"%2\" is not %3, which %4 compares with").arg(value, text, classText(comparisonClass), ref->field));
    }

private:
    static std::optional<std::pair<EComparisonOperations, qsizetype>> findOperator(const QString& rest)
    {
        for (const OperatorWord& o : kOperators) {
            const QString spelled = QLatin1String(o.text);
            if (rest.startsWith(spelled, Qt::CaseInsensitive) && (!o.word || rest.size() == spelled.size() || rest[spelled.size()].isSpace()))
                return std::make_pair(o.operation, spelled.size());
        }
        return std::nullopt;
    }

    FieldRef lookUp(const QString& name, const QString& term) const
    {
        for (const auto& [known, ref] : m_names)
            if (TextEquals(known, name.trimmed(), 1))
                return ref;
        QStringList names;
        for (const auto& c : m_session.columns())
            names << c->Name();
        for (const CatalogColumn& f : m_session.baseTable()->columns)
            names << f.name;
        fail(QStringLiteral("unknown field \"%1\" in term \"%2\": %3 has %4").arg(name, term, m_session.tableName(), names.join(QStringLiteral(", "))));
    }

    const Session& m_session;
    QList<std::pair<QString, FieldRef>> m_names;
};

std::shared_ptr<CFilterTerms> termsOf(const Invocation& inv, const Session& session)
{
    auto terms = std::make_shared<CFilterTerms>(session.columnsPtr());
    const TermReader reader(session);
    for (const ParsedOption& o : inv.options) {
        EConjunctions conjunction;
        if (o.name == QLatin1String("where"))
            conjunction = kvoCJ_None;
        else if (o.name == QLatin1String("and"))
            conjunction = kvoCJ_And;
        else if (o.name == QLatin1String("or"))
            conjunction = kvoCJ_OR;
        else
            continue;
        if ((conjunction == kvoCJ_None) != (terms->Count() == 0))
            usageError(terms->Count() == 0 ? QStringLiteral("the first term is given with --where, the others with --and or --or")
                                           : QStringLiteral("--where gives the first term only; join the others with --and or --or"));
        reader.add(*terms, conjunction, o.value);
    }
    if (!terms->HasTerms())
        usageError(QStringLiteral("give a filter: --where TERM [--and TERM | --or TERM ...]"));
    return terms;
}

QString termText(const CFilterTerm& term)
{
    QString text = term.Field() + QLatin1Char(' ') + operationText(term.Operation());
    if (term.Operation() != kvoOP_IsTrue && term.Operation() != kvoOP_IsFalse)
        text += QLatin1Char(' ') + term.CompareTo();
    return text;
}

QString filterText(const CFilterTerms& terms)
{
    QString text;
    for (const auto& term : terms) {
        if (!text.isEmpty())
            text += term->Conjunction() == kvoCJ_OR ? QStringLiteral(" OR ") : QStringLiteral(" AND ");
        text += termText(*term);
    }
    return text;
}

QString variantText(const QVariant& v)
{
    if (v.typeId() == QMetaType::QString)
        return QLatin1Char('\'') + v.toString() + QLatin1Char('\'');
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    return v.toString();
}

QJsonValue variantJson(const QVariant& v)
{
    if (v.typeId() == QMetaType::QDateTime)
        return v.toDateTime().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    return QJsonValue::fromVariant(v);
}

/// Prints the filter, its SQL as asked, and the records it selects.
int runFilter(const Invocation& inv, Session& session, const CFilterTerms& terms)
{
    clearLibraryReports();
    const QString sql = terms.SQLString();
    const ParameterizedSql params = terms.SQLStringWithParameters();
    if (sql.isEmpty())
        failWithReason(QStringLiteral("the filter gives no SQL"));
    DatabaseHandler& db = session.db();
    CSearchFilter& search = *session.search();
    // The way a host joins the search table in: its fields by caption, beside the base table's.
    QString select = QStringLiteral("SELECT ") + db.BracketName(session.tableName()) + QStringLiteral(".*");
    QString from = db.BracketName(session.tableName());
    if (!search.SQLSearchTable().isEmpty()) {
        select += QStringLiteral(", ") + search.SQLSearchFields();
        from += QStringLiteral(" LEFT JOIN ") + search.SQLSearchTable() + QStringLiteral(" ON ") + search.SQLSearchJoinOn();
    }
    const QString query = select + QStringLiteral(" FROM ") + from + QStringLiteral(" WHERE ") + params.sql + QStringLiteral(" ORDER BY ")
                          + db.QualifiedName(session.tableName(), session.keyName());
    auto rs = db.OpenSqlRecordset(query, params.values);
    if (!rs)
        failWithReason(QStringLiteral("the database refused the filter"));
    const int limit = inv.intValue(QStringLiteral("limit"), 20, 0, std::numeric_limits<int>::max());
    const QStringList fields = rs->fieldNames();

    Output& output = Output::instance();
    if (output.json()) {
        QJsonArray termList;
        for (const auto& t : terms)
            termList.append(QJsonObject{{QStringLiteral("conjunction"), t->Conjunction() == kvoCJ_OR ? QStringLiteral("or")
                                                                         : t->Conjunction() == kvoCJ_And ? QStringLiteral("and")
                                                                                                        : QString()},
                                        {QStringLiteral("field"), t->Field()},
                                        {QStringLiteral("table"), t->Table()},
                                        {QStringLiteral("operator"), operationText(t->Operation())},
                                        {QStringLiteral("compareTo"), t->CompareTo()}});
        QJsonArray values;
        for (const QVariant& v : params.values)
            values.append(variantJson(v));
        QJsonArray records;
        for (int n = 0; !rs->EndOfFile() && (limit == 0 || n < limit); rs->MoveNext(), ++n) {
            QJsonObject record;
            for (const QString& f : fields)
                record.insert(f, valueJson(rs->field(f)));
            records.append(record);
        }
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("terms"), termList},
                                     {QStringLiteral("sql"), sql},
                                     {QStringLiteral("parameterized"), QJsonObject{{QStringLiteral("sql"), params.sql}, {QStringLiteral("values"), values}}},
                                     {QStringLiteral("count"), qint64(rs->RecordCount())},
                                     {QStringLiteral("records"), records}});
        return ExitSuccess;
    }

    QTextStream& out = output.out();
    out << "filter on " << session.tableName() << ": " << filterText(terms) << '\n';
    if (inv.has(QStringLiteral("sql")))
        out << "SQL: " << sql << '\n';
    if (inv.has(QStringLiteral("params"))) {
        QStringList values;
        for (const QVariant& v : params.values)
            values << variantText(v);
        out << "parameterized: " << params.sql << '\n' << "parameters: " << values.join(QStringLiteral(", ")) << '\n';
    }
    out << rs->RecordCount() << (rs->RecordCount() == 1 ? " record matches" : " records match") << '\n';
    QList<QStringList> rows = {fields};
    for (int n = 0; !rs->EndOfFile() && (limit == 0 || n < limit); rs->MoveNext(), ++n) {
        QStringList row;
        for (const QString& f : fields)
            row << rs->field(f).text();
        rows << row;
    }
    if (rows.size() > 1) {
        QList<qsizetype> widths(fields.size(), 0);
        for (const QStringList& row : rows)
            for (qsizetype i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], std::min<qsizetype>(row[i].size(), 40));
        for (const QStringList& row : rows) {
            QString line = QStringLiteral(" ");
            for (qsizetype i = 0; i < row.size(); ++i) {
                const QString cell = row[i].size() > 40 ? row[i].left(37) + QStringLiteral("...") : row[i];
                line += QLatin1Char(' ') + (i + 1 < row.size() ? cell.leftJustified(widths[i]) : cell);
            }
            out << line << '\n';
        }
        if (rs->RecordCount() > rows.size() - 1)
            out << "  ... " << rs->RecordCount() - (rows.size() - 1) << " more (--limit 0 shows all)\n";
    }
    out.flush();
    return ExitSuccess;
}

QString userKey(const Session& session)
{
    return QString::number(session.profile()->UserNumber());
}

EFilterDatabaseModes modeOf(const Invocation& inv)
{
    return inv.has(QStringLiteral("archive")) ? fltrDBMode_Archive : fltrDBMode_Normal;
}

int filterRecords(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto terms = termsOf(inv, session);
    return runFilter(inv, session, *terms);
}

int saveFilter(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto terms = termsOf(inv, session);
    clearLibraryReports();
    CSearchFilter::SaveFilter(terms.get(), session.columns(), session.profile().get(), userKey(session), modeOf(inv));
    session.checkProfileWritten(QStringLiteral("cannot save the filter"));
    if (!libraryReason().isEmpty())
        failWithReason(QStringLiteral("cannot save the filter"));
    Output::instance().note(QStringLiteral("filter of %1 saved in %2").arg(session.tableName(), session.profile()->fileName()));
    return runFilter(inv, session, *terms);
}

int loadFilter(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    clearLibraryReports();
    const auto terms = CSearchFilter::GetFilter(session.columnsPtr(), session.profile().get(), userKey(session), modeOf(inv));
    if (!terms || !terms->HasTerms())
        fail(QStringLiteral("no saved filter of %1 in %2; \"filter save\" keeps one").arg(session.tableName(), session.profile()->fileName()));
    return runFilter(inv, session, *terms);
}

QList<OptionSpec> outputOptions()
{
    return {
        {QStringLiteral("sql"), {}, QStringLiteral("also print the predicate as SQL text")},
        {QStringLiteral("params"), {}, QStringLiteral("also print the predicate with bound parameters, and their values")},
        {QStringLiteral("limit"), QStringLiteral("N"), QStringLiteral("records to print (default 20; 0 for all)")},
        {QStringLiteral("archive"), {}, QStringLiteral("the filter of the archive mode, kept apart from the normal one")},
    };
}

} // namespace

QList<CommandSpec> filterCommands()
{
    QList<OptionSpec> termOptions = {
        {QStringLiteral("where"), QStringLiteral("TERM"), QStringLiteral("first term, e.g. 'Customer = Acme Machine'")},
        {QStringLiteral("and"), QStringLiteral("TERM"), QStringLiteral("a term joined by AND")},
        {QStringLiteral("or"), QStringLiteral("TERM"), QStringLiteral("a term joined by OR")},
    };
    termOptions += outputOptions();
    const QString details = QStringLiteral(
        "A term is FIELD OPERATOR VALUE. FIELD is a search column (by name or caption) or a field of the base\n"
        "table (Table.Field where a column has the same name); a name may stand in double quotes.\n"
        "Operators: = <> < > <= >= for texts, numbers and dates; like and 'not like' (with % and _) for\n"
        "texts; includes and excludes for keywords; 'is true' and 'is false' for booleans.\n"
        "Terms are joined in the order given, as the filter dialog joins them.");
    return {
        {{QStringLiteral("filter")}, {}, QStringLiteral("Shows the records that meet a filter, and its SQL."), details, termOptions, 0, 0, true,
         filterRecords},
        {{QStringLiteral("filter"), QStringLiteral("save")}, {}, QStringLiteral("Keeps a filter in the profile as the user's last filter."), details,
         termOptions, 0, 0, true, saveFilter},
        {{QStringLiteral("filter"), QStringLiteral("load")}, {}, QStringLiteral("Runs the filter kept in the profile."), {}, outputOptions(), 0, 0,
         true, loadFilter},
    };
}

} // namespace searchdata::cli
