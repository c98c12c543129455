#pragma once

// The commands of the program, one group per file, and what the groups share.

#include "CommandLine.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/Enums.h"
#include "searchdata/Value.h"

#include <QJsonObject>
#include <QJsonValue>
#include <optional>

namespace searchdata::cli {

class Session;
class RecordEntry;

QList<CommandSpec> demoCommands();
QList<CommandSpec> columnCommands();
QList<CommandSpec> valueCommands();
QList<CommandSpec> picklistCommands();
QList<CommandSpec> filterCommands();
QList<CommandSpec> maintenanceCommands();
QList<CommandSpec> dataCommands();

/// The option --record, required by the commands on one record.
OptionSpec recordOption();
/// The record of --record in the session's base table.
RecordEntry requiredRecord(const Invocation& invocation, const Session& session);

/// The word by which the program names a column type ("text", "int32"...).
QString typeWord(FilterColumnTypeConstants type);
/// The type of a word of `typeWord`, or of a few common other spellings.
std::optional<FilterColumnTypeConstants> parseTypeWord(const QString& word);
/// A value as JSON: numbers, booleans and texts as such, dates in ISO form, nothing as null.
QJsonValue valueJson(const Value& value);
/// Every definition field of a column.
QJsonObject columnJson(const CFilterColumn& column);

/// Loads a record's values and prints them (text or JSON).
void printRecord(Session& session, const RecordEntry& entry);

} // namespace searchdata::cli
