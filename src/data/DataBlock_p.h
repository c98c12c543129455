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
#include <optional>

class QIODevice;

namespace searchdata {
class CFilterColumn;
class CFilterColumns;
class CSearchFilter;
class ISearchBaseEntry;
} // namespace searchdata

namespace searchdata::detail {

/// The lines of a block, read from a device one at a time so that a file of any size takes little
/// memory. Any run of carriage returns and line feeds ends a line, so there are no empty lines; text
/// after the last line end is no line. A line longer than `kMaxLineBytes` ends the reading.
class DataBlockLines {
public:
    /// Far more than any line of a block holds (a note line, a list of keywords of 255 characters
    /// each), and little enough to hold in memory.
    static constexpr qsizetype kMaxLineBytes = 64 * 1024;

    explicit DataBlockLines(QIODevice& device) : m_device(device) {}
    /// The bytes of the next line; false at the end, or when reading failed (`tooLong`, `readError`).
    bool next(QByteArray& line);
    /// The number of the line last read, counting every line end of the text.
    int lineNumber() const { return m_lineNumber; }
    /// Whether reading stopped at a line longer than `kMaxLineBytes`.
    bool tooLong() const { return m_tooLong; }
    /// Why the device could not be read; blank when it could.
    const QString& readError() const { return m_readError; }

private:
    bool fill();

    QIODevice& m_device;
    QByteArray m_buffer;
    qsizetype m_position = 0;
    bool m_atEnd = false;
    bool m_tooLong = false;
    QString m_readError;
    int m_lineNumber = 0;
    char m_lastEnd = 0; // the line end byte met last, so that a carriage return and line feed count once
};

/// The text of a line: UTF-8 or Latin-1, without NUL characters and byte order marks.
QString DataBlockLineText(const QByteArray& line, bool utf8);

/// Whether a block reads as UTF-8: every line up to its end marker (or, without `toEndMarker`, every
/// line) is valid UTF-8, so that blocks of older and newer writers both read. The device is read from
/// where it stands and put back there. Nothing when a line is too long or the device cannot be read;
/// `refused` then says why, naming the block `source`.
std::optional<bool> DataBlockIsUtf8(QIODevice& device, bool toEndMarker, const QString& source, QString& refused);

/// The lines of a block held in memory.
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
    /// Why the block could not be read to its end; blank when it could.
    QString refused;
};

/// Walks the lines of a block from its begin marker to its end marker, reading no further, and puts
/// the values into the columns' `SavedValue`s and `SavedKeys`; each line that fails goes to
/// `onError` with its log text. Nothing reaches the database. The device must allow seeking: the
/// block is read twice, once to tell its encoding. `source` names the block in `refused`.
DataBlockReading ReadDataBlock(CFilterColumns& columns, QIODevice& device, const QString& source,
                               const std::function<void(const QString&)>& onError);
DataBlockReading ReadDataBlock(CFilterColumns& columns, const QByteArray& data, const std::function<void(const QString&)>& onError);

/// Reads a block into `entry`'s columns and writes the values it names; lines that fail go to the
/// error log and the others are imported all the same. A block that cannot be read to its end
/// writes nothing.
DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, QIODevice& device, const QString& logFolder);
DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, const QByteArray& data, const QString& logFolder);
/// The same with the block of a file: only a regular file is read (never a pipe or a device, which
/// may never end), with its time of change as the timestamp.
DataBlockImport ImportDataBlockFile(CSearchFilter* filter, const QString& path, const ISearchBaseEntry* entry, const QString& logFolder);

} // namespace searchdata::detail
