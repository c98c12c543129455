// The about box, and the texts of another language in it.

#include "host/LibraryForms.h"
#include "host/frmAbout.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/Resources.h"
#include "searchdata/widgets/AboutBox.h"
#include "support/WidgetTestSupport.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLibraryInfo>
#include <QPushButton>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

QString textOf(const QWidget& form, const char* name)
{
    if (const auto* label = named<QLabel>(&form, QLatin1String(name)))
        return label->text();
    if (const auto* button = named<QPushButton>(&form, QLatin1String(name)))
        return button->text();
    ADD_FAILURE() << "no control " << name;
    return {};
}

TEST(AboutBox, ShowsTheLibraryWithTheProjectsVersion)
{
    frmAbout form;
    const QString title = Diagnostics::instance().caption();
    EXPECT_EQ(form.windowTitle(), GetResourceText(7968, {title}));
    EXPECT_EQ(textOf(form, "lblTitle"), title);
    const QString version = textOf(form, "lblVersion");
    EXPECT_TRUE(version.endsWith(QStringLiteral(" " SEARCHDATA_PROJECT_VERSION))) << version.toStdString();
    const QStringList description = textOf(form, "lblDescription").split(u'\n');
    ASSERT_EQ(description.size(), 2);
    EXPECT_TRUE(description[0].startsWith(QStringLiteral("KVOSearchEdit "))) << description[0].toStdString();
    EXPECT_EQ(description[1], GetResourceText(9400, {title}));
    EXPECT_EQ(textOf(form, "lblDisclaimer"), GetResourceText(7971));
    EXPECT_EQ(named<QLabel>(&form, "picIcon")->pixmap().size(), QSize(48, 48));
}

TEST(AboutBox, SystemInfoTellsWhatQtKnowsOfTheSystem)
{
    auto ui = std::make_shared<HeadlessUiServices>();
    const ServicesGuard guard(ui);
    frmAbout form;
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    QTest::mouseClick(named<QPushButton>(&form, "cmdSysInfo"), Qt::LeftButton);

    ASSERT_EQ(ui->requests().size(), 1);
    const QString prefix = QStringLiteral("message information: ") + GetResourceText(9401) + QStringLiteral(": ");
    ASSERT_TRUE(ui->requests().first().startsWith(prefix)) << ui->requests().first().toStdString();
    const QStringList lines = ui->requests().first().mid(prefix.size()).split(u'\n');
    ASSERT_EQ(lines.size(), 4);
    const std::pair<QString, QString> expected[] = {
        {lines[0], QSysInfo::prettyProductName()},
        {lines[1], QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion()},
        {lines[2], QSysInfo::currentCpuArchitecture()},
        {lines[3], QLibraryInfo::version().toString()},
    };
    for (const auto& [line, fact] : expected) {
        EXPECT_FALSE(fact.trimmed().isEmpty());
        EXPECT_TRUE(line.endsWith(u' ' + fact)) << line.toStdString();
    }
    EXPECT_TRUE(form.isVisible()) << "the about box stays open";
}

TEST(AboutBox, OpensModallyAndClosesWithEnter)
{
    bool wasUp = false;
    whenModalAppears(
        [&](QWidget* form) {
            wasUp = named<QPushButton>(form, "cmdOk")->isDefault();
            QTest::keyClick(form, Qt::Key_Return);
        },
        QStringLiteral("frmAbout"));
    OpenAboutBox(nullptr);
    EXPECT_TRUE(wasUp);
    for (const QWidget* form : LibraryForms())
        EXPECT_NE(form->objectName(), QStringLiteral("frmAbout")) << "the closed box is gone";
}

TEST(Translation, TheTableOfTheLocalesLanguageReplacesTheTextsOfADialog)
{
    QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    QFile table(QDir(folder.path()).filePath(QStringLiteral("de.tsv")));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly));
    table.write("7968\t\xc3\x9c" "ber %1\n"
                "7969\tVersion %1.%2.%3\n"
                "7970\t%1 gibt den Datens\xc3\xa4tzen Ihrer Tabellen eigene Suchspalten.%2%3\n"
                "7971\tOhne jede Gew\xc3\xa4hr.\n"
                "8066\tJa, gut\n"
                "8084\tSysteminfo...\n"
                "9400\tCopyright \xc2\xa9 die Autoren von %1.\n");
    table.close();

    struct Restore {
        ~Restore()
        {
            QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
            ResourceTable::setTranslationFolder({});
            ResourceTable::reset();
        }
    } restore;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Switzerland));
    ASSERT_TRUE(ResourceTable::setTranslationFolder(folder.path()));

    frmAbout form;
    const QString title = Diagnostics::instance().caption();
    EXPECT_EQ(form.windowTitle(), QStringLiteral("\u00dcber ") + title);
    EXPECT_EQ(textOf(form, "lblDescription"),
              QStringLiteral("KVOSearchEdit gibt den Datens\u00e4tzen Ihrer Tabellen eigene Suchspalten.\n"
                             "Copyright \u00a9 die Autoren von ") + title + u'.');
    EXPECT_EQ(textOf(form, "lblDisclaimer"), QStringLiteral("Ohne jede Gew\u00e4hr."));
    EXPECT_EQ(textOf(form, "cmdOk"), QStringLiteral("Ja, gut"));
    EXPECT_EQ(textOf(form, "cmdSysInfo"), QStringLiteral("Systeminfo..."));
}

} // namespace
