// values show|set|init, keywords add|remove and template save|paste: one record's values, through the
// routines of the entry control.

#include "Commands.h"
#include "ConsoleEntry.h"
#include "Output.h"
#include "Session.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

QString displayed(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("-") : text;
}

int showValues(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    printRecord(session, requiredRecord(inv, session));
    return ExitSuccess;
}

int setValues(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    QList<std::pair<std::shared_ptr<CFilterColumn>, QString>> changes;
    for (const QString& assignment : inv.arguments) {
        const qsizetype equals = assignment.indexOf(QLatin1Char('='));
        if (equals <= 0)
            usageError(QStringLiteral("\"%1\" is no assignment: write COLUMN=VALUE, e.g. \"PartNo=P-4711\"").arg(assignment));
        changes.append({session.column(assignment.left(equals).trimmed()), assignment.mid(equals + 1)});
    }
    {
        ConsoleEntry form(session.columnsPtr());
        form.edit(entry);
        for (const auto& [column, text] : changes)
            form.setValue(*column, text);
        form.save(entry);
    }
    printRecord(session, entry);
    return ExitSuccess;
}

int initValues(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    clearLibraryReports();
    if (!session.search()->InitializeSearchData(&entry))
        failWithReason(QStringLiteral("cannot give record %1 of %2 its default values").arg(entry.Id()).arg(session.tableName()));
    printRecord(session, entry);
    return ExitSuccess;
}

int changeKeywords(Invocation& inv, bool add)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    const std::shared_ptr<CFilterColumn> column = session.column(inv.arguments.first());
    const QStringList words = inv.arguments.mid(1);
    {
        ConsoleEntry form(session.columnsPtr());
        form.edit(entry);
        if (add) {
            for (const QString& word : form.addKeywords(*column, words))
                Output::instance().note(QStringLiteral("%1 holds \"%2\" already").arg(column->Name(), word));
        } else {
            form.removeKeywords(*column, words);
        }
        form.save(entry);
    }
    printRecord(session, entry);
    return ExitSuccess;
}

QString templateSection(const Session& session)
{
    return session.columns()._Template();
}

int saveTemplate(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    if (!session.search()->Exists())
        fail(QStringLiteral("%1 has no search columns").arg(session.tableName()));
    {
        ConsoleEntry form(session.columnsPtr());
        form.load(entry);
        clearLibraryReports();
        session.columns().SaveTemplate();
    }
    session.checkProfileWritten(QStringLiteral("cannot save the template"));
    if (!libraryReason().isEmpty())
        failWithReason(QStringLiteral("cannot save the template"));
    Output::instance().note(QStringLiteral("the values of record %1 are the template of %2 now, in %3")
                                .arg(entry.Id())
                                .arg(session.tableName(), session.profile()->fileName()));
    printRecord(session, entry);
    return ExitSuccess;
}

int pasteTemplate(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const RecordEntry entry = requiredRecord(inv, session);
    if (session.profile()->ReadTimestampText(templateSection(session), CFilterColumns::TimeStamp(), QString()).isEmpty())
        fail(QStringLiteral("no template of %1 in %2; \"template save\" makes one").arg(session.tableName(), session.profile()->fileName()));
    {
        ConsoleEntry form(session.columnsPtr());
        form.edit(entry);
        session.columns().CopyTemplate();
        form.save(entry);
    }
    printRecord(session, entry);
    return ExitSuccess;
}

} // namespace

void printRecord(Session& session, const RecordEntry& entry)
{
    ConsoleEntry form(session.columnsPtr());
    form.load(entry);
    Output& output = Output::instance();
    if (output.json()) {
        QJsonArray values;
        for (const auto& column : session.columns()) {
            QJsonObject o{{QStringLiteral("name"), column->Name()},
                          {QStringLiteral("caption"), column->Caption()},
                          {QStringLiteral("type"), typeWord(column->ColumnType())},
                          {QStringLiteral("text"), form.shownText(*column)}};
            if (column->ColumnType() == fcKeyword) {
                o.insert(QStringLiteral("keywords"), QJsonArray::fromStringList(form.shownList(*column)));
            } else {
                // A record without a date reads as the number 0; it holds no date.
                const Value saved = column->SavedValue();
                const bool noDate = column->ColumnType() == fcDateTime && saved.type() != Value::Type::DateTime;
                o.insert(QStringLiteral("value"), noDate ? QJsonValue(QJsonValue::Null) : valueJson(saved));
                if (column->IsPicklist())
                    o.insert(QStringLiteral("choices"), QJsonArray::fromStringList(form.shownList(*column)));
            }
            values.append(o);
        }
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("key"), session.keyName()},
                                     {QStringLiteral("record"), entry.Id()},
                                     {QStringLiteral("values"), values}});
        return;
    }
    QTextStream& out = output.out();
    out << session.tableName() << ' ' << session.keyName() << ' ' << entry.Id() << ":\n";
    qsizetype width = 0;
    for (const auto& column : session.columns())
        width = std::max(width, column->CaptionOrName().size());
    for (const auto& column : session.columns())
        out << "  " << (column->CaptionOrName() + QLatin1Char(':')).leftJustified(width + 2) << displayed(form.shownText(*column)) << '\n';
    if (session.columns().Count() == 0)
        out << "  (no search columns)\n";
    out.flush();
}

QList<CommandSpec> valueCommands()
{
    const QString assignDetails = QStringLiteral(
        "Each value is typed into the column's field as in the entry control: it must fit the column's type\n"
        "and size, a picklist column takes one of its entries, and nothing is saved unless every value fits.");
    return {
        {{QStringLiteral("values"), QStringLiteral("show")}, {}, QStringLiteral("Shows the search values of one record."), {},
         {recordOption()}, 0, 0, true, showValues},
        {{QStringLiteral("values"), QStringLiteral("set")}, QStringLiteral("COLUMN=VALUE..."),
         QStringLiteral("Sets search values of one record and saves them."), assignDetails, {recordOption()}, 1, -1, true, setValues},
        {{QStringLiteral("values"), QStringLiteral("init")}, {},
         QStringLiteral("Gives a record its search row with every column's default value."), {}, {recordOption()}, 0, 0, true, initValues},
        {{QStringLiteral("keywords"), QStringLiteral("add")}, QStringLiteral("COLUMN WORD..."),
         QStringLiteral("Adds keywords to a record's keyword column."), {}, {recordOption()}, 2, -1, true,
         [](Invocation& inv) { return changeKeywords(inv, true); }},
        {{QStringLiteral("keywords"), QStringLiteral("remove")}, QStringLiteral("COLUMN WORD..."),
         QStringLiteral("Removes keywords from a record's keyword column."), {}, {recordOption()}, 2, -1, true,
         [](Invocation& inv) { return changeKeywords(inv, false); }},
        {{QStringLiteral("template"), QStringLiteral("save")}, {},
         QStringLiteral("Makes a record's stored values the template of the base table, in the profile."), {}, {recordOption()}, 0, 0, true,
         saveTemplate},
        {{QStringLiteral("template"), QStringLiteral("paste")}, {},
         QStringLiteral("Puts the template's values into a record and saves them."), {}, {recordOption()}, 0, 0, true, pasteTemplate},
    };
}

} // namespace searchdata::cli
