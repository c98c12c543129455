#pragma once

#include <QLocale>
#include <memory>

namespace searchdata {

/// What the library's windows ask about the user's language: whether they should take a font that
/// shows Japanese text, and which language the user reads.
class LanguageServices {
public:
    virtual ~LanguageServices() = default;

    /// The services of the calling thread: the installed ones, or those that follow the process locale.
    static LanguageServices& current();
    /// Installs `services` for the calling thread; null goes back to following the process locale.
    static void install(std::shared_ptr<LanguageServices> services);

    /// Whether the library's forms should change their fonts to one with Japanese glyphs.
    virtual bool AdaptationWanted() const = 0;
    /// The language of the user, which decides whether the entry control adapts its fonts.
    virtual QLocale::Language LanguageCode() const = 0;
};

/// The default: the process locale (`QLocale()`, so `QLocale::setDefault` counts) decides; a
/// Japanese locale asks for adaptation.
class LocaleLanguageServices : public LanguageServices {
public:
    bool AdaptationWanted() const override;
    QLocale::Language LanguageCode() const override;
};

} // namespace searchdata
