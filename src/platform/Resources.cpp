#include "searchdata/Resources.h"

#include "searchdata/Diagnostics.h"

#include "platform/Guard_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QReadWriteLock>
#include <QStandardPaths>
#include <QStringDecoder>
#include <algorithm>
#include <atomic>
#include <optional>

// The texts and pictures come from resources/searchdata.qrc. Inside a static library nothing else
// refers to them, so the linker would drop them unless they are registered by name here.
static void registerCompiledResources()
{
    static const bool registered = [] {
        Q_INIT_RESOURCE(searchdata);
        return true;
    }();
    Q_UNUSED(registered);
}

namespace searchdata {

namespace {

constexpr char kModule[] = "Resources";

using TextTable = QHash<int, QString>;

void reportProblem(int number, const QString& text, const char* procedure, int line)
{
    Diagnostics::instance().report(ErrorReport{number, text, QString::fromLatin1(procedure),
                                               QString::fromLatin1(kModule), line, QDateTime::currentDateTime()});
}

// Files hold one text a line, so a line break inside a text is written as the two characters "\n";
// "\\" stands for a backslash itself.
QString unescape(QStringView raw)
{
    QString text;
    text.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const QChar c = raw[i];
        if (c == u'\\' && i + 1 < raw.size()) {
            const QChar next = raw[i + 1];
            if (next == u'n') {
                text += u'\n';
                ++i;
                continue;
            }
            if (next == u'\\') {
                text += u'\\';
                ++i;
                continue;
            }
        }
        text += c;
    }
    return text;
}

/// Parses lines "number<TAB>text". Blank lines are allowed; anything else that is not such a
/// line, a number given twice, or bytes that are not UTF-8 make the whole file fail.
std::optional<TextTable> parseTable(const QByteArray& bytes, QString* problem)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString content = decoder.decode(bytes);
    if (decoder.hasError()) {
        *problem = QStringLiteral("the file is not UTF-8 text");
        return std::nullopt;
    }

    TextTable table;
    int lineNumber = 0;
    for (QStringView line : QStringView(content).split(u'\n')) {
        ++lineNumber;
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.isEmpty())
            continue;
        const qsizetype tab = line.indexOf(u'\t');
        bool ok = tab > 0 && line.indexOf(u'\t', tab + 1) < 0;
        const QStringView digits = ok ? line.first(tab) : QStringView();
        ok = ok && std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
        const int number = ok ? digits.toInt(&ok) : 0;
        if (!ok) {
            *problem = QStringLiteral("line %1 is not \"number<TAB>text\"").arg(lineNumber);
            return std::nullopt;
        }
        if (table.contains(number)) {
            *problem = QStringLiteral("line %1 repeats the number %2").arg(lineNumber).arg(number);
            return std::nullopt;
        }
        table.insert(number, unescape(line.sliced(tab + 1)));
    }
    return table;
}

const TextTable& englishTable()
{
    static const TextTable table = [] {
        registerCompiledResources();
        QFile file(QStringLiteral(":/searchdata/strings/en.tsv"));
        QString problem = QStringLiteral("the compiled-in table is missing");
        std::optional<TextTable> parsed;
        if (file.open(QIODevice::ReadOnly))
            parsed = parseTable(file.readAll(), &problem);
        if (!parsed) {
            reportProblem(0, QStringLiteral("English texts: %1").arg(problem), "englishTable", __LINE__);
            return TextTable();
        }
        return *parsed;
    }();
    return table;
}

// The table is one for the process: a language chosen at run time holds for every thread.
struct TableState {
    QReadWriteLock lock;
    std::optional<TextTable> replacement;
    QString hostFolder;
    // Set once a table was chosen, by the host or by the look-up at the first use of a text.
    std::atomic<bool> chosen = false;
};

TableState& state()
{
    static TableState s;
    return s;
}

/// The look-up of the locale's table, at the first use of a text. The folders depend on the
/// application object, so without one the look-up waits for a later use.
void chooseTableOnFirstUse()
{
    TableState& s = state();
    if (s.chosen.load(std::memory_order_acquire) || !QCoreApplication::instance())
        return;
    if (!s.chosen.exchange(true))
        ResourceTable::loadForLocale();
}

/// Calls `use` with the table in force while the table cannot change.
template <typename Use>
auto withTable(Use&& use)
{
    chooseTableOnFirstUse();
    TableState& s = state();
    const QReadLocker locker(&s.lock);
    return use(s.replacement ? *s.replacement : englishTable());
}

/// `%1`, `%2`... replaced by the arguments in one pass, so that an argument that itself holds a
/// placeholder stays as it is. Two digits are read when they name an argument, as `%10` does with
/// ten arguments; a placeholder without an argument stays visible.
QString substitute(const QString& text, const QStringList& args)
{
    if (args.isEmpty())
        return text;
    const auto digitAt = [&text](qsizetype i) -> int {
        if (i >= text.size())
            return -1;
        const char16_t c = text[i].unicode();
        return c >= u'0' && c <= u'9' ? c - u'0' : -1;
    };
    QString result;
    result.reserve(text.size() + 16 * args.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'%') {
            const int first = digitAt(i + 1);
            const int second = digitAt(i + 2);
            const int both = first * 10 + second;
            if (first >= 0 && second >= 0 && both >= 1 && both <= args.size()) {
                result += args[both - 1];
                i += 2;
                continue;
            }
            if (first >= 1 && first <= args.size()) {
                result += args[first - 1];
                i += 1;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

} // namespace

// The lookups are leaves that a single dialog calls dozens of times; they stay out of the call
// trace so that it keeps what led up to a failure.
QString GetResourceText(int number, const QStringList& args)
{
    // Number 0 is the "no text" that callers pass where a role has none, e.g. the prompt of an
    // undefined column type.
    if (number == 0)
        return {};
    const std::optional<QString> text = withTable([number](const TextTable& table) -> std::optional<QString> {
        const auto it = table.constFind(number);
        if (it == table.constEnd())
            return std::nullopt;
        return *it;
    });
    if (!text) {
        reportProblem(number, QStringLiteral("No resource text %1").arg(number), "GetResourceText", __LINE__);
        return QStringLiteral("[text %1]").arg(number);
    }
    return substitute(*text, args);
}

QByteArray GetResourcePicture(int number)
{
    if (number <= 0)
        return {};
    registerCompiledResources();
    QFile file(QStringLiteral(":/searchdata/images/%1.png").arg(number));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

bool ResourceTable::load(const QString& path)
{
    SD_PROC("ResourceTable::load");
    state().chosen = true;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        reportProblem(0, QStringLiteral("Cannot read the texts of %1: %2").arg(path, file.errorString()),
                      "ResourceTable::load", __LINE__);
        return false;
    }
    QString problem;
    std::optional<TextTable> parsed = parseTable(file.readAll(), &problem);
    if (!parsed) {
        reportProblem(0, QStringLiteral("Texts of %1 not taken: %2").arg(path, problem), "ResourceTable::load",
                      __LINE__);
        return false;
    }
    TableState& s = state();
    const QWriteLocker locker(&s.lock);
    s.replacement = std::move(*parsed);
    return true;
}

void ResourceTable::reset()
{
    TableState& s = state();
    s.chosen = true;
    const QWriteLocker locker(&s.lock);
    s.replacement.reset();
}

bool ResourceTable::loadForLocale(const QLocale& locale)
{
    SD_PROC("ResourceTable::loadForLocale");
    state().chosen = true;
    if (locale.language() == QLocale::C)
        return false;
    const QString name = locale.name();
    const QStringList files{name + QStringLiteral(".tsv"), name.section(u'_', 0, 0) + QStringLiteral(".tsv")};
    for (const QString& folder : translationFolders()) {
        for (const QString& file : files) {
            const QString path = QDir(folder).filePath(file);
            if (QFileInfo(path).isFile())
                return load(path);
        }
    }
    return false;
}

bool ResourceTable::setTranslationFolder(const QString& folder)
{
    {
        TableState& s = state();
        const QWriteLocker locker(&s.lock);
        s.hostFolder = folder;
    }
    return loadForLocale();
}

QStringList ResourceTable::translationFolders()
{
    QStringList folders;
    {
        TableState& s = state();
        const QReadLocker locker(&s.lock);
        if (!s.hostFolder.isEmpty())
            folders << s.hostFolder;
    }
    // The user's own data folder comes before the system's and the program's, so that a user can
    // bring a table without writing where the program is installed.
    folders << QStandardPaths::standardLocations(QStandardPaths::AppDataLocation);
    if (QCoreApplication::instance())
        folders << QCoreApplication::applicationDirPath();
    folders.removeDuplicates();
    return folders;
}

bool ResourceTable::contains(int number)
{
    return withTable([number](const TextTable& table) { return table.contains(number); });
}

QList<int> ResourceTable::numbers()
{
    QList<int> result = withTable([](const TextTable& table) { return table.keys(); });
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace searchdata
