// check [--repair] and populate: the schema check and the population check of a base table's search data.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/SchemaTool.h"
#include "searchdata/Value.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

/// The host's side of the questions a check puts: each question's table is noted, and the question
/// answered with `answer`.
class QuestionLog {
public:
    QuestionLog(DatabaseHandler& db, int answer) : m_db(db)
    {
        db.setQueryConversion([this, answer](const QString&, const QString& table, int) {
            if (!m_tables.contains(table))
                m_tables << table;
            return answer;
        });
    }
    ~QuestionLog() { m_db.setQueryConversion(nullptr); }
    /// Whether a question was put.
    bool asked() const { return !m_tables.isEmpty(); }
    /// The tables asked about, each once.
    const QStringList& tables() const { return m_tables; }

private:
    DatabaseHandler& m_db;
    QStringList m_tables;
};

/// The host's answer that ends a check at its first question, before anything changes.
constexpr int kEndCheck = 1;

/// One way in which the search tables differ from the definitions, in words.
struct Difference {
    QString kind;
    QString table;
    QString item;
    QString text;
};

QString kindWords(SchemaDifference::Kind kind)
{
    switch (kind) {
    case SchemaDifference::MissingTable:
        return QStringLiteral("missing table");
    case SchemaDifference::MissingColumn:
        return QStringLiteral("missing column");
    case SchemaDifference::OtherType:
        return QStringLiteral("other type");
    case SchemaDifference::OtherSize:
        return QStringLiteral("other size");
    case SchemaDifference::OtherNullability:
        return QStringLiteral("other nullability");
    case SchemaDifference::MissingIndex:
        return QStringLiteral("missing index");
    case SchemaDifference::MissingKey:
        return QStringLiteral("missing key");
    }
    return {};
}

/// Collects differences, each once.
class DifferenceList {
public:
    void add(const Difference& d)
    {
        for (const Difference& known : m_list)
            if (known.text == d.text)
                return;
        m_list.append(d);
    }
    void add(const SchemaDifference& d) { add({kindWords(d.kind), d.table, d.item, d.describe()}); }
    const QList<Difference>& list() const { return m_list; }

private:
    QList<Difference> m_list;
};

/// Whether a population check finds records without their search row or rows without their record.
/// Changes nothing: its question is answered with the end of the check.
bool populationDiffers(Session& session, bool checkOnly)
{
    QuestionLog log(session.db(), kEndCheck);
    session.columns().StartProcessDataReportProgress(nullptr, checkOnly, 0, QDateTime::currentDateTime());
    return log.asked();
}

/// The tables that the definitions need, compared with what the database has: the definition table,
/// each column's table with its fields (and with `keys` its indexes and keys), each picklist with its
/// relation, fields that no column names, and the search rows of the records.
void nameDifferences(Session& session, bool keys, DifferenceList& found)
{
    Catalog& catalog = *session.catalog();
    catalog.Refresh();
    CFilterColumns& columns = session.columns();
    SchemaTool& tool = columns.schemaTool();
    const int checks = keys ? smcEverything : smcColumns | smcColumnTypes | smcColumnNullability;
    if (const auto definitions = columns.MyStructureDefinition())
        for (const SchemaDifference& d : tool.TableDifferences(checks, catalog, *definitions))
            found.add(d);
    const QDateTime now = QDateTime::currentDateTime();
    for (const auto& column : columns) {
        if (column->ColumnType() < fcKeyword || column->ColumnType() > fcNote)
            continue; // a type without storage of this version's
        if (const auto structure = columns.MyStructureDefault(*column, now))
            for (const SchemaDifference& d : tool.TableDifferences(checks, catalog, *structure))
                found.add(d);
        const auto picklist = column->IsPicklist() ? columns.PicklistOf(*column) : nullptr;
        if (!picklist)
            continue;
        if (const auto structure = picklist->MyStructure())
            for (const SchemaDifference& d : tool.TableDifferences(checks, catalog, *structure))
                found.add(d);
        const StructureKey relation = picklist->MyRelation();
        const QString dataTable = columns.SearchKeyword(column.get());
        if (keys && GetCatalogTable(catalog, dataTable) && !GetTableKey(GetCatalogTable(catalog, dataTable), relation.name))
            found.add(SchemaDifference{SchemaDifference::MissingKey, dataTable, relation.name, {}, {}});
    }
    if (const CatalogTablePtr table = GetCatalogTable(catalog, columns.SearchKeyword(nullptr))) {
        for (const CatalogColumn& field : table->columns) {
            bool named = TextEquals(field.name, columns.KeyColumnName(), 1);
            for (const auto& column : columns)
                named = named || TextEquals(field.name, column->Name(), 1);
            if (!named)
                found.add({QStringLiteral("field without column"), table->name, field.name,
                           QStringLiteral("table %1: field %2 belongs to no column").arg(table->name, field.name)});
        }
    }
    if (columns.Count() > 0 && populationDiffers(session, true))
        found.add({QStringLiteral("search rows"), columns.SearchKeyword(nullptr), {},
                   QStringLiteral("records of %1 lack their search row, or search rows their record").arg(columns.BaseTableName())});
}

/// Every difference between the search tables and the definitions. Changes nothing.
QList<Difference> differences(Session& session, IProgress& progress, bool keys)
{
    // Mode 0 of the library's own check, asking before every change and answered with the end of the
    // check, tells whether anything differs; the tables are then compared here to name each difference.
    QStringList asked;
    {
        QuestionLog log(session.db(), kEndCheck);
        session.search()->CheckTable(&progress, 0, keys);
        asked = log.tables();
    }
    DifferenceList found;
    nameDifferences(session, keys, found);
    if (found.list().isEmpty())
        for (const QString& table : asked)
            found.add({QStringLiteral("other"), table, {}, QStringLiteral("table %1 differs from its definition").arg(table)});
    return found.list();
}

QJsonArray differencesJson(const QList<Difference>& list)
{
    QJsonArray array;
    for (const Difference& d : list)
        array.append(QJsonObject{{QStringLiteral("kind"), d.kind},
                                 {QStringLiteral("table"), d.table},
                                 {QStringLiteral("item"), d.item},
                                 {QStringLiteral("text"), d.text}});
    return array;
}

void printDifferences(QTextStream& out, const QList<Difference>& list)
{
    for (const Difference& d : list)
        out << "  " << d.text << '\n';
}

int checkTables(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const bool keys = !inv.has(QStringLiteral("no-keys"));
    if (inv.has(QStringLiteral("log")))
        Diagnostics::instance().setLogFile(inv.value(QStringLiteral("log")));
    StderrProgress progress;
    clearLibraryReports();
    const QList<Difference> found = differences(session, progress, keys);
    bool repaired = false;
    QList<Difference> left = found;
    if (!found.isEmpty() && inv.has(QStringLiteral("repair"))) {
        Diagnostics::instance().setConversionFailed(false);
        clearLibraryReports();
        int result = 0;
        {
            QuestionLog log(session.db(), 0);
            result = session.search()->CheckTable(&progress, 1, keys);
        }
        if (Diagnostics::instance().ConversionFailed() || result != 0)
            failWithReason(QStringLiteral("the repair of the search tables of %1 failed").arg(session.tableName()));
        repaired = true;
        // A second look shows whether the repair left anything.
        session.openSearch();
        left = differences(session, progress, keys);
    }

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("differences"), differencesJson(found)},
                                     {QStringLiteral("repaired"), repaired},
                                     {QStringLiteral("left"), differencesJson(left)},
                                     {QStringLiteral("inOrder"), left.isEmpty()}});
    } else {
        QTextStream& out = output.out();
        const QString table = session.tableName();
        if (found.isEmpty()) {
            out << "the search tables of " << table << " agree with their definitions\n";
        } else if (!repaired) {
            out << "the search tables of " << table << " differ from their definitions:\n";
            printDifferences(out, found);
            out << "\"check --repair\" repairs them\n";
        } else {
            out << "the search tables of " << table << " differed from their definitions:\n";
            printDifferences(out, found);
            if (left.isEmpty()) {
                out << "they were repaired and agree with their definitions now\n";
            } else {
                out << "they still differ after the repair:\n";
                printDifferences(out, left);
            }
        }
        out.flush();
    }
    // For scripts: differences that stay are a failure.
    return left.isEmpty() ? ExitSuccess : ExitFailure;
}

int populate(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    const bool checkOnly = inv.has(QStringLiteral("check"));
    // Asked before the first change, answering "stop" keeps the check from changing anything.
    QuestionLog log(session.db(), checkOnly ? kEndCheck : 0);
    clearLibraryReports();
    const int result = session.columns().StartProcessDataReportProgress(nullptr, checkOnly, checkOnly ? 0 : 1, QDateTime::currentDateTime());
    if (!checkOnly && result != 0)
        failWithReason(QStringLiteral("the population check of %1 ended early").arg(session.tableName()));
    if (!checkOnly && !libraryReason().isEmpty())
        failWithReason(QStringLiteral("the population check of %1 failed").arg(session.tableName()));
    const bool needed = log.asked();

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("checkOnly"), checkOnly},
                                     {QStringLiteral("repairNeeded"), needed}});
    } else if (checkOnly) {
        output.out() << (needed ? QStringLiteral("records of %1 lack search rows, or search rows lack their records; \"populate\" repairs them\n")
                                : QStringLiteral("every record of %1 has its search row, and no row is left over\n"))
                            .arg(session.tableName());
    } else {
        output.out() << QStringLiteral("every record of %1 has its search row now, and no row is left over\n").arg(session.tableName());
    }
    output.out().flush();
    return checkOnly && needed ? ExitFailure : ExitSuccess;
}

} // namespace

QList<CommandSpec> maintenanceCommands()
{
    return {
        {{QStringLiteral("check")}, {},
         QStringLiteral("Checks the search tables of the base table against the column definitions."),
         QStringLiteral("Without --repair nothing changes; the exit code is 1 when the tables differ."),
         {{QStringLiteral("repair"), {}, QStringLiteral("repairs what differs")},
          {QStringLiteral("no-keys"), {}, QStringLiteral("leaves indexes and keys out of the check")},
          {QStringLiteral("log"), QStringLiteral("FILE"), QStringLiteral("appends the schema changes to this file")}},
         0, 0, true, checkTables},
        {{QStringLiteral("populate")}, {},
         QStringLiteral("Gives every record its search row and deletes rows whose record is gone."),
         QStringLiteral("With --check nothing changes; the exit code is 1 when a repair is needed."),
         {{QStringLiteral("check"), {}, QStringLiteral("only tells whether a repair is needed")}}, 0, 0, true, populate},
    };
}

} // namespace searchdata::cli
