// picklist list|add|hide|show|remove: the allowed values of a picklist column.

#include "Commands.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/PicklistEntries.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

struct Entry {
    QString text;
    bool hidden = false;
    bool used = false;
};

std::shared_ptr<CScPicklist> picklistOf(Session& session, const CFilterColumn& column)
{
    if (!column.IsPicklist())
        fail(QStringLiteral("%1 has no picklist (\"columns edit %1 --picklist\" gives it one)").arg(column.Name()));
    if (column.IsPicklistTableMissing())
        fail(QStringLiteral("the picklist table of %1 is missing; \"check --repair\" makes it").arg(column.Name()));
    auto picklist = session.columns().PicklistOf(column);
    if (!picklist)
        failWithReason(QStringLiteral("cannot open the picklist of %1").arg(column.Name()));
    return picklist;
}

/// The entries in the order of the table, with whether stored values use them.
QList<Entry> readEntries(Session& session, const CFilterColumn& column, CScPicklist& picklist)
{
    DatabaseHandler& db = session.db();
    clearLibraryReports();
    const Result<QList<PicklistEntry>> read = ReadPicklistEntries(db, column);
    if (!read)
        failWithReason(QStringLiteral("cannot read the picklist of %1").arg(column.Name()));
    QList<Entry> entries;
    for (const PicklistEntry& e : read.value()) {
        const QString literal = column.SQLPicklistLiteral(e.text);
        const bool used = !literal.isEmpty() && db.RowExists(column.Name(), picklist.DataTable(), literal).valueOr(true);
        entries.append({e.text, e.hidden, used});
    }
    return entries;
}

void printEntries(Session& session, const CFilterColumn& column, CScPicklist& picklist)
{
    const QList<Entry> entries = readEntries(session, column, picklist);
    Output& output = Output::instance();
    if (output.json()) {
        QJsonArray list;
        for (const Entry& e : entries)
            list.append(QJsonObject{{QStringLiteral("entry"), e.text},
                                    {QStringLiteral("hidden"), e.hidden},
                                    {QStringLiteral("inUse"), e.used},
                                    {QStringLiteral("default"), !column.PicklistDefault().isEmpty() && TextEquals(e.text, column.PicklistDefault(), 1)}});
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("column"), column.Name()},
                                     {QStringLiteral("allowBlanks"), column.PicklistAllowBlanks()},
                                     {QStringLiteral("default"), column.PicklistDefault()},
                                     {QStringLiteral("entries"), list}});
        return;
    }
    QTextStream& out = output.out();
    out << "picklist of " << session.tableName() << '.' << column.Name() << ": " << entries.size() << " entries\n";
    for (const Entry& e : entries) {
        QStringList marks;
        if (!column.PicklistDefault().isEmpty() && TextEquals(e.text, column.PicklistDefault(), 1))
            marks << QStringLiteral("default");
        if (e.hidden)
            marks << QStringLiteral("hidden");
        if (e.used)
            marks << QStringLiteral("in use");
        out << "  " << (e.text.isEmpty() ? QStringLiteral("(blank)") : e.text)
            << (marks.isEmpty() ? QString() : QStringLiteral("  [%1]").arg(marks.join(QStringLiteral(", ")))) << '\n';
    }
    out.flush();
}

int listPicklist(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    const auto picklist = picklistOf(session, *column);
    printEntries(session, *column, *picklist);
    return ExitSuccess;
}

int addEntries(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    const auto picklist = picklistOf(session, *column);
    const QStringList entries = inv.arguments.mid(1);
    const QList<Entry> present = readEntries(session, *column, *picklist);
    QStringList additions;
    for (const QString& text : entries) {
        if (text.trimmed().isEmpty())
            fail(QStringLiteral("a blank entry is kept by --allow-blanks of the column, not added"));
        if (column->SQLFormatPicklistValue(text).isEmpty())
            fail(QStringLiteral("\"%1\" does not fit the column %2: %3").arg(text, column->Name(), column->ValidationPrompt()));
        if (column->ColumnType() == fcText && text.trimmed().size() > column->TextLengthInUI())
            fail(QStringLiteral("\"%1\" does not fit the column %2: it takes at most %3 characters").arg(text, column->Name(), QString::number(column->TextLengthInUI())));
        // As in the picklist dialog, an entry is one text whatever its capitals.
        const auto same = std::find_if(present.cbegin(), present.cend(), [&](const Entry& e) { return TextEquals(e.text, text.trimmed(), 1); });
        if (same == present.cend() && !additions.contains(text.trimmed(), Qt::CaseInsensitive))
            additions << text.trimmed();
        else if (same != present.cend() && same->hidden)
            Output::instance().warning(QStringLiteral("\"%1\" is a hidden entry; \"picklist show\" offers it again").arg(same->text));
        else if (same != present.cend())
            Output::instance().note(QStringLiteral("\"%1\" is an entry already").arg(same->text));
    }
    clearLibraryReports();
    if (!additions.isEmpty() && !picklist->SaveAdditions(additions))
        failWithReason(QStringLiteral("cannot add to the picklist of %1; nothing was added").arg(column->Name()));
    printEntries(session, *column, *picklist);
    return ExitSuccess;
}

/// The entries of the list that `texts` name, as the table spells them; fails for a text that is no
/// entry, or that the command may not touch.
QStringList markedEntries(const QList<Entry>& entries, const CFilterColumn& column, const QStringList& texts, bool protectDefault)
{
    QStringList marked;
    for (const QString& text : texts) {
        const Entry* found = nullptr;
        for (const Entry& e : entries)
            if (!e.text.isEmpty() && TextEquals(e.text, text.trimmed(), 1))
                found = &e;
        if (!found)
            fail(QStringLiteral("the picklist of %1 has no entry \"%2\"").arg(column.Name(), text));
        if (protectDefault && TextEquals(found->text, column.PicklistDefault(), 1))
            fail(QStringLiteral("\"%1\" is the default of %2 and stays in its list").arg(found->text, column.Name()));
        if (!marked.contains(found->text))
            marked << found->text;
    }
    return marked;
}

int hideOrShow(Invocation& inv, bool hide)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    const auto picklist = picklistOf(session, *column);
    const QList<Entry> entries = readEntries(session, *column, *picklist);
    const QStringList marked = markedEntries(entries, *column, inv.arguments.mid(1), hide);
    clearLibraryReports();
    if (!HideShowCollection(*picklist, marked, hide ? 1 : 2))
        failWithReason(QStringLiteral("cannot %1 the entries; nothing was changed").arg(hide ? QStringLiteral("hide") : QStringLiteral("show")));
    printEntries(session, *column, *picklist);
    return ExitSuccess;
}

int removeEntries(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    const auto picklist = picklistOf(session, *column);
    const QList<Entry> entries = readEntries(session, *column, *picklist);
    const QStringList marked = markedEntries(entries, *column, inv.arguments.mid(1), true);
    // Hidden entries and visible ones go in separate batches, as the dialog removes them from its two tabs.
    QStringList hidden, visible;
    for (const QString& text : marked) {
        for (const Entry& e : entries)
            if (e.text == text)
                (e.hidden ? hidden : visible) << text;
    }
    clearLibraryReports();
    QStringList kept = RemovePicklistEntries(*picklist, hidden, true);
    QStringList keptVisible = RemovePicklistEntries(*picklist, visible, false);
    if (!keptVisible.isEmpty() && inv.has(QStringLiteral("hide-kept"))) {
        if (!HideShowCollection(*picklist, keptVisible, 1))
            failWithReason(QStringLiteral("cannot hide the entries that records use"));
        for (const QString& text : keptVisible)
            Output::instance().note(QStringLiteral("\"%1\" is in use and was hidden instead").arg(text));
        keptVisible.clear();
    }
    kept += keptVisible;
    if (!kept.isEmpty())
        Output::instance().warning(QStringLiteral("kept because records use %1: %2%3")
                                       .arg(kept.size() == 1 ? QStringLiteral("it") : QStringLiteral("them"), kept.join(QStringLiteral(", ")),
                                            inv.has(QStringLiteral("hide-kept")) ? QString()
                                                                                  : QStringLiteral(" (--hide-kept hides what cannot go)")));
    printEntries(session, *column, *picklist);
    return ExitSuccess;
}

} // namespace

QList<CommandSpec> picklistCommands()
{
    return {
        {{QStringLiteral("picklist"), QStringLiteral("list")}, QStringLiteral("COLUMN"),
         QStringLiteral("Lists the entries of a column's picklist, hidden ones too."), {}, {}, 1, 1, true, listPicklist},
        {{QStringLiteral("picklist"), QStringLiteral("add")}, QStringLiteral("COLUMN ENTRY..."),
         QStringLiteral("Adds entries to a column's picklist, all or none."), {}, {}, 2, -1, true, addEntries},
        {{QStringLiteral("picklist"), QStringLiteral("hide")}, QStringLiteral("COLUMN ENTRY..."),
         QStringLiteral("Hides entries: records keep them, new values cannot take them."), {}, {}, 2, -1, true,
         [](Invocation& inv) { return hideOrShow(inv, true); }},
        {{QStringLiteral("picklist"), QStringLiteral("show")}, QStringLiteral("COLUMN ENTRY..."),
         QStringLiteral("Offers hidden entries again."), {}, {}, 2, -1, true, [](Invocation& inv) { return hideOrShow(inv, false); }},
        {{QStringLiteral("picklist"), QStringLiteral("remove")}, QStringLiteral("COLUMN ENTRY..."),
         QStringLiteral("Removes entries that no record uses; entries in use are kept, and said so."), {},
         {{QStringLiteral("hide-kept"), {}, QStringLiteral("hides the entries that are kept because records use them")}}, 2, -1, true,
         removeEntries},
    };
}

} // namespace searchdata::cli
