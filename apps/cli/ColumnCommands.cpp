// columns list|add|edit|move|delete: the definitions of a base table's search columns, saved through
// the collection's own save.

#include "Commands.h"
#include "ConsoleEntry.h"
#include "Output.h"
#include "Session.h"
#include "searchdata/Resources.h"
#include "searchdata/Validation.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

bool hasSize(FilterColumnTypeConstants type)
{
    return type == fcKeyword || type == fcText;
}

bool mayBePicklist(FilterColumnTypeConstants type)
{
    return type != fcKeyword && type != fcBoolean && type != fcNote && type != fcUndefined;
}

QString defaultText(const CFilterColumn& c)
{
    if (c.ColumnType() == fcDateTime && !c.IsPicklist()) {
        if (c.DateTimeDefaultMode() == fcDTDM_Now)
            return c.DisableEditDateTime() ? QStringLiteral("now (fixed)") : QStringLiteral("now");
        return c.DateTimeDefaultValue().isBlank() ? QString() : c.DateTimeDefaultValue().text();
    }
    return c.PicklistDefault();
}

void printColumns(Session& session)
{
    Output& output = Output::instance();
    CFilterColumns& columns = session.columns();
    if (output.json()) {
        QJsonArray list;
        for (const auto& c : columns)
            list.append(columnJson(*c));
        output.printJson(QJsonObject{{QStringLiteral("table"), session.tableName()},
                                     {QStringLiteral("key"), session.keyName()},
                                     {QStringLiteral("columns"), list}});
        return;
    }
    QTextStream& out = output.out();
    out << "search columns of " << session.tableName() << " (key " << session.keyName() << "): " << columns.Count() << '\n';
    if (columns.Count() == 0) {
        out.flush();
        return;
    }
    QList<QStringList> rows = {{QStringLiteral("#"), QStringLiteral("name"), QStringLiteral("type"), QStringLiteral("size"),
                                QStringLiteral("caption"), QStringLiteral("picklist"), QStringLiteral("default"), QStringLiteral("description")}};
    for (const auto& c : columns) {
        const QString picklist = !c->IsPicklist() ? QStringLiteral("-")
                                 : c->PicklistAllowBlanks() ? QStringLiteral("yes, blanks allowed")
                                                            : QStringLiteral("yes");
        rows.append({QString::number(c->Index()), c->Name(), typeWord(c->ColumnType()),
                     hasSize(c->ColumnType()) || c->ColumnType() == fcNote ? QString::number(c->TextLengthInUI()) : QStringLiteral("-"),
                     c->Caption().isEmpty() ? QStringLiteral("-") : c->Caption(), picklist,
                     defaultText(*c).isEmpty() ? QStringLiteral("-") : defaultText(*c),
                     c->Description().isEmpty() ? QStringLiteral("-") : c->Description()});
    }
    QList<qsizetype> widths(rows.first().size(), 0);
    for (const QStringList& row : rows)
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const QStringList& row : rows) {
        QString line = QStringLiteral(" ");
        for (qsizetype i = 0; i < row.size(); ++i)
            line += QLatin1Char(' ') + (i + 1 < row.size() ? row[i].leftJustified(widths[i]) : row[i]);
        out << line << '\n';
    }
    out.flush();
}

int listColumns(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    printColumns(session);
    return ExitSuccess;
}

/// A name or caption must not be taken by a field of the base table or by another column, since the
/// filter and the data block find columns by either.
void checkNames(const Session& session, const CFilterColumn* self, const QString& name, const QString& caption)
{
    const QString what = self ? self->Name() : name;
    auto taken = [&](const QString& text, const QString& role) {
        if (text.isEmpty())
            return;
        for (const CatalogColumn& field : session.baseTable()->columns)
            if (TextEquals(text, field.name, 1))
                fail(QStringLiteral("the %1 \"%2\" of %3 is a field of the table %4 already").arg(role, text, what, session.tableName()));
        for (const auto& other : session.columns()) {
            if (other.get() == self)
                continue;
            if (TextEquals(text, other->Name(), 1) || (!other->Caption().isEmpty() && TextEquals(text, other->Caption(), 1)))
                fail(QStringLiteral("the %1 \"%2\" of %3 is taken by the column %4").arg(role, text, what, other->Name()));
        }
    };
    taken(name, QStringLiteral("name"));
    taken(caption, QStringLiteral("caption"));
}

/// A default of a text or note column, refused as a value would be when its field does not take it.
QString fittingText(const CFilterColumn& column, const QString& text)
{
    ConsoleTextBox field;
    typeInto(column, &field, text, column.TextLengthInUI());
    return text;
}

/// The stored form of a picklist default: the text fitted to the column, a number or a date in one form.
QString picklistDefaultOf(const CFilterColumn& column, const QString& text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    if (column.SQLFormatPicklistValue(trimmed).isEmpty())
        usageError(QStringLiteral("the default \"%1\" does not fit the column %2: %3").arg(text, column.Name(), column.ValidationPrompt()));
    switch (column.ColumnType()) {
    case fcText:
        return fittingText(column, trimmed);
    case fcDateTime:
        return Value(trimmed).toDateTime().value().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss"));
    case fcInteger16:
        return Value(trimmed).convertTo(Value::Type::Int16).value().text();
    case fcInteger32:
        return Value(trimmed).convertTo(Value::Type::Int32).value().text();
    case fcSingle:
        return Value(trimmed).convertTo(Value::Type::Single).value().text();
    default:
        return Value(trimmed).convertTo(Value::Type::Double).value().text();
    }
}

bool flag(const Invocation& inv, const QString& on, const QString& off, bool current)
{
    if (inv.has(on) && inv.has(off))
        usageError(QStringLiteral("--%1 and --%2 exclude each other").arg(on, off));
    return inv.has(on) ? true : inv.has(off) ? false : current;
}

/// Applies the definition options to `column`, checking them against its type first.
void applyDefinition(const Invocation& inv, const Session& session, CFilterColumn& column, bool isNew)
{
    const FilterColumnTypeConstants type = column.ColumnType();
    if (inv.has(QStringLiteral("size"))) {
        if (!hasSize(type))
            usageError(QStringLiteral("--size applies to keyword and text columns; %1 is a %2 column").arg(column.Name(), typeWord(type)));
        const int size = inv.intValue(QStringLiteral("size"), 0, 1, 255);
        if (!isNew && size != column.TextLengthInUI() && !inv.has(QStringLiteral("drop-values")))
            fail(QStringLiteral("a new size for %1 drops the values it holds; add --drop-values to go ahead").arg(column.Name()));
        column.setTextLengthInUI(static_cast<qint16>(size));
    }
    const QString caption = inv.has(QStringLiteral("caption")) ? inv.value(QStringLiteral("caption")).trimmed() : column.Caption();
    checkNames(session, &column, isNew ? column.Name() : QString(), caption);
    column.setCaption(caption);
    if (inv.has(QStringLiteral("description")))
        column.setDescription(inv.value(QStringLiteral("description")).trimmed());

    const bool picklist = flag(inv, QStringLiteral("picklist"), QStringLiteral("no-picklist"), column.IsPicklist());
    if (picklist && !mayBePicklist(type))
        usageError(QStringLiteral("a %1 column cannot have a picklist").arg(typeWord(type)));
    const bool blanks = flag(inv, QStringLiteral("allow-blanks"), QStringLiteral("no-allow-blanks"), column.PicklistAllowBlanks());
    if (inv.has(QStringLiteral("allow-blanks")) && (!picklist || type != fcText))
        usageError(QStringLiteral("--allow-blanks applies to text columns with a picklist"));
    if (!isNew && picklist != column.IsPicklist())
        Output::instance().note(picklist ? QStringLiteral("%1 becomes a picklist column: its stored values become its entries").arg(column.Name())
                                         : QStringLiteral("%1 is no picklist column any more: its list is dropped, its values stay").arg(column.Name()));
    column.setIsPicklist(picklist);
    column.setPicklistAllowBlanks(picklist && blanks);

    if (inv.has(QStringLiteral("default")) && inv.has(QStringLiteral("no-default")))
        usageError(QStringLiteral("--default and --no-default exclude each other"));
    if (inv.has(QStringLiteral("default")) || inv.has(QStringLiteral("no-default"))) {
        const QString text = inv.has(QStringLiteral("no-default")) ? QString() : inv.value(QStringLiteral("default"));
        if (picklist)
            column.setPicklistDefault(picklistDefaultOf(column, text));
        else if (type == fcNote)
            column.setPicklistDefault(fittingText(column, text.trimmed()));
        else
            usageError(type == fcDateTime ? QStringLiteral("a date column without a picklist takes --date-default")
                                          : QStringLiteral("--default applies to picklist and note columns"));
    } else if (!picklist && type != fcNote) {
        column.setPicklistDefault(QString());
    }
    if (picklist && type == fcText && !column.PicklistAllowBlanks() && column.PicklistDefault().isEmpty())
        usageError(QStringLiteral("a text picklist that allows no blanks needs a --default"));

    if (inv.has(QStringLiteral("date-default")) || inv.has(QStringLiteral("disable-edit-time")) || inv.has(QStringLiteral("enable-edit-time"))) {
        if (type != fcDateTime || picklist)
            usageError(QStringLiteral("--date-default and the edit-time options apply to date columns without a picklist"));
    }
    if (type == fcDateTime && !picklist) {
        if (inv.has(QStringLiteral("date-default"))) {
            const QString text = inv.value(QStringLiteral("date-default")).trimmed();
            if (text.compare(QLatin1String("now"), Qt::CaseInsensitive) == 0) {
                column.setDateTimeDefaultMode(fcDTDM_Now);
                column.setDateTimeDefaultValue(Value::null());
            } else if (text.compare(QLatin1String("none"), Qt::CaseInsensitive) == 0 || text.isEmpty()) {
                column.setDateTimeDefaultMode(fcDTDM_Configure);
                column.setDateTimeDefaultValue(Value::null());
            } else {
                const Result<QDateTime> date = ParseDateText(text);
                if (!date)
                    usageError(QStringLiteral("--date-default takes \"now\", \"none\" or a date such as 2024-05-31, not \"%1\"").arg(text));
                column.setDateTimeDefaultMode(fcDTDM_Configure);
                column.setDateTimeDefaultValue(Value(date.value()));
            }
        }
        const bool fixed = flag(inv, QStringLiteral("disable-edit-time"), QStringLiteral("enable-edit-time"), column.DisableEditDateTime());
        if (fixed && column.DateTimeDefaultMode() != fcDTDM_Now)
            usageError(QStringLiteral("--disable-edit-time needs --date-default now"));
        column.setDisableEditDateTime(column.DateTimeDefaultMode() == fcDTDM_Now && fixed);
    }
}

void saveColumns(Session& session)
{
    StderrProgress progress;
    clearLibraryReports();
    if (!session.columns().ColumnsSave(&progress))
        failWithReason(QStringLiteral("cannot save the columns of %1; nothing was changed").arg(session.tableName()));
    session.columns().ColumnsFetch();
}

int addColumn(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const QString name = inv.arguments.first().trimmed();
    if (const QString refusal = ColumnNameRefusal(name); !refusal.isEmpty())
        usageError(refusal);
    if (!inv.has(QStringLiteral("type")))
        usageError(QStringLiteral("--type is required: keyword, text, int16, int32, single, double, datetime, boolean or note"));
    const auto type = parseTypeWord(inv.value(QStringLiteral("type")));
    if (!type)
        usageError(QStringLiteral("unknown type \"%1\": keyword, text, int16, int32, single, double, datetime, boolean or note")
                       .arg(inv.value(QStringLiteral("type"))));
    if (session.columns().Item(name) && TextEquals(session.columns().Item(name)->Name(), name, 1))
        fail(QStringLiteral("%1 has a column %2 already").arg(session.tableName(), name));
    checkNames(session, nullptr, name, QString());

    const qint16 size = hasSize(*type) ? 50 : *type == fcNote ? 255 : 0;
    clearLibraryReports();
    const auto column = session.columns().Add(name, QString(), QString(), *type, size, false, false);
    if (!column)
        failWithReason(QStringLiteral("cannot add the column %1").arg(name));
    column->setIsNew(true);
    applyDefinition(inv, session, *column, true);
    saveColumns(session);
    printColumns(session);
    return ExitSuccess;
}

int editColumn(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    applyDefinition(inv, session, *column, false);
    saveColumns(session);
    printColumns(session);
    return ExitSuccess;
}

int moveColumn(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    const int ways = int(inv.has(QStringLiteral("up"))) + int(inv.has(QStringLiteral("down"))) + int(inv.has(QStringLiteral("to")));
    if (ways != 1)
        usageError(QStringLiteral("give one of --up, --down or --to POSITION"));
    CFilterColumns& columns = session.columns();
    int target = column->Index() + (inv.has(QStringLiteral("up")) ? -1 : inv.has(QStringLiteral("down")) ? 1 : 0);
    if (inv.has(QStringLiteral("to")))
        target = inv.intValue(QStringLiteral("to"), 1, 1, columns.Count());
    if (target < 1 || target > columns.Count())
        fail(QStringLiteral("%1 is the %2 column already").arg(column->Name(), target < 1 ? QStringLiteral("first") : QStringLiteral("last")));
    while (column->Index() > target && columns.MoveColumnUp(column)) {
    }
    while (column->Index() < target && columns.MoveColumnDown(column)) {
    }
    saveColumns(session);
    printColumns(session);
    return ExitSuccess;
}

int deleteColumn(Invocation& inv)
{
    Session session(inv);
    session.openSearch();
    const auto column = session.column(inv.arguments.first());
    if (!inv.has(QStringLiteral("yes")))
        usageError(QStringLiteral("deleting %1 drops every value it holds; add --yes to go ahead").arg(column->Name()));
    session.columns().RemoveColumn(column->Name());
    saveColumns(session);
    printColumns(session);
    return ExitSuccess;
}

QList<OptionSpec> definitionOptions()
{
    return {
        {QStringLiteral("size"), QStringLiteral("N"), QStringLiteral("characters of a keyword or text column, 1 to 255 (new: 50)")},
        {QStringLiteral("caption"), QStringLiteral("TEXT"), QStringLiteral("caption shown instead of the name")},
        {QStringLiteral("description"), QStringLiteral("TEXT"), QStringLiteral("help text of the column")},
        {QStringLiteral("picklist"), {}, QStringLiteral("values come from the column's picklist")},
        {QStringLiteral("no-picklist"), {}, QStringLiteral("no picklist any more (the values stay)")},
        {QStringLiteral("allow-blanks"), {}, QStringLiteral("a text picklist also takes a blank value")},
        {QStringLiteral("no-allow-blanks"), {}, QStringLiteral("a text picklist takes no blank value")},
        {QStringLiteral("default"), QStringLiteral("VALUE"), QStringLiteral("default of a picklist or note column")},
        {QStringLiteral("no-default"), {}, QStringLiteral("no default")},
        {QStringLiteral("date-default"), QStringLiteral("now|none|DATE"), QStringLiteral("default of a date column")},
        {QStringLiteral("disable-edit-time"), {}, QStringLiteral("a date column's time of \"now\" cannot be edited")},
        {QStringLiteral("enable-edit-time"), {}, QStringLiteral("a date column's time can be edited")},
    };
}

} // namespace

QList<CommandSpec> columnCommands()
{
    QList<OptionSpec> addOptions = definitionOptions();
    addOptions.prepend({QStringLiteral("type"), QStringLiteral("TYPE"),
                        QStringLiteral("keyword, text, int16, int32, single, double, datetime, boolean or note")});
    QList<OptionSpec> editOptions = definitionOptions();
    editOptions.append({QStringLiteral("drop-values"), {}, QStringLiteral("allows a new size, which drops the column's values")});
    return {
        {{QStringLiteral("columns"), QStringLiteral("list")}, {}, QStringLiteral("Lists the search columns of the base table."), {}, {}, 0, 0, true,
         listColumns},
        {{QStringLiteral("columns"), QStringLiteral("add")}, QStringLiteral("NAME"), QStringLiteral("Defines a new search column at the end."),
         QStringLiteral("Records that exist get the column's default value."), addOptions, 1, 1, true, addColumn},
        {{QStringLiteral("columns"), QStringLiteral("edit")}, QStringLiteral("NAME"), QStringLiteral("Changes the definition of a search column."),
         QStringLiteral("Name and type of a stored column are fixed. A new size drops the column's values."), editOptions, 1, 1, true,
         editColumn},
        {{QStringLiteral("columns"), QStringLiteral("move")}, QStringLiteral("NAME"), QStringLiteral("Moves a search column in the order."), {},
         {{QStringLiteral("up"), {}, QStringLiteral("one place up")},
          {QStringLiteral("down"), {}, QStringLiteral("one place down")},
          {QStringLiteral("to"), QStringLiteral("POSITION"), QStringLiteral("to this position, from 1")}},
         1, 1, true, moveColumn},
        {{QStringLiteral("columns"), QStringLiteral("delete")}, QStringLiteral("NAME"),
         QStringLiteral("Deletes a search column with its values and picklist."), {},
         {{QStringLiteral("yes"), {}, QStringLiteral("confirms that the column's values go")}}, 1, 1, true, deleteColumn},
    };
}

} // namespace searchdata::cli
