// Reading a data block into one entry's search columns, and the log of the lines that failed.

#include "data/DataBlock_p.h"

#include "data/CopyValues_p.h"
#include "platform/Guard_p.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/ISearchBaseEntry.h"

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

QString DataBlockText(const QByteArray& data)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(data);
    if (utf8.hasError())
        text = QString::fromLatin1(data);
    // No text of a block holds a NUL (PostgreSQL refuses one in any text, and SQL text ends at it)
    // or a byte order mark (SQLite drops one that starts a bound text, and the value would no longer
    // be the one its picklist was given).
    text.remove(QChar(u'\0'));
    text.remove(QChar(0xFEFF));
    return text;
}

QStringList DataBlockToStringCollection(const QByteArray& data)
{
    // Line ends are single bytes in both encodings, so the lines of the text are those of the bytes.
    const QString text = DataBlockText(data);
    QStringList lines;
    qsizetype start = 0;
    bool inLineEnd = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool end = text[i] == u'\r' || text[i] == u'\n';
        if (end && !inLineEnd) {
            if (start < i)
                lines.append(text.mid(start, i - start));
            inLineEnd = true;
        } else if (!end && inLineEnd) {
            start = i;
            inLineEnd = false;
        }
    }
    // What follows the last line end is no line.
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

DataBlockReading ReadDataBlock(CFilterColumns& columns, const QByteArray& data, const std::function<void(const QString&)>& onError)
{
    DataBlockReading reading;
    const QStringList lines = DataBlockToStringCollection(data);
    auto save = [&](CFilterColumn* column, const ParsedValue& value) {
        if (SaveField(column, value))
            reading.named.insert(column);
    };
    bool begun = false;
    CFilterColumns::ColumnPtr note; // named, its text not yet saved
    bool inNote = false;
    QString noteText;
    for (const QString& line : lines) {
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
                if (!noteText.isEmpty())
                    noteText += kCrLf;
                noteText += value;
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
    return reading;
}

DataBlockImport AnalyzeDataBlock(CSearchFilter* filter, const QDateTime& timestamp, const QString& sourceFile,
                                 const ISearchBaseEntry* entry, const QByteArray& data, const QString& logFolder)
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
        const DataBlockReading reading = ReadDataBlock(columns, data, [&log](const QString& error) { log.write(error); });
        outcome.errors = reading.errors;
        outcome.imported = !reading.named.isEmpty();
        if (outcome.imported)
            outcome.written = writeEntryValues(columns, *entry, &reading.named);
    });
    outcome.logFile = log.fileName();
    return outcome;
}

} // namespace searchdata::detail
