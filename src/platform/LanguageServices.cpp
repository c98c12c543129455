#include "searchdata/LanguageServices.h"

namespace searchdata {

namespace {

std::shared_ptr<LanguageServices>& installed()
{
    thread_local std::shared_ptr<LanguageServices> services;
    return services;
}

} // namespace

LanguageServices& LanguageServices::current()
{
    if (const std::shared_ptr<LanguageServices>& services = installed())
        return *services;
    thread_local LocaleLanguageServices byLocale;
    return byLocale;
}

void LanguageServices::install(std::shared_ptr<LanguageServices> services)
{
    installed() = std::move(services);
}

bool LocaleLanguageServices::AdaptationWanted() const
{
    return LanguageCode() == QLocale::Japanese;
}

QLocale::Language LocaleLanguageServices::LanguageCode() const
{
    return QLocale().language();
}

} // namespace searchdata
