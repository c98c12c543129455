// import block, copy and merge: search data that comes from a data block, another record, or another
// database.

#include "Commands.h"
#include "Output.h"
#include "Session.h"

#include <QDir>
#include <QJsonArray>

namespace searchdata::cli {

namespace {

int importBlock(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    const QString path = inv.arguments.first();
    const QString logFolder = inv.value(QStringLiteral("log-folder"));
    if (!logFolder.isEmpty() && !QDir().mkpath(logFolder))
        fail(QStringLiteral("cannot make the folder %1 for the error log").arg(logFolder));
    clearLibraryReports();
    const DataBlockImport result = session.search()->ImportDataBlockFile(path, &entry, logFolder);
    if (!result.refused.isEmpty())
        fail(result.refused);
    if (!result.imported && result.errors == 0)
        fail(QStringLiteral("%1 holds no search data block (between \"Begin Search Data\" and \"End Search Data\")").arg(path));
    if (result.imported && !result.written)
        failWithReason(QStringLiteral("cannot save the values of %1 into record %2").arg(path).arg(entry.Id()));

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("file"), path},
                                     {QStringLiteral("record"), entry.Id()},
                                     {QStringLiteral("imported"), result.imported},
                                     {QStringLiteral("written"), result.written},
                                     {QStringLiteral("errors"), result.errors},
                                     {QStringLiteral("errorLog"), result.logFile}});
    } else {
        if (result.errors > 0)
            output.warning(QStringLiteral("%1 lines of %2 could not be imported%3")
                            .arg(result.errors)
                            .arg(path, result.logFile.isEmpty() ? QString() : QStringLiteral("; see %1").arg(result.logFile)));
        printRecord(session, entry);
    }
    // Scripts must see lines that failed; exit code 1 would claim that nothing changed, which holds only
    // when no line went in.
    if (result.errors == 0)
        return ExitSuccess;
    return result.written ? ExitPartlyImported : ExitFailure;
}

RecordEntry recordOf(const Invocation& inv, const Session& session, const QString& option)
{
    if (!inv.has(option))
        usageError(QStringLiteral("--%1 is required: the key of a record of %2").arg(option, session.tableName()));
    return session.record(inv.value(option));
}

int copyRecord(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry source = recordOf(inv, session, QStringLiteral("from"));
    const RecordEntry target = recordOf(inv, session, QStringLiteral("to"));
    if (source.Id() == target.Id())
        usageError(QStringLiteral("--from and --to name the same record"));
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    clearLibraryReports();
    if (!session.search()->CopyValuesWithinTable(&source, &target))
        failWithReason(QStringLiteral("cannot copy the values of record %1 to record %2; nothing was written").arg(source.Id()).arg(target.Id()));
    printRecord(session, target);
    return ExitSuccess;
}

int mergeDatabase(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    if (!inv.has(QStringLiteral("from")))
        usageError(QStringLiteral("--from is required: the database to merge from"));

    // The other database, opened as the program opens any: its table of the same name is the source.
    Invocation sourceInvocation;
    sourceInvocation.options = {{QStringLiteral("db"), inv.value(QStringLiteral("from"))}, {QStringLiteral("read-only"), {}}};
    if (inv.has(QStringLiteral("profile")))
        sourceInvocation.options.append({QStringLiteral("profile"), inv.value(QStringLiteral("profile"))});
    Session source(sourceInvocation);
    source.openSearch(session.tableName());
    if (!source.search()->Exists())
        fail(QStringLiteral("the table %1 of %2 has no search columns to merge").arg(session.tableName(), source.location()));

    // A merge takes over the other's columns, so it fills a table that has none of its own.
    if (session.search()->Exists())
        fail(QStringLiteral("%1 has search columns of its own; a merge brings the columns and values of %2 into a table without any")
                 .arg(session.tableName(), source.location()));
    for (const auto& column : source.columns())
        if (column->ColumnType() == fcKeyword)
            Output::instance().note(QStringLiteral("the keywords of %1 are not merged, only its column").arg(column->Name()));

    StderrProgress progress;
    clearLibraryReports();
    // One transaction from the first column to the last record: a merge that fails or is cut short
    // leaves the table as it was, and the next one starts afresh.
    TableTransaction transaction(session.db());
    if (!transaction.begun())
        failWithReason(QStringLiteral("cannot begin the merge from %1").arg(source.location()));
    if (session.search()->CopyConfiguration(&progress, source.search().get()) != fltrCCR_Success)
        failWithReason(QStringLiteral("cannot take over the columns of %1").arg(source.location()));

    // Records are matched by their key; a source record without its like here is passed over.
    const QList<qint32> targetIds = session.recordIds();
    const QSet<qint32> present(targetIds.cbegin(), targetIds.cend());
    int merged = 0;
    int passedOver = 0;
    for (const qint32 id : source.recordIds()) {
        if (!present.contains(id)) {
            ++passedOver;
            continue;
        }
        const auto sourceEntry = session.search()->MakeMergeBaseEntry(id);
        const auto targetEntry = session.search()->MakeMergeBaseEntry(id);
        if (!session.search()->MergeSearchData(targetEntry.get(), source.search().get(), sourceEntry.get()))
            failWithReason(QStringLiteral("the merge from %1 failed at record %2; nothing was merged").arg(source.location()).arg(id));
        if (++merged % 250 == 0)
            Output::instance().progress(QStringLiteral("merged %1 records").arg(merged));
    }
    if (!session.search()->CopyCleanup() || !transaction.commit())
        failWithReason(QStringLiteral("the merge from %1 could not be completed; nothing was merged").arg(source.location()));

    Output& output = Output::instance();
    if (output.json()) {
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("from"), source.location()},
                                     {QStringLiteral("merged"), merged},
                                     {QStringLiteral("passedOver"), passedOver}});
    } else {
        output.out() << "merged the search data of " << merged << " records of " << session.tableName() << " from " << source.location() << '\n';
        if (passedOver > 0)
            output.out() << passedOver << " records of " << source.location() << " have no record of the same key here and were passed over\n";
        output.out().flush();
    }
    return ExitSuccess;
}

} // namespace

QList<CommandSpec> dataCommands()
{
    return {
        {{QStringLiteral("import"), QStringLiteral("block")}, QStringLiteral("FILE"),
         QStringLiteral("Imports the search data block of a file into a record."),
         QStringLiteral("The block stands between \"Begin Search Data\" and \"End Search Data\", one \"Column: value\" a line.\n"
                        "Lines that cannot be imported are written to an error log. When other lines were saved, the exit\n"
                        "code is 3: the record holds what could be imported. When no line could be, it is 1, and the record\n"
                        "is unchanged."),
         {recordOption(), {QStringLiteral("log-folder"), QStringLiteral("DIR"), QStringLiteral("where the error log goes (default: the file's folder)")}},
         1, 1, true, importBlock},
        {{QStringLiteral("copy")}, {}, QStringLiteral("Copies a record's search values and keywords to another record."),
         QStringLiteral("Blank values of the source leave the target's values alone; the target's keywords are replaced."),
         {{QStringLiteral("from"), QStringLiteral("ID"), QStringLiteral("key of the record to copy from")},
          {QStringLiteral("to"), QStringLiteral("ID"), QStringLiteral("key of the record to copy to")}},
         0, 0, true, copyRecord},
        {{QStringLiteral("merge")}, {}, QStringLiteral("Merges the search data of the same table of another database."),
         QStringLiteral("The table, which has no search columns yet, takes over the other's columns. Records are matched\n"
                        "by their key and take the other's values; keywords are not merged."),
         {{QStringLiteral("from"), QStringLiteral("DB"), QStringLiteral("the database to merge from, as --db")}}, 0, 0, true, mergeDatabase},
    };
}

} // namespace searchdata::cli
