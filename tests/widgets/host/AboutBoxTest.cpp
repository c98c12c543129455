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
    if (const auto* button = named<QPushButton>(&form, QLatin1String(name)))
        return button->text();
    return named<QLabel>(&form, QLatin1String(name))->text();
}

TEST(AboutBox, ShowsTheLibraryWithTheProjectsVersion)
{
    frmAbout form;
    const QString title = Diagnostics::instance().caption();
    EXPECT_EQ(form.windowTitle(), GetResourceText(7968, {title}));
    EXPECT_EQ(textOf(form, "lblTitle"), title);
    EXPECT_TRUE(textOf(form, "lblVersion").endsWith(QStringLiteral(" " SEARCHDATA_PROJECT_VERSION))) << textOf(form, "lblVersion").toStdString();
    const QStringList description = textOf(form, "lblDescription").split(u'\n');
    ASSERT_EQ(description.size(), 2);
    EXPECT_TRUE(description[0].startsWith(QStringLiteral("KVOSearchEdit "))) << description[0].toStdString();
    EXPECT_EQ(description[1], GetResourceText(9400, {title}));
    EXPECT_EQ(named<QLabel>(&form, "picIcon")->pixmap().size(), QSize(48, 48));
}

TEST(AboutBox, SystemInfoTellsWhatQtKnowsOfTheSystem)
{
    auto ui = std::make_shared<HeadlessUiServices>();
    const ServicesGuard guard(ui);
    frmAbout form;
    form.show();
    QTest::mouseClick(named<QPushButton>(&form, "cmdSysInfo"), Qt::LeftButton);

    ASSERT_EQ(ui->requests().size(), 1);
    const QString prefix = QStringLiteral("message information: ") + GetResourceText(9401) + QStringLiteral(": ");
    ASSERT_TRUE(ui->requests().first().startsWith(prefix)) << ui->requests().first().toStdString();
    const QStringList lines = ui->requests().first().mid(prefix.size()).split(u'\n');
    const QString facts[] = {QSysInfo::prettyProductName(), QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion(),
                             QSysInfo::currentCpuArchitecture(), QLibraryInfo::version().toString()};
    ASSERT_EQ(lines.size(), qsizetype(std::size(facts)));
    for (qsizetype i = 0; i < lines.size(); ++i)
        EXPECT_TRUE(lines[i].endsWith(u' ' + facts[i])) << lines[i].toStdString();
}

TEST(AboutBox, OpensModallyAndGoesWithEnter)
{
    whenModalAppears([](QWidget* form) { QTest::keyClick(form, Qt::Key_Return); }, QStringLiteral("frmAbout"));
    OpenAboutBox(nullptr);
    for (const QWidget* form : LibraryForms())
        EXPECT_NE(form->objectName(), QStringLiteral("frmAbout"));
}

TEST(Translation, TheTableOfTheLocalesLanguageReplacesTheTextsOfADialog)
{
    QTemporaryDir folder;
    QFile table(QDir(folder.path()).filePath(QStringLiteral("de.tsv")));
    ASSERT_TRUE(table.open(QIODevice::WriteOnly));
    table.write("7968\t\xc3\x9c" "ber %1\n"
                "8066\tJawohl\n"
                "8084\tSysteminfo...\n");
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
    EXPECT_EQ(form.windowTitle(), QStringLiteral("\u00dcber ") + Diagnostics::instance().caption());
    EXPECT_EQ(textOf(form, "cmdOk"), QStringLiteral("Jawohl"));
    EXPECT_EQ(textOf(form, "cmdSysInfo"), QStringLiteral("Systeminfo..."));
}

} // namespace
