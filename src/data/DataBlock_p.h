#pragma once

// The data block: a text of "name: value" lines between "Begin Search Data" and "End Search Data"
// that gives one entry's search values, and the log of the lines that could not be imported.

#include "searchdata/DataBlockImport.h"
#include "searchdata/Value.h"

#include <QDateTime>
#include <QFile>
#include <QSet>
#include <QStringList>
#include <functional>
#include <memory>

namespace searchdata {
class CFilterColumn;
class CFilterColumns;
class CSearchFilter;
class ISearchBaseEntry;
} // namespace searchdata

namespace searchdata::detail {

/// The text of a block: UTF-8 when the bytes are valid UTF-8, else Latin-1, so that blocks of older
/// and newer writers both read. NUL characters and byte order marks are dropped.
QString DataBlockText(const QByteArray& data);

/// The lines of a block. Any run of carriage returns and line feeds ends a line, so there are no
/// empty lines; text after the last line end is no line.
QStringList DataBlockToStringCollection(const QByteArray& data);

/// Whether `line` is `word`, bare or in parentheses, ignoring case; nothing is trimmed.
bool TestTextIsMatch(const QString& line, const QString& word);

/// Splits a line into name and value at its first colon, after taking away enclosing parentheses;
/// both are trimmed. A line without a colon is all name. False for a line of blanks or parentheses.
bool ParseLine(const QString& line, QString& name, QString& value);

/// A value read for a column: `keys` for a keyword column, `value` for the others.
struct ParsedValue {
    Value value;
    QStringList keys;
};

/// Reads `text` as a value of `column`'s type. Keywords split at every comma, untrimmed; texts are
/// trimmed; numbers and dates must read as such and fit; a boolean is a number (0 is False) or
/// True, Yes, False, No in any case. Texts longer than the column's field fail.
bool ParseValue(const CFilterColumn& column, const QString& text, ParsedValue& result);

/// Puts a value into the column's `SavedValue`, or replaces its `SavedKeys`; false without a column.
bool SaveField(CFilterColumn* column, const ParsedValue& value);

/// Opens the error log of an import: "<folder>/ImportSearchDataErrors/<yyyymmdd_hhnnss>/<file>
/// .ImportErrors.log", beside a copy of the source file. The folder is `logFolder`, or else the
/// source file's own. Null when the log cannot be made (reported).
std::unique_ptr<QFile> CreateErrorLog(const QString& sourceFile, const QDateTime& timestamp, const QString& logFolder);

/// What reading a block into the columns came to.
struct DataBlockReading {
    /// The columns that a line gave a value.
    QSet<const CFilterColumn*> named;
    /// Lines that failed.
    int errors = 0;
};

/// Walks the lines of a block from its begin marker to its end marker and puts the values into the
/// columns' `SavedValue`s and `SavedKeys`; each line that fails goes to `onError` with its log text.
/// Nothing reaches the database.
DataBlockReading ReadDataBlock(CFilterColumns& columns, const QByteArray& data, const std::function<void(const QString&)>& onError);

/// Reads a block into `entry`'s columns and writes the values it names; lines that fail go to the
/// error log and the others are imported all the same.
DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, const QByteArray& data, const QString& logFolder);

} // namespace searchdata::detail
