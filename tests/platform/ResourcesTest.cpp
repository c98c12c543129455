#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"

#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtEndian>
#include <atomic>
#include <gtest/gtest.h>
#include <vector>
#include <thread>

using namespace searchdata;

namespace {

QString sourcePath(const QString& relative)
{
    return QStringLiteral(SEARCHDATA_SOURCE_DIR) + u'/' + relative;
}

struct LiteralUse {
    QString file;
    int line;
    QString function;
    int number;
};

/// Every call of GetResourceText or GetResourcePicture with a literal number in the C++ files under
/// `roots`. Calls with a named constant are not seen.
QList<LiteralUse> literalResourceUses(const QStringList& roots)
{
    static const QRegularExpression call(QStringLiteral(R"(\b(GetResourceText|GetResourcePicture)\s*\(\s*(\d+))"));
    QList<LiteralUse> uses;
    for (const QString& root : roots) {
        QDirIterator it(root, {QStringLiteral("*.cpp"), QStringLiteral("*.h")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QString content = QString::fromUtf8(file.readAll());
            for (auto m = call.globalMatch(content); m.hasNext();) {
                const auto match = m.next();
                const int line = int(QStringView(content).first(match.capturedStart()).count(u'\n')) + 1;
                uses.append({path, line, match.captured(1), match.captured(2).toInt()});
            }
        }
    }
    return uses;
}

QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return path;
}

class ResourcesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ResourceTable::reset();
        Diagnostics::instance().clearReports();
        ASSERT_TRUE(dir.isValid());
    }
    void TearDown() override { ResourceTable::reset(); }

    QTemporaryDir dir;
};

TEST_F(ResourcesTest, EnglishTableIsWellFormedAndMatchesTheCompiledTable)
{
    QFile file(sourcePath(QStringLiteral("resources/strings/en.tsv")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    ASSERT_TRUE(bytes.endsWith('\n'));

    static const QRegularExpression lineForm(QStringLiteral(R"(^([1-9][0-9]*)\t(\S(?:[^\t]*\S)?)$)"));
    static const QRegularExpression placeholder(QStringLiteral(R"(%(\d+))"));
    QList<int> fileNumbers;
    int lineNumber = 0;
    for (const QByteArray& raw : bytes.chopped(1).split('\n')) {
        ++lineNumber;
        const QString line = QString::fromUtf8(raw);
        SCOPED_TRACE(QStringLiteral("en.tsv line %1: %2").arg(lineNumber).arg(line).toStdString());
        const auto match = lineForm.match(line);
        ASSERT_TRUE(match.hasMatch());
        const int number = match.captured(1).toInt();
        if (!fileNumbers.isEmpty()) {
            EXPECT_GT(number, fileNumbers.last()) << "numbers must ascend without repeats";
        }
        fileNumbers.append(number);

        // Placeholders run from %1 without a gap, so no argument a caller passes is lost.
        QSet<int> used;
        for (auto m = placeholder.globalMatch(match.captured(2)); m.hasNext();)
            used.insert(m.next().captured(1).toInt());
        for (int n = 1; n <= used.size(); ++n)
            EXPECT_TRUE(used.contains(n)) << "missing %" << n;

        EXPECT_FALSE(GetResourceText(number).isEmpty());
        // A backslash in the file starts \n or \\; a text may still show a backslash of its own.
        const QString written = match.captured(2);
        for (qsizetype i = written.indexOf(u'\\'); i >= 0; i = written.indexOf(u'\\', i + 2))
            EXPECT_TRUE(i + 1 < written.size() && (written[i + 1] == u'n' || written[i + 1] == u'\\'))
                << "an escape the loader does not know at " << i;
    }
    EXPECT_EQ(ResourceTable::numbers(), fileNumbers) << "the compiled-in table is not the file in the tree";
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_F(ResourcesTest, ArgumentsAreSubstitutedInOnePass)
{
    const QString path = writeFile(dir, QStringLiteral("t.tsv"),
                                   "100\tCopy %1 to %2.\n"
                                   "101\t%2 before %1\n"
                                   "102\tTen %10, one %1.\n"
                                   "103\tFirst line\\nsecond line, C:\\\\temp\n"
                                   "104\tAll 100% done, 50%off\n");
    ASSERT_TRUE(ResourceTable::load(path));

    EXPECT_EQ(GetResourceText(100, {QStringLiteral("a%2b"), QStringLiteral("c")}), QStringLiteral("Copy a%2b to c."));
    EXPECT_EQ(GetResourceText(101, {QStringLiteral("x"), QStringLiteral("y")}), QStringLiteral("y before x"));
    EXPECT_EQ(GetResourceText(100, {QStringLiteral("only")}), QStringLiteral("Copy only to %2."));
    EXPECT_EQ(GetResourceText(100), QStringLiteral("Copy %1 to %2."));
    EXPECT_EQ(GetResourceText(100, {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("unused")}),
              QStringLiteral("Copy a to b."));

    QStringList ten;
    for (int i = 1; i <= 10; ++i)
        ten << QStringLiteral("<%1>").arg(i);
    EXPECT_EQ(GetResourceText(102, ten), QStringLiteral("Ten <10>, one <1>."));
    EXPECT_EQ(GetResourceText(102, {QStringLiteral("A")}), QStringLiteral("Ten A0, one A."));

    EXPECT_EQ(GetResourceText(103), QStringLiteral("First line\nsecond line, C:\\temp"));
    EXPECT_EQ(GetResourceText(104, {QStringLiteral("x")}), QStringLiteral("All 100% done, 50%off"));
}

TEST_F(ResourcesTest, EnglishTextsTakeTheirArguments)
{
    const QString progress = GetResourceText(8450, {QStringLiteral("Parts"), QStringLiteral("12.50%"),
                                                    QStringLiteral("25"), QStringLiteral("200")});
    for (const char* part : {"Parts", "12.50%", "25", "200"})
        EXPECT_TRUE(progress.contains(QLatin1String(part))) << progress.toStdString();
    EXPECT_FALSE(progress.contains(QRegularExpression(QStringLiteral("%[1-4]")))) << progress.toStdString();

    EXPECT_TRUE(GetResourceText(6919, {QStringLiteral("80")}).contains(u"80"));
    EXPECT_TRUE(GetResourceText(7221, {QStringLiteral("999")}).contains(u"999"));
}

TEST_F(ResourcesTest, UnknownNumberGivesAVisiblePlaceholderAndAReport)
{
    EXPECT_EQ(GetResourceText(1234, {QStringLiteral("x")}), QStringLiteral("[text 1234]"));
    const auto report = Diagnostics::instance().lastError();
    ASSERT_TRUE(report.has_value());
    EXPECT_EQ(report->number, 1234);
    EXPECT_EQ(report->procedure, QStringLiteral("GetResourceText"));
    EXPECT_EQ(report->module, QStringLiteral("Resources"));
    EXPECT_TRUE(report->when.isValid());

    Diagnostics::instance().clearReports();
    EXPECT_EQ(GetResourceText(0), QString()) << "0 is the empty text";
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

TEST_F(ResourcesTest, LoadReplacesTheTableAndResetRestoresEnglish)
{
    const QString english = GetResourceText(8066);
    ASSERT_FALSE(english.isEmpty());
    const QString path = writeFile(dir, QStringLiteral("xx.tsv"),
                                   QByteArray("\xEF\xBB\xBF") + "8066\tD'accord \xC3\xA9\r\n\r\n8073\tAnnuler\r\n");
    ASSERT_TRUE(ResourceTable::load(path));

    EXPECT_EQ(GetResourceText(8066), QStringLiteral("D'accord \u00e9"));
    EXPECT_EQ(ResourceTable::numbers(), (QList<int>{8066, 8073}));
    EXPECT_FALSE(ResourceTable::contains(8067));
    EXPECT_EQ(GetResourceText(8067), QStringLiteral("[text 8067]"));

    ResourceTable::reset();
    EXPECT_EQ(GetResourceText(8066), english);
    EXPECT_TRUE(ResourceTable::contains(8067));
}

TEST_F(ResourcesTest, RejectedFileLeavesTheTableAsItWas)
{
    ASSERT_TRUE(ResourceTable::load(writeFile(dir, QStringLiteral("good.tsv"), "10\tkept\n")));

    const std::pair<const char*, QByteArray> bad[] = {
        {"no tab", "10\tfine\n11 missing tab\n"},
        {"not a number", "x1\ttext\n"},
        {"negative", "-5\ttext\n"},
        {"blank number", "\ttext\n"},
        {"second tab", "12\tone\ttwo\n"},
        {"repeated number", "12\tone\n12\ttwo\n"},
        {"too large", "99999999999\ttext\n"},
        {"not UTF-8", "12\t\xFF\xFE text\n"},
    };
    for (const auto& [why, bytes] : bad) {
        SCOPED_TRACE(why);
        Diagnostics::instance().clearReports();
        EXPECT_FALSE(ResourceTable::load(writeFile(dir, QStringLiteral("bad.tsv"), bytes)));
        EXPECT_EQ(ResourceTable::numbers(), QList<int>{10});
        EXPECT_EQ(GetResourceText(10), QStringLiteral("kept"));
        EXPECT_EQ(Diagnostics::instance().reportCount(), 1);
    }

    EXPECT_FALSE(ResourceTable::load(dir.filePath(QStringLiteral("missing.tsv"))));
    EXPECT_EQ(GetResourceText(10), QStringLiteral("kept"));
}

TEST_F(ResourcesTest, AProgramStartsWithTheTableOfItsLocalesLanguage)
{
    enum Where { Host, UserData, SystemData, Program };
    enum HostChoice { NoChoice, HostFolder, LoadByHand };
    struct File {
        Where where;
        const char* name;
        QByteArray text;
    };
    struct Case {
        const char* why;
        const char* locale;
        std::vector<File> files;
        HostChoice host;
        QString expected;
    };
    const QString english = GetResourceText(8066);
    const Case cases[] = {
        {"the territory's table before the language's", "de_CH.UTF-8",
         {{UserData, "de.tsv", "Gut"}, {UserData, "de_CH.tsv", "Guet"}}, NoChoice, "Guet"},
        {"the user's data folder first", "de_DE.UTF-8",
         {{Program, "de.tsv", "Programm"}, {SystemData, "de.tsv", "System"}, {UserData, "de.tsv", "Benutzer"}}, NoChoice,
         "Benutzer"},
        {"the system's data folder before the program's", "de_DE.UTF-8",
         {{Program, "de.tsv", "Programm"}, {SystemData, "de.tsv", "System"}}, NoChoice, "System"},
        {"beside the program", "de_DE.UTF-8", {{Program, "de_DE.tsv", "Programm"}}, NoChoice, "Programm"},
        {"the host's folder before all", "de_DE.UTF-8", {{Host, "de.tsv", "Wirt"}, {UserData, "de.tsv", "Benutzer"}},
         HostFolder, "Wirt"},
        {"a table the host loads before the first text", "de_DE.UTF-8",
         {{Host, "mine.tsv", "Eigen"}, {UserData, "de.tsv", "Benutzer"}}, LoadByHand, "Eigen"},
        {"no table of another language", "fr_FR.UTF-8", {{UserData, "de.tsv", "Gut"}}, NoChoice, english},
        {"a malformed table keeps English", "de_DE.UTF-8", {{UserData, "de.tsv", "Gut\ta second tab"}}, NoChoice, english},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        QTemporaryDir root;
        ASSERT_TRUE(root.isValid());
        const QString program = root.filePath(QStringLiteral("bin/resources_child"));
        const QString folders[] = {root.filePath(QStringLiteral("host")), root.filePath(QStringLiteral("home/resources_child")),
                                   root.filePath(QStringLiteral("data/resources_child")), root.filePath(QStringLiteral("bin"))};
        for (const QString& folder : folders)
            ASSERT_TRUE(QDir().mkpath(folder));
        // A copy, so that the folder beside the program is one of the test's own.
        ASSERT_TRUE(QFile::copy(QStringLiteral(SEARCHDATA_RESOURCES_CHILD), program));
        for (const File& file : c.files) {
            QFile out{QDir(folders[file.where]).filePath(QLatin1String(file.name))};
            ASSERT_TRUE(out.open(QIODevice::WriteOnly));
            out.write("8066\t" + file.text + "\n");
        }

        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"LANG", "LANGUAGE", "LC_MESSAGES"})
            env.remove(QLatin1String(name));
        env.insert(QStringLiteral("LC_ALL"), QLatin1String(c.locale));
        env.insert(QStringLiteral("XDG_DATA_HOME"), root.filePath(QStringLiteral("home")));
        env.insert(QStringLiteral("XDG_DATA_DIRS"), root.filePath(QStringLiteral("data")));
        QStringList args;
        if (c.host == HostFolder)
            args << QStringLiteral("--folder") << folders[Host];
        if (c.host == LoadByHand)
            args << QStringLiteral("--load") << QDir(folders[Host]).filePath(QStringLiteral("mine.tsv"));
        QProcess child;
        child.setProcessEnvironment(env);
        child.start(program, args << QStringLiteral("8066"));
        ASSERT_TRUE(child.waitForFinished(60000));
        EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardError().toStdString();
        EXPECT_EQ(child.readAllStandardOutput().toStdString(), c.expected.toStdString());
    }
}

TEST_F(ResourcesTest, PicturesArePngImagesOfTheirSize)
{
    const std::pair<int, quint32> pictures[] = {{201, 32}, {202, 32}, {203, 32}, {301, 16}, {302, 16},
                                                {303, 16}, {401, 48}, {501, 16}, {502, 16}};
    QSet<QByteArray> distinct;
    for (const auto& [number, size] : pictures) {
        SCOPED_TRACE(number);
        const QByteArray png = GetResourcePicture(number);
        ASSERT_GE(png.size(), 33);
        EXPECT_TRUE(png.startsWith("\x89PNG\r\n\x1a\n"));
        EXPECT_EQ(png.mid(12, 4), QByteArray("IHDR"));
        EXPECT_EQ(qFromBigEndian<quint32>(png.constData() + 16), size);
        EXPECT_EQ(qFromBigEndian<quint32>(png.constData() + 20), size);
        distinct.insert(png);
    }
    EXPECT_EQ(distinct.size(), qsizetype(std::size(pictures))) << "two numbers share one picture";

    EXPECT_TRUE(GetResourcePicture(999).isEmpty());
    EXPECT_TRUE(GetResourcePicture(0).isEmpty());
    EXPECT_TRUE(GetResourcePicture(-201).isEmpty());
}

TEST_F(ResourcesTest, SourceScanFindsLiteralNumbersOnly)
{
    writeFile(dir, QStringLiteral("a.cpp"),
              "auto t = searchdata::GetResourceText( 4711 , {name});\n"
              "auto p = GetResourcePicture(\n    12);\n"
              "auto n = GetResourceText(kNamed);\n"
              "auto q = MyGetResourceText(5);\n");
    writeFile(dir, QStringLiteral("skipped.txt"), "GetResourceText(6)");

    const QList<LiteralUse> uses = literalResourceUses({dir.path()});
    ASSERT_EQ(uses.size(), 2);
    EXPECT_EQ(uses[0].function, QStringLiteral("GetResourceText"));
    EXPECT_EQ(uses[0].number, 4711);
    EXPECT_EQ(uses[0].line, 1);
    EXPECT_EQ(uses[1].function, QStringLiteral("GetResourcePicture"));
    EXPECT_EQ(uses[1].number, 12);
    EXPECT_EQ(uses[1].line, 2);
}

TEST_F(ResourcesTest, EveryNumberUsedInTheSourcesHasAnEntry)
{
    const QList<LiteralUse> uses = literalResourceUses(
        {sourcePath(QStringLiteral("src")), sourcePath(QStringLiteral("apps")), sourcePath(QStringLiteral("include"))});
    ASSERT_FALSE(uses.isEmpty()) << "the scan found no use at all; is the source root right?";
    for (const LiteralUse& use : uses) {
        const QString where = QStringLiteral("%1:%2").arg(use.file).arg(use.line);
        if (use.function == QLatin1String("GetResourcePicture")) {
            EXPECT_FALSE(GetResourcePicture(use.number).isEmpty())
                << "no picture " << use.number << " for " << where.toStdString();
        } else if (use.number != 0) {
            EXPECT_TRUE(ResourceTable::contains(use.number))
                << "no text " << use.number << " for " << where.toStdString();
        }
    }
}

TEST_F(ResourcesTest, ReadersSeeOneWholeTableWhileAnotherThreadSwitchesIt)
{
    const QString english = GetResourceText(8073);
    const QString path = writeFile(dir, QStringLiteral("other.tsv"), "8073\tAbbrechen\n");
    ASSERT_FALSE(path.isEmpty());

    std::atomic<bool> stop = false;
    std::atomic<int> strange = 0;
    std::thread reader([&] {
        while (!stop) {
            const QString text = GetResourceText(8073);
            if (text != english && text != QLatin1String("Abbrechen"))
                ++strange;
        }
    });
    for (int i = 0; i < 200; ++i) {
        ResourceTable::load(path);
        ResourceTable::reset();
    }
    stop = true;
    reader.join();
    EXPECT_EQ(strange, 0);
}

} // namespace
