// Reading a data block into one entry's search columns, and the log of the lines that failed.

#include "data/DataBlock_p.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/Resources.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QStringDecoder>

namespace searchdata::detail {

namespace {

constexpr char kModule[] = "DataBlock";

const QString kBegin = QStringLiteral("Begin Search Data");
const QString kEnd = QStringLiteral("End Search Data");
const QString kStartNote = QStringLiteral("Start Note");
const QString kEndNote = QStringLiteral("End Note");
const QString kLine = QStringLiteral("Line");
const QString kCrLf = QStringLiteral("\r\n");

// The texts of the log. They are the log file's format, read by people and by tools alike, and so
// stay as they are in every language.

QString errorHead(const QString& line)
{
    return QStringLiteral("Error processing line: ") + line + kCrLf;
}

QString cannotConvert(const QString& line, const CFilterColumn& column, const QString& value)
{
    return errorHead(line) + QStringLiteral("Cannot convert specified value to the data type of the specified field") + kCrLf
         + QStringLiteral("Field name: ") + column.Name() + kCrLf + QStringLiteral("Field type: ") + column.ColumnTypeName() + kCrLf
         + QStringLiteral("Specified value: ") + value + kCrLf;
}

QString unknownName(const QString& line, const QString& name, const QString& value)
{
    return errorHead(line) + QStringLiteral("Specified name does not match a defined Search Criteria field") + kCrLf
         + QStringLiteral("Specified name: ") + name + kCrLf + QStringLiteral("Specified value: ") + value + kCrLf;
}

QString notANoteLine(const QString& line, const CFilterColumn& note, const QString& name)
{
    return errorHead(line) + QStringLiteral("This line is not the next line of the multiple-line Note field '") + note.Name()
         + QStringLiteral("'") + kCrLf + QStringLiteral("Specified name: ") + name + kCrLf + QStringLiteral("Expected name: ") + kLine
         + kCrLf;
}

QString unsplittableNoteLine(const QString& line, const CFilterColumn& note)
{
    return errorHead(line) + QStringLiteral("Cannot split this line into a name:value pair.") + kCrLf
         + QStringLiteral("Failed to extract next line in note for field '") + note.Name() + QStringLiteral("'");
}

QString unsplittableLine(const QString& line)
{
    return errorHead(line) + QStringLiteral("Cannot split this line into a name:value pair.") + kCrLf;
}

/// A number of a column's numeric type, within its range.
bool parseNumber(FilterColumnTypeConstants type, const QString& text, Value& result)
{
    const Value v(text);
    if (!v.isNumeric())
        return false;
    Result<Value> typed = Value();
    switch (type) {
    case fcInteger16: typed = v.convertTo(Value::Type::Int16); break;
    case fcInteger32: typed = v.convertTo(Value::Type::Int32); break;
    case fcSingle: typed = v.convertTo(Value::Type::Single); break;
    default: typed = v.convertTo(Value::Type::Double); break;
    }
    if (!typed)
        return false;
    result = typed.value();
    return true;
}

/// The error log of one import, made at the first line that fails and tried only once.
class ErrorLog {
public:
    ErrorLog(const QString& sourceFile, const QDateTime& timestamp, const QString& folder)
        : m_sourceFile(sourceFile), m_timestamp(timestamp), m_folder(folder)
    {
    }
    void write(const QString& error)
    {
        if (!m_tried) {
            m_tried = true;
            m_file = CreateErrorLog(m_sourceFile, m_timestamp, m_folder);
        }
        if (m_file)
            m_file->write((QStringLiteral("----------") + kCrLf + error + kCrLf).toUtf8());
    }
    QString fileName() const { return m_file ? m_file->fileName() : QString(); }

private:
    QString m_sourceFile;
    QDateTime m_timestamp;
    QString m_folder;
    bool m_tried = false;
    std::unique_ptr<QFile> m_file;
};

} // namespace

bool DataBlockLines::fill()
{
    if (m_atEnd)
        return false;
    // What was read is let go; a line in the making moves to the front.
    m_buffer.remove(0, m_position);
    m_position = 0;
    constexpr qint64 kChunk = 64 * 1024;
    const qsizetype held = m_buffer.size();
    m_buffer.resize(held + kChunk);
    const qint64 got = m_device.read(m_buffer.data() + held, kChunk);
    m_buffer.resize(held + std::max<qint64>(got, 0));
    if (got < 0)
        m_readError = m_device.errorString();
    if (got <= 0)
        m_atEnd = true;
    return got > 0;
}

bool DataBlockLines::next(QByteArray& line)
{
    if (m_tooLong || !m_readError.isEmpty())
        return false;
    for (;;) {
        const char* const data = m_buffer.constData();
        const qsizetype size = m_buffer.size();
        // Past the line ends, counting them: a carriage return and line feed is one.
        while (m_position < size && (data[m_position] == '\r' || data[m_position] == '\n')) {
            const char c = data[m_position++];
            if (!(c == '\n' && m_lastEnd == '\r'))
                ++m_lineNumber;
            m_lastEnd = c;
        }
        qsizetype end = m_position;
        while (end < size && data[end] != '\r' && data[end] != '\n')
            ++end;
        if (end - m_position > kMaxLineBytes) {
            m_tooLong = true;
            ++m_lineNumber;
            return false;
        }
        if (end < size) {
            line = m_buffer.mid(m_position, end - m_position);
            m_position = end;
            m_lastEnd = 0;
            return true;
        }
        // A line without its end yet: more is read, or, at the end, it is no line.
        if (!fill())
            return false;
    }
}

namespace {

// No text of a block holds a NUL (PostgreSQL refuses one in any text, and SQL text ends at it) or a
// byte order mark (SQLite drops one that starts a bound text, and the value would no longer be the
// one its picklist was given).
QString withoutNulsAndMarks(QString text)
{
    text.remove(QChar(u'\0'));
    text.remove(QChar(0xFEFF));
    return text;
}

/// Why a block could not be read to its end.
QString refusalOf(const DataBlockLines& lines, const QString& source)
{
    if (lines.tooLong())
        return GetResourceText(9206, {source, QString::number(lines.lineNumber()), QString::number(DataBlockLines::kMaxLineBytes)});
    return GetResourceText(9207, {source, lines.readError()});
}

} // namespace

QString DataBlockLineText(const QByteArray& line, bool utf8)
{
    return withoutNulsAndMarks(utf8 ? QString::fromUtf8(line) : QString::fromLatin1(line));
}

std::optional<bool> DataBlockIsUtf8(QIODevice& device, bool toEndMarker, const QString& source, QString& refused)
{
    const qint64 start = device.pos();
    DataBlockLines lines(device);
    QStringDecoder utf8(QStringDecoder::Utf8);
    QByteArray line;
    bool valid = true;
    bool begun = false;
    while (valid && lines.next(line)) {
        const QString text = withoutNulsAndMarks(utf8(line));
        valid = !utf8.hasError();
        if (toEndMarker && valid) {
            if (begun && TestTextIsMatch(text, kEnd))
                break;
            begun = begun || TestTextIsMatch(text, kBegin);
        }
    }
    if (lines.tooLong() || !lines.readError().isEmpty()) {
        refused = refusalOf(lines, source);
        return std::nullopt;
    }
    if (!device.seek(start)) {
        refused = GetResourceText(9207, {source, device.errorString()});
        return std::nullopt;
    }
    return valid;
}

QStringList DataBlockToStringCollection(const QByteArray& data)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QString refused;
    const std::optional<bool> utf8 = DataBlockIsUtf8(buffer, false, QString(), refused);
    QStringList lines;
    DataBlockLines reader(buffer);
    QByteArray line;
    while (utf8 && reader.next(line))
        lines.append(DataBlockLineText(line, *utf8));
    return lines;
}

bool TestTextIsMatch(const QString& line, const QString& word)
{
    return TextEquals(line, QStringLiteral("(") + word + QStringLiteral(")"), 1) || TextEquals(line, word, 1);
}

bool ParseLine(const QString& line, QString& name, QString& value)
{
    QString text = line.trimmed();
    while (text.startsWith(u'(')) {
        text.remove(0, 1);
        if (text.endsWith(u')')) {
            text.chop(1);
            text = text.trimmed();
        }
    }
    if (text.isEmpty())
        return false;
    const qsizetype colon = text.indexOf(u':');
    if (colon < 0) {
        name = text;
        value.clear();
    } else {
        name = text.left(colon).trimmed();
        value = text.mid(colon + 1).trimmed();
    }
    return true;
}

bool ParseValue(const CFilterColumn& column, const QString& text, ParsedValue& result)
{
    const int room = column.TextLengthInDB();
    switch (column.ColumnType()) {
    case fcKeyword: {
        const QStringList keys = text.split(u',');
        for (const QString& k : keys)
            if (k.size() > room)
                return false;
        result.keys = keys;
        return true;
    }
    case fcText:
    case fcNote: {
        const QString trimmed = text.trimmed();
        if (trimmed.size() > room)
            return false;
        result.value = Value(trimmed);
        return true;
    }
    case fcInteger16:
    case fcInteger32:
    case fcSingle:
    case fcDouble:
        return parseNumber(column.ColumnType(), text, result.value);
    case fcDateTime: {
        const Result<QDateTime> date = ParseDateText(text);
        if (!date)
            return false;
        result.value = Value(date.value());
        return true;
    }
    case fcBoolean: {
        const Value v(text);
        if (v.isNumeric()) {
            const Result<double> d = v.toDouble();
            if (!d)
                return false;
            result.value = Value(d.value() != 0);
            return true;
        }
        const QString word = text.trimmed();
        if (TextEquals(word, QStringLiteral("True"), 1) || TextEquals(word, QStringLiteral("Yes"), 1))
            result.value = Value(true);
        else if (TextEquals(word, QStringLiteral("False"), 1) || TextEquals(word, QStringLiteral("No"), 1))
            result.value = Value(false);
        else
            return false;
        return true;
    }
    default:
        return false;
    }
}

bool SaveField(CFilterColumn* column, const ParsedValue& value)
{
    if (!column)
        return false;
    if (column->ColumnType() == fcKeyword)
        column->SavedKeys() = value.keys; // a second line for the column replaces the first
    else
        column->setSavedValue(value.value);
    return true;
}

std::unique_ptr<QFile> CreateErrorLog(const QString& sourceFile, const QDateTime& timestamp, const QString& logFolder)
{
    SD_PROC("CreateErrorLog");
    std::unique_ptr<QFile> result;
    SD_GUARDED([&] {
        const QFileInfo source(sourceFile);
        const QString fileName = source.fileName();
        if (fileName.isEmpty() || fileName == QStringLiteral(".") || fileName == QStringLiteral(".."))
            fail(QStringLiteral("the source file \"%1\" has no name to give its error log").arg(sourceFile));
        // A bare file name has no folder of its own: the log would land wherever the process stands.
        if (logFolder.isEmpty() && source.path() == QStringLiteral(".") && !sourceFile.startsWith(QStringLiteral("./")))
            fail(QStringLiteral("the source file \"%1\" has no folder for its error log").arg(sourceFile));
        const QDir base(logFolder.isEmpty() ? source.absolutePath() : logFolder);
        if (!base.exists())
            fail(QStringLiteral("the folder %1 for the error log does not exist").arg(base.path()));
        const QDateTime when = timestamp.isValid() ? timestamp : QDateTime::currentDateTime();
        const QString relative = QStringLiteral("ImportSearchDataErrors/") + when.toString(QStringLiteral("yyyyMMdd_hhmmss"));
        if (!base.mkpath(relative))
            fail(QStringLiteral("the folder %1 could not be made").arg(base.filePath(relative)));
        const QDir folder(base.filePath(relative));

        // The erroneous input is kept beside its log; without it the log is still worth having.
        const QString copy = folder.filePath(fileName);
        if (QFileInfo(sourceFile).isFile() && QFileInfo(copy).absoluteFilePath() != source.absoluteFilePath()) {
            QFile::remove(copy);
            if (!QFile::copy(sourceFile, copy))
                reportFailure(sd_proc_scope, 0, QStringLiteral("the source file %1 could not be copied to %2").arg(sourceFile, copy), __LINE__);
        }
        auto log = std::make_unique<QFile>(folder.filePath(fileName + QStringLiteral(".ImportErrors.log")));
        if (!log->open(QIODevice::WriteOnly | QIODevice::Truncate))
            fail(QStringLiteral("the error log %1 could not be opened: %2").arg(log->fileName(), log->errorString()));
        result = std::move(log);
    });
    return result;
}

DataBlockReading ReadDataBlock(CFilterColumns& columns, QIODevice& device, const QString& source,
                               const std::function<void(const QString&)>& onError)
{
    DataBlockReading reading;
    const std::optional<bool> utf8 = DataBlockIsUtf8(device, true, source, reading.refused);
    if (!utf8)
        return reading;
    DataBlockLines lines(device);
    QByteArray bytes;
    auto save = [&](CFilterColumn* column, const ParsedValue& value) {
        if (SaveField(column, value))
            reading.named.insert(column);
    };
    bool begun = false;
    CFilterColumns::ColumnPtr note; // named, its text not yet saved
    bool inNote = false;
    QString noteText;
    while (lines.next(bytes)) {
        const QString line = DataBlockLineText(bytes, *utf8);
        if (!begun) {
            begun = TestTextIsMatch(line, kBegin);
            continue;
        }
        if (TestTextIsMatch(line, kEnd))
            break; // a note still pending is lost
        QString error;
        bool dataLine = true;
        if (note && !inNote) {
            if (TestTextIsMatch(line, kStartNote)) {
                noteText.clear();
                inNote = true;
                dataLine = false;
            } else {
                save(note.get(), ParsedValue{Value(noteText), {}});
                note.reset();
            }
        } else if (inNote) {
            dataLine = false;
            QString name, value;
            if (TestTextIsMatch(line, kEndNote)) {
                if (noteText.size() > note->TextLengthInDB())
                    error = cannotConvert(line, *note, noteText);
                else
                    save(note.get(), ParsedValue{Value(noteText), {}});
                note.reset();
                inNote = false;
            } else if (!ParseLine(line, name, value)) {
                error = unsplittableNoteLine(line, *note);
            } else if (TextEquals(name, kLine, 1)) {
                // A text already too long for its field grows no further: it is refused at its end.
                if (noteText.size() <= note->TextLengthInDB()) {
                    if (!noteText.isEmpty())
                        noteText += kCrLf;
                    noteText += value;
                }
            } else {
                error = notANoteLine(line, *note, name);
            }
        }
        if (dataLine) {
            QString name, value;
            ParsedValue parsed;
            CFilterColumns::ColumnPtr column;
            if (!ParseLine(line, name, value))
                error = unsplittableLine(line);
            else if (!(column = columns.Item(name)))
                error = unknownName(line, name, value);
            else if (!ParseValue(*column, value, parsed))
                error = cannotConvert(line, *column, value);
            else if (column->ColumnType() == fcNote) {
                noteText = parsed.value.text();
                note = column;
            } else {
                save(column.get(), parsed);
            }
        }
        if (!error.isEmpty()) {
            ++reading.errors;
            if (onError)
                onError(error);
        }
    }
    if (lines.tooLong() || !lines.readError().isEmpty())
        reading.refused = refusalOf(lines, source);
    return reading;
}

DataBlockReading ReadDataBlock(CFilterColumns& columns, const QByteArray& data, const std::function<void(const QString&)>& onError)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    return ReadDataBlock(columns, buffer, QString(), onError);
}

DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, QIODevice& device, const QString& logFolder)
{
    DataBlockImport outcome;
    if (!filter || !entry || !filter->FilterColumns() || filter->FilterColumns()->Count() == 0)
        return outcome;
    SD_PROC("AnalyzeDataBlock");
    ErrorLog log(sourceFile, timestamp, logFolder);
    SD_GUARDED([&] {
        CFilterColumns& columns = *filter->FilterColumns();
        // What the block does not name keeps its present value.
        columns.GetData(entry);
        const DataBlockReading reading =
            ReadDataBlock(columns, device, sourceFile, [&log](const QString& error) { log.write(error); });
        outcome.errors = reading.errors;
        if (!reading.refused.isEmpty()) {
            outcome.refused = reading.refused;
            fail(reading.refused);
        }
        outcome.imported = !reading.named.isEmpty();
        if (outcome.imported)
            outcome.written = writeEntryValues(columns, *entry, &reading.named);
    });
    outcome.logFile = log.fileName();
    return outcome;
}

DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, const QByteArray& data, const QString& logFolder)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    return AnalyzeDataBlock(filter, timestamp, sourceFile, entry, buffer, logFolder);
}

DataBlockImport ImportDataBlockFile(CSearchFilter* filter, const QString& path, const ISearchBaseEntry* entry, const QString& logFolder)
{
    SD_PROC("ImportDataBlockFile");
    DataBlockImport refused;
    auto refuse = [&](const QString& why) {
        refused.refused = why;
        reportFailure(sd_proc_scope, 0, why, __LINE__);
        return refused;
    };
    // A pipe or a device would be waited on, or read, for ever: only a file that ends is read.
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return refuse(GetResourceText(9205, {path}));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return refuse(GetResourceText(9207, {path, file.errorString()}));
    if (file.isSequential())
        return refuse(GetResourceText(9205, {path}));
    return AnalyzeDataBlock(filter, info.lastModified(), info.absoluteFilePath(), entry, file, logFolder);
}

} // namespace searchdata::detail
