#include "host/LanguageAdaptation.h"

#include "searchdata/Diagnostics.h"
#include "searchdata/LanguageServices.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPointer>
#include <QWidget>

namespace searchdata {

namespace {

void setFamily(QWidget& widget, const QString& family)
{
    QFont font = widget.font();
    font.setFamily(family);
    widget.setFont(font);
}

void adaptFonts(QWidget& root)
{
    const QString family = JapaneseFontFamily();
    if (family.isEmpty()) {
        Diagnostics::instance().report(ErrorReport{0, QStringLiteral("No font with Japanese glyphs is installed"),
                                                   QStringLiteral("adaptFonts"), QStringLiteral("LanguageAdaptation"),
                                                   __LINE__, QDateTime::currentDateTime()});
        return;
    }
    // Taken before any font changes, and held weakly: a control may rebuild or delete its children
    // when its font changes, and the rest must still be reached.
    const QList<QWidget*> found = root.findChildren<QWidget*>();
    const QList<QPointer<QWidget>> controls(found.begin(), found.end());
    setFamily(root, family);
    for (const QPointer<QWidget>& control : controls)
        if (control)
            setFamily(*control, family);
}

} // namespace

QString JapaneseFontFamily()
{
    QString fallback;
    for (const QString& family : QFontDatabase::families(QFontDatabase::Japanese)) {
        if (QFontDatabase::isPrivateFamily(family) || !QFontDatabase::isSmoothlyScalable(family))
            continue;
        // Fixed-width Latin letters look out of place in captions and text boxes.
        const QFontMetricsF metrics{QFont(family)};
        if (metrics.horizontalAdvance(QStringLiteral("iiii")) < metrics.horizontalAdvance(QStringLiteral("MMMM")))
            return family;
        if (fallback.isEmpty())
            fallback = family;
    }
    return fallback;
}

void FormToJapanese(QWidget* form)
{
    // The form's own font shows only through its controls.
    if (!form || !form->findChild<QWidget*>() || !LanguageServices::current().AdaptationWanted())
        return;
    adaptFonts(*form);
}

void UserControlToJapanese(QWidget* control)
{
    if (!control || LanguageServices::current().LanguageCode() != QLocale::Japanese)
        return;
    adaptFonts(*control);
}

} // namespace searchdata
