#pragma once

#include <QLocale>

namespace searchdata::test {

/// Switches the process locale for one scope and puts the previous one back.
class LocaleScope {
public:
    explicit LocaleScope(const QLocale& locale) { QLocale::setDefault(locale); }
    ~LocaleScope() { QLocale::setDefault(m_saved); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    QLocale m_saved;
};

} // namespace searchdata::test
