// Fonts with Japanese glyphs on the library's forms, as the language services ask.

#include "config/frmColumnEdit.h"
#include "config/frmConfigure.h"
#include "filter/frmFilter.h"
#include "filter/frmFilterHelp.h"
#include "host/LanguageAdaptation.h"
#include "host/frmAbout.h"
#include "host/frmLockedMessage.h"
#include "picklist/frmPicklistEdit.h"
#include "picklist/frmPicklistKept.h"
#include "picklist/frmPicklistSelect.h"
#include "searchdata/LanguageServices.h"
#include "searchdata/LockedMessage.h"
#include "support/WidgetTestSupport.h"

#include <QEvent>
#include <QFontDatabase>
#include <QLabel>
#include <QPointer>

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

/// Language services and the process locale for one scope; the tests' defaults after.
struct LanguageGuard {
    LanguageGuard(std::shared_ptr<LanguageServices> services, const QLocale& locale = QLocale(QLocale::English))
    {
        LanguageServices::install(std::move(services));
        QLocale::setDefault(locale);
    }
    ~LanguageGuard()
    {
        LanguageServices::install(nullptr);
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    }
};

/// The form and its controls; the pop-up list of a combo box is made on demand (a change of font
/// makes it), so it is no control of the form's own.
QList<QWidget*> widgetsOf(QWidget& form)
{
    QList<QWidget*> widgets{&form};
    for (QWidget* child : form.findChildren<QWidget*>())
        if (child->window() == &form)
            widgets.append(child);
    return widgets;
}

class JapaneseFont : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_FALSE(japanese.isEmpty()) << "scripts/install-deps.sh installs a font with Japanese glyphs";
        ASSERT_TRUE(QFontDatabase::writingSystems(japanese).contains(QFontDatabase::Japanese));
    }
    const QString japanese = JapaneseFontFamily();
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
        {"the default in an English locale", nullptr, QLocale(QLocale::English), false},
    };
    const std::pair<const char*, std::function<std::unique_ptr<QWidget>()>> forms[] = {
        {"frmAbout", [] { return std::make_unique<frmAbout>(); }},
        {"frmColumnEdit", [] { return std::make_unique<frmColumnEdit>(); }},
        {"frmConfigure", [] { return std::make_unique<frmConfigure>(); }},
        {"frmFilter", [] { return std::make_unique<frmFilter>(); }},
        {"frmFilterHelp", [] { return std::make_unique<frmFilterHelp>(); }},
        {"frmLockedMessage", [] { return std::make_unique<frmLockedMessage>(MakeLockedMessage({}, {})); }},
        {"frmPicklistEdit", [] { return std::make_unique<frmPicklistEdit>(); }},
        {"frmPicklistKept", [] { return std::make_unique<frmPicklistKept>(); }},
        {"frmPicklistSelect", [] { return std::make_unique<frmPicklistSelect>(); }},
    };
    for (const auto& [name, make] : forms) {
        const std::unique_ptr<QWidget> plain = make();
        for (const Services& s : services) {
            SCOPED_TRACE(std::string(name) + ", " + s.why);
            const LanguageGuard guard(s.installed, s.locale);
            const std::unique_ptr<QWidget> form = make();
            const QList<QWidget*> widgets = widgetsOf(*form);
            const QList<QWidget*> plainWidgets = widgetsOf(*plain);
            ASSERT_EQ(widgets.size(), plainWidgets.size());
            for (qsizetype i = 0; i < widgets.size(); ++i) {
                // Only the family changes: a bold or larger caption stays so.
                QFont expected = plainWidgets[i]->font();
                if (s.adapted)
                    expected.setFamily(japanese);
                EXPECT_EQ(widgets[i]->font(), expected) << widgets[i]->metaObject()->className() << " "
                                                        << widgets[i]->objectName().toStdString();
            }
            // A control made after the form's load takes the family from the form.
            EXPECT_EQ((new QLabel(form.get()))->font().family() == japanese, s.adapted);
        }
    }
}

TEST_F(JapaneseFont, AControlAdaptsByTheLanguageWhateverTheFormsDo)
{
    for (const auto& [adapt, language, adapted] : {std::tuple{false, QLocale::Japanese, true}, std::tuple{true, QLocale::German, false}}) {
        SCOPED_TRACE(QLocale::languageToString(language).toStdString());
        const LanguageGuard guard(std::make_shared<FixedLanguage>(adapt, language));
        QWidget control;
        auto* part = new QLabel(&control);
        UserControlToJapanese(&control);
        EXPECT_EQ(control.font().family() == japanese, adapted);
        EXPECT_EQ(part->font().family() == japanese, adapted);
    }
}

TEST_F(JapaneseFont, AFormWithoutControlsIsLeftAsItIs)
{
    const LanguageGuard guard(std::make_shared<FixedLanguage>(true, QLocale::Japanese));
    QWidget form;
    FormToJapanese(&form);
    EXPECT_EQ(form.font().family(), pinnedFont().family());
    EXPECT_FALSE(form.testAttribute(Qt::WA_SetFont));
}

/// A control that makes its part anew when its font changes, as controls that lay out rows of their
/// own do.
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
        part = new QLabel(this);
    }
};

TEST_F(JapaneseFont, AControlThatRebuildsItsPartsDoesNotStopTheRest)
{
    const LanguageGuard guard(std::make_shared<FixedLanguage>(true, QLocale::Japanese));
    QWidget form;
    new QLabel(&form);
    new Rebuilding(&form);
    new QLabel(&form);
    FormToJapanese(&form);
    for (QWidget* widget : widgetsOf(form))
        EXPECT_EQ(widget->font().family(), japanese) << widget->metaObject()->className();
}

} // namespace
