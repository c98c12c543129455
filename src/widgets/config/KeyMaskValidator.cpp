#include "config/KeyMaskValidator.h"

namespace searchdata {

KeyMaskValidator::KeyMaskValidator(const QString& mask, QObject* parent) : QValidator(parent)
{
    const qsizetype slash = mask.indexOf(QLatin1Char('/'));
    m_classes = slash < 0 ? mask : mask.left(slash);
    m_literals = slash < 0 ? QString() : mask.mid(slash + 1);
}

QValidator::State KeyMaskValidator::validate(QString& input, int&) const
{
    for (const QChar c : input)
        if (!Passes(c))
            return Invalid;
    return Acceptable;
}

bool KeyMaskValidator::Passes(QChar c) const
{
    if (m_literals.contains(c))
        return true;
    for (const QChar cls : m_classes) {
        switch (cls.unicode()) {
        case 'U':
            if (c.isUpper())
                return true;
            break;
        case 'L':
            if (c.isLower())
                return true;
            break;
        case 'D':
            if (c.isDigit())
                return true;
            break;
        case 'Z':
            if (c.isLetter() && !c.isUpper() && !c.isLower())
                return true;
            break;
        default:
            break;
        }
    }
    return false;
}

} // namespace searchdata
