// Fonts with Japanese glyphs on the library's forms, as the language services ask.

#include "host/LanguageAdaptation.h"
#include "host/frmAbout.h"
#include "host/frmLockedMessage.h"
#include "picklist/frmPicklistEdit.h"
#include "picklist/frmPicklistKept.h"
#include "picklist/frmPicklistSelect.h"
#include "searchdata/LanguageServices.h"
#include "searchdata/LockedMessage.h"
#include "support/WidgetTestSupport.h"

#include <QDialog>
#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QPointer>
#include <QVBoxLayout>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class FixedLanguage : public LanguageServices {
public:
    FixedLanguage(bool adapt, QLocale::Language language) : m_adapt(adapt), m_language(language) {}
    bool AdaptationWanted() const override { return m_adapt; }
    QLocale::Language LanguageCode() const override { return m_language; }

private:
    bool m_adapt;
    QLocale::Language m_language;
};

/// Language services, or the process locale, for one scope; the defaults of the tests after.
class LanguageGuard {
public:
    explicit LanguageGuard(std::shared_ptr<LanguageServices> services, QLocale locale = QLocale(QLocale::English, QLocale::UnitedStates))
    {
        LanguageServices::install(std::move(services));
        QLocale::setDefault(locale);
    }
    ~LanguageGuard()
    {
        LanguageServices::install(nullptr);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }
    LanguageGuard(const LanguageGuard&) = delete;
    LanguageGuard& operator=(const LanguageGuard&) = delete;
};

/// The form and every widget on it.
QList<QWidget*> widgetsOf(QWidget& form)
{
    return QList<QWidget*>{&form} + form.findChildren<QWidget*>();
}

QString nameOf(const QWidget* widget)
{
    return QStringLiteral("%1 %2").arg(QLatin1String(widget->metaObject()->className()), widget->objectName());
}

class JapaneseFont : public ::testing::Test {
protected:
    void SetUp() override
    {
        japanese = JapaneseFontFamily();
        ASSERT_FALSE(japanese.isEmpty()) << "scripts/install-deps.sh installs a font with Japanese glyphs";
        ASSERT_TRUE(QFontDatabase::writingSystems(japanese).contains(QFontDatabase::Japanese));
        ASSERT_NE(japanese, pinnedFont().family());
    }
    QString japanese;
};

TEST_F(JapaneseFont, EveryControlOfTheLibrarysFormsTakesTheFamilyOnlyWhenAdaptationIsWanted)
{
    struct Services {
        const char* why;
        std::shared_ptr<LanguageServices> installed;
        QLocale locale;
        bool adapted;
    };
    const Services services[] = {
        {"installed, wanting adaptation", std::make_shared<FixedLanguage>(true, QLocale::English), QLocale(QLocale::English), true},
        {"installed, not wanting it", std::make_shared<FixedLanguage>(false, QLocale::Japanese), QLocale(QLocale::Japanese), false},
        {"the default in a Japanese locale", nullptr, QLocale(QLocale::Japanese, QLocale::Japan), true},
        {"the default in an English locale", nullptr, QLocale(QLocale::English, QLocale::UnitedStates), false},
    };
    const std::pair<const char*, std::function<std::unique_ptr<QWidget>()>> forms[] = {
        {"frmAbout", [] { return std::make_unique<frmAbout>(); }},
        {"frmLockedMessage", [] { return std::make_unique<frmLockedMessage>(MakeLockedMessage({}, {})); }},
        {"frmPicklistEdit", [] { return std::make_unique<frmPicklistEdit>(); }},
        {"frmPicklistKept", [] { return std::make_unique<frmPicklistKept>(); }},
        {"frmPicklistSelect", [] { return std::make_unique<frmPicklistSelect>(); }},
    };
    for (const Services& s : services) {
        const LanguageGuard guard(s.installed, s.locale);
        for (const auto& [name, make] : forms) {
            SCOPED_TRACE(std::string(name) + ", " + s.why);
            const std::unique_ptr<QWidget> form = make();
            ASSERT_GT(form->findChildren<QWidget*>().size(), 2);
            for (QWidget* widget : widgetsOf(*form))
                EXPECT_EQ(widget->font().family().toStdString(), (s.adapted ? japanese : pinnedFont().family()).toStdString())
                    << nameOf(widget).toStdString();
            // A control made after the form's load takes the family from the form.
            auto* later = new QLabel(form.get());
            EXPECT_EQ(later->font().family() == japanese, s.adapted);
        }
    }
}

TEST_F(JapaneseFont, SizeWeightAndStyleStay)
{
    const LanguageGuard guard(std::make_shared<FixedLanguage>(true, QLocale::Japanese));
    QDialog form;
    auto* title = new QLabel(QStringLiteral("Title"), &form);
    QFont large = title->font();
    large.setBold(true);
    large.setItalic(true);
    large.setPointSizeF(13.5);
    title->setFont(large);

    FormToJapanese(&form);
    const QFont adapted = title->font();
    EXPECT_EQ(adapted.family(), japanese);
    EXPECT_TRUE(adapted.bold());
    EXPECT_TRUE(adapted.italic());
    EXPECT_EQ(adapted.pointSizeF(), 13.5);
    EXPECT_EQ(QFontInfo(adapted).family(), japanese) << "the family is an installed one";
    EXPECT_EQ(form.font().pointSizeF(), pinnedFont().pointSizeF());
}

TEST_F(JapaneseFont, TheFormAsksWhetherAdaptationIsWantedTheControlAsksTheLanguage)
{
    struct Case {
        bool adapt;
        QLocale::Language language;
        bool formAdapted;
        bool controlAdapted;
    };
    const Case cases[] = {
        {true, QLocale::Japanese, true, true},
        {true, QLocale::English, true, false},
        {false, QLocale::Japanese, false, true},
        {false, QLocale::German, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(QStringLiteral("adaptation %1, language %2").arg(c.adapt).arg(QLocale::languageToString(c.language)).toStdString());
        const LanguageGuard guard(std::make_shared<FixedLanguage>(c.adapt, c.language));
        for (const bool asForm : {true, false}) {
            QWidget surface;
            auto* label = new QLabel(&surface);
            asForm ? FormToJapanese(&surface) : UserControlToJapanese(&surface);
            const bool expected = asForm ? c.formAdapted : c.controlAdapted;
            EXPECT_EQ(surface.font().family() == japanese, expected) << (asForm ? "form" : "control");
            EXPECT_EQ(label->font().family() == japanese, expected) << (asForm ? "form" : "control");
        }
    }
}

TEST_F(JapaneseFont, AFormWithoutControlsIsLeftAsItIs)
{
    const LanguageGuard guard(std::make_shared<FixedLanguage>(true, QLocale::Japanese));
    QDialog form;
    FormToJapanese(&form);
    EXPECT_EQ(form.font().family(), pinnedFont().family());
    EXPECT_FALSE(form.testAttribute(Qt::WA_SetFont));
    FormToJapanese(nullptr);
    UserControlToJapanese(nullptr);
}

/// A control that makes its parts anew when its font changes, as controls that lay out their own
/// rows do.
class Rebuilding : public QWidget {
public:
    explicit Rebuilding(QWidget* parent) : QWidget(parent) { rebuild(); }
    QPointer<QLabel> part;

protected:
    void changeEvent(QEvent* event) override
    {
        if (event->type() == QEvent::FontChange)
            rebuild();
        QWidget::changeEvent(event);
    }

private:
    void rebuild()
    {
        delete part.data();
        part = new QLabel(QStringLiteral("part"), this);
    }
};

TEST_F(JapaneseFont, AControlThatRebuildsItsPartsDoesNotStopTheRest)
{
    const LanguageGuard guard(std::make_shared<FixedLanguage>(true, QLocale::Japanese));
    QDialog form;
    auto* layout = new QVBoxLayout(&form);
    layout->addWidget(new QLabel(QStringLiteral("before"), &form));
    auto* odd = new Rebuilding(&form);
    layout->addWidget(odd);
    layout->addWidget(new QLabel(QStringLiteral("after"), &form));

    FormToJapanese(&form);
    ASSERT_TRUE(odd->part);
    for (QWidget* widget : widgetsOf(form))
        EXPECT_EQ(widget->font().family().toStdString(), japanese.toStdString()) << nameOf(widget).toStdString();
}

} // namespace
