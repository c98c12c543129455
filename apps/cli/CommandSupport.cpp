// What the command groups share: the record option, type words, and values and columns as JSON.

#include "Commands.h"
#include "Session.h"

#include <QJsonArray>

namespace searchdata::cli {

namespace {

struct TypeWord {
    FilterColumnTypeConstants type;
    const char* word;
};

constexpr TypeWord kTypeWords[] = {
    {fcKeyword, "keyword"}, {fcText, "text"},         {fcInteger16, "int16"},  {fcInteger32, "int32"}, {fcSingle, "single"},
    {fcDouble, "double"},   {fcDateTime, "datetime"}, {fcBoolean, "boolean"}, {fcNote, "note"},
};

} // namespace

OptionSpec recordOption()
{
    return {QStringLiteral("record"), QStringLiteral("ID"), QStringLiteral("key of the record in the base table")};
}

RecordEntry requiredRecord(const Invocation& invocation, const Session& session)
{
    if (!invocation.has(QStringLiteral("record")))
        usageError(QStringLiteral("--record is required: the key of a record of %1").arg(session.tableName()));
    return session.record(invocation.value(QStringLiteral("record")));
}

QString typeWord(FilterColumnTypeConstants type)
{
    for (const TypeWord& t : kTypeWords)
        if (t.type == type)
            return QLatin1String(t.word);
    return QStringLiteral("undefined");
}

std::optional<FilterColumnTypeConstants> parseTypeWord(const QString& word)
{
    const QString w = word.trimmed().toLower();
    for (const TypeWord& t : kTypeWords)
        if (w == QLatin1String(t.word))
            return t.type;
    static const QHash<QString, FilterColumnTypeConstants> others = {
        {QStringLiteral("smallint"), fcInteger16}, {QStringLiteral("integer"), fcInteger32}, {QStringLiteral("int"), fcInteger32},
        {QStringLiteral("float"), fcSingle},       {QStringLiteral("date"), fcDateTime},      {QStringLiteral("bool"), fcBoolean},
    };
    if (const auto it = others.constFind(w); it != others.cend())
        return *it;
    return std::nullopt;
}

QJsonValue valueJson(const Value& value)
{
    switch (value.type()) {
    case Value::Type::Empty:
    case Value::Type::Null:
        return QJsonValue::Null;
    case Value::Type::Int16:
    case Value::Type::Int32:
        return value.toInt32().valueOr(0);
    case Value::Type::Single:
    case Value::Type::Double:
        return value.toDouble().valueOr(0);
    case Value::Type::Boolean:
        return value.toBoolean().valueOr(false);
    case Value::Type::DateTime: {
        const QDateTime d = value.toDateTime().valueOr(QDateTime());
        return d == Value::zeroDate() ? QJsonValue(QJsonValue::Null) : QJsonValue(d.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss")));
    }
    case Value::Type::Text:
        return value.text();
    }
    return QJsonValue::Null;
}

QJsonObject columnJson(const CFilterColumn& column)
{
    QJsonObject o{
        {QStringLiteral("position"), column.Index()},
        {QStringLiteral("name"), column.Name()},
        {QStringLiteral("caption"), column.Caption()},
        {QStringLiteral("description"), column.Description()},
        {QStringLiteral("type"), typeWord(column.ColumnType())},
        {QStringLiteral("typeName"), column.ColumnTypeName()},
        {QStringLiteral("size"), column.TextLengthInUI()},
        {QStringLiteral("isPicklist"), column.IsPicklist()},
        {QStringLiteral("picklistAllowBlanks"), column.PicklistAllowBlanks()},
        {QStringLiteral("picklistDefault"), column.PicklistDefault()},
        {QStringLiteral("dateTimeDefaultMode"), column.DateTimeDefaultMode() == fcDTDM_Now ? QStringLiteral("now") : QStringLiteral("configure")},
        {QStringLiteral("dateTimeDefaultValue"), valueJson(column.DateTimeDefaultValue())},
        {QStringLiteral("disableEditDateTime"), column.DisableEditDateTime()},
    };
    return o;
}

} // namespace searchdata::cli
