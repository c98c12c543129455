#include "searchdata/Value.h"

#include <QLocale>
#include <QRegularExpression>
#include <QTime>

#include <algorithm>
#include <charconv>
#include <cfloat>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>

// Date-times are wall-clock values. Every conversion reads only `date()` and `time()` of a QDateTime,
// whether it is in local time, UTC or at an offset; every QDateTime made here is in local time
// (Qt::LocalTime), which is also what the SQL drivers hand back. Two date values are equal when
// their dates and times are.

namespace searchdata {

namespace {

const QString kTypeMismatch = QStringLiteral("type mismatch");
const QString kOverflow = QStringLiteral("overflow");
const QString kInvalidNull = QStringLiteral("invalid use of Null");

constexpr qint64 kMsecsPerDay = 86400000;

QDate dayZero() { return QDate(1899, 12, 30); }

// The dates a value may hold: serial numbers outside them are an overflow.
QDate firstDate() { return QDate(100, 1, 1); }
QDate lastDate() { return QDate(9999, 12, 31); }

// --- text helpers --------------------------------------------------------------------------

bool isDirectionMark(char32_t c) { return c == 0x200E || c == 0x200F || c == 0x061C; }

/// Locales may put no-break or narrow spaces into dates and times; users type plain blanks.
QString plainSpaces(QString text)
{
    for (QChar& c : text)
        if (c == QChar(0x00A0) || c == QChar(0x202F) || c == QChar(0x2009))
            c = u' ';
    return text;
}

/// A text as the readers match it: plain blanks, no direction marks, ASCII digits. Right-to-left
/// locales put invisible marks around signs and separators, and many locales write their own digits;
/// QLocale does not always read its own output back.
QString forMatching(const QString& text)
{
    QString out;
    for (char32_t c : plainSpaces(text).toUcs4()) {
        if (isDirectionMark(c))
            continue;
        if (c >= 0x80 && QChar::category(c) == QChar::Number_DecimalDigit)
            c = U'0' + static_cast<char32_t>(QChar::digitValue(c));
        out += QString::fromUcs4(&c, 1);
    }
    return out;
}

// --- numbers -----------------------------------------------------------------------------------

template <typename T>
Result<T> fail(const QString& why) { return Result<T>::failure(why); }

/// Days since day 0, the time of day as the fraction. Before day 0 the fraction still counts
/// forward from midnight but carries the sign of the day: 1899-12-29 06:00 is -1.25.
double serialOf(const QDateTime& dt)
{
    const double days = static_cast<double>(dayZero().daysTo(dt.date()));
    const double fraction = static_cast<double>(dt.time().msecsSinceStartOfDay()) / kMsecsPerDay;
    return days < 0 ? days - fraction : days + fraction;
}

Result<QDateTime> dateOfSerial(double serial)
{
    if (!std::isfinite(serial))
        return fail<QDateTime>(kOverflow);
    const double whole = std::trunc(serial);
    if (whole < static_cast<double>(dayZero().daysTo(firstDate()))
        || whole > static_cast<double>(dayZero().daysTo(lastDate())))
        return fail<QDateTime>(kOverflow);
    QDate date = dayZero().addDays(static_cast<qint64>(whole));
    qint64 ms = std::llround(std::fabs(serial - whole) * kMsecsPerDay);
    if (ms >= kMsecsPerDay) {
        // Rounded up to the next midnight, which is the next day whatever the sign.
        ms = 0;
        date = date.addDays(1);
        if (date > lastDate())
            return fail<QDateTime>(kOverflow);
    }
    return QDateTime(date, QTime::fromMSecsSinceStartOfDay(static_cast<int>(ms)));
}

/// How far a C-form number reaches from `pos`, and whether it has a digit at all.
struct CNumberScan {
    qsizetype end = 0;
    bool hasDigits = false;
};

bool isAsciiDigit(QChar c) { return c >= u'0' && c <= u'9'; }

CNumberScan scanCNumber(QStringView text, qsizetype pos)
{
    CNumberScan scan{pos, false};
    const qsizetype n = text.size();
    qsizetype i = pos;
    if (i < n && (text[i] == u'+' || text[i] == u'-'))
        ++i;
    while (i < n && isAsciiDigit(text[i])) {
        ++i;
        scan.hasDigits = true;
    }
    if (i < n && text[i] == u'.') {
        ++i;
        while (i < n && isAsciiDigit(text[i])) {
            ++i;
            scan.hasDigits = true;
        }
    }
    if (!scan.hasDigits)
        return scan;
    scan.end = i;
    // The exponent counts only when digits follow it: "1e" is 1, "1e+" is 1.
    if (i < n && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        if (j < n && (text[j] == u'+' || text[j] == u'-'))
            ++j;
        if (j < n && isAsciiDigit(text[j])) {
            while (j < n && isAsciiDigit(text[j]))
                ++j;
            scan.end = j;
        }
    }
    return scan;
}

/// Reads a scanned C-form number; an exponent too large gives an infinity, too small zero.
double cNumberValue(QStringView digits)
{
    return QLocale::c().toDouble(digits);
}

/// A text of ASCII digits alone, with a sign or not, short enough to be exact as a double.
std::optional<double> plainInteger(QStringView text)
{
    const bool sign = text.startsWith(u'-') || text.startsWith(u'+');
    const QStringView digits = text.mid(sign ? 1 : 0);
    if (digits.isEmpty() || digits.size() > 15)
        return std::nullopt;
    double value = 0;
    for (const QChar c : digits) {
        if (!isAsciiDigit(c))
            return std::nullopt;
        value = value * 10 + (c.unicode() - u'0');
    }
    return text.startsWith(u'-') ? -value : value;
}

/// A whole text as a number: first in the process locale's form, then in the C form.
Result<double> numberOfText(const QString& text)
{
    QString trimmed = text;
    trimmed.removeIf([](QChar c) { return isDirectionMark(c.unicode()); });
    trimmed = trimmed.trimmed();
    if (trimmed.isEmpty())
        return fail<double>(kTypeMismatch);
    // Plain digits read alike in every locale; the locale's parser is the slow part of reading a
    // record's numbers.
    if (const std::optional<double> plain = plainInteger(trimmed))
        return *plain;
    const QLocale locale;
    bool ok = false;
    const double local = locale.toDouble(trimmed, &ok);
    if (ok)
        return std::isfinite(local) ? Result<double>(local) : fail<double>(kTypeMismatch); // "inf", "nan"
    const bool localOverflow = std::isinf(local);

    // The C form, also with the locale's symbols and digits read as their C counterparts.
    QString cForm = forMatching(trimmed);
    auto asC = [&cForm](const QString& symbol, QLatin1String c) {
        const QString plain = forMatching(symbol);
        if (!plain.isEmpty() && plain != c)
            cForm.replace(plain, c, Qt::CaseInsensitive);
    };
    asC(locale.exponential(), QLatin1String("E"));
    asC(locale.negativeSign(), QLatin1String("-"));
    asC(locale.positiveSign(), QLatin1String("+"));
    asC(locale.decimalPoint(), QLatin1String("."));
    const CNumberScan scan = scanCNumber(cForm, 0);
    if (scan.hasDigits && scan.end == cForm.size()) {
        const double c = cNumberValue(cForm);
        return std::isfinite(c) ? Result<double>(c) : fail<double>(kOverflow);
    }
    return fail<double>(localOverflow ? kOverflow : kTypeMismatch);
}

template <typename Int>
Result<Int> roundToInteger(double value)
{
    if (!std::isfinite(value))
        return fail<Int>(kOverflow);
    const double rounded = BankersRound(value);
    if (rounded < static_cast<double>(std::numeric_limits<Int>::min())
        || rounded > static_cast<double>(std::numeric_limits<Int>::max()))
        return fail<Int>(kOverflow);
    return static_cast<Int>(rounded);
}

Result<float> narrowToSingle(double value)
{
    if (std::isfinite(value) && std::fabs(value) > static_cast<double>(FLT_MAX))
        return fail<float>(kOverflow);
    return static_cast<float>(value);
}

/// Shortest round-trip digits of a number and its decimal exponent: 1234.5 gives "12345", 3.
template <typename F>
void shortestDigits(F value, std::string& digits, int& exponent)
{
    char buf[64];
    const auto result = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::scientific);
    const std::string_view text(buf, static_cast<size_t>(result.ptr - buf));
    const size_t e = text.find('e');
    digits.clear();
    for (char c : text.substr(0, e))
        if (c >= '0' && c <= '9')
            digits += c;
    exponent = 0;
    std::string_view exp = text.substr(e + 1);
    const bool negative = !exp.empty() && exp.front() == '-';
    if (!exp.empty() && (exp.front() == '+' || exp.front() == '-'))
        exp.remove_prefix(1);
    std::from_chars(exp.data(), exp.data() + exp.size(), exponent);
    if (negative)
        exponent = -exponent;
}

/// The locale's form of a plain C-form number text (digits, '.', '-', '+', 'E').
QString localized(const std::string& cForm, const QLocale& locale)
{
    const QString zero = locale.zeroDigit();
    const char32_t zeroCode = zero.isEmpty() ? U'0' : zero.toUcs4().value(0, U'0');
    QString out;
    for (char c : cForm) {
        switch (c) {
        case '.': out += locale.decimalPoint(); break;
        case '-': out += locale.negativeSign(); break;
        case '+': out += locale.positiveSign(); break;
        case 'E': out += locale.exponential(); break;
        default: {
            const char32_t code = zeroCode + static_cast<char32_t>(c - '0');
            out += QString::fromUcs4(&code, 1);
        }
        }
    }
    return out;
}

/// A float or double in the process locale, with the fewest digits that read back to the same
/// number; plain notation for exponents from -4 up to `plainLimit` - 1, scientific beyond.
template <typename F>
QString numberText(F value, int plainLimit)
{
    const QLocale locale;
    if (!std::isfinite(value))
        return locale.toString(static_cast<double>(value));
    if (value == 0)
        return locale.toString(0);
    std::string digits;
    int exponent = 0;
    shortestDigits(value, digits, exponent);
    const int count = static_cast<int>(digits.size());
    std::string text = value < 0 ? "-" : "";
    if (exponent >= -4 && exponent < plainLimit) {
        if (exponent < 0) {
            text += "0.";
            text.append(static_cast<size_t>(-exponent - 1), '0');
            text += digits;
        } else if (count <= exponent + 1) {
            text += digits;
            text.append(static_cast<size_t>(exponent + 1 - count), '0');
        } else {
            text += digits.substr(0, static_cast<size_t>(exponent + 1));
            text += '.';
            text += digits.substr(static_cast<size_t>(exponent + 1));
        }
    } else {
        text += digits.substr(0, 1);
        if (count > 1) {
            text += '.';
            text += digits.substr(1);
        }
        text += exponent < 0 ? "E-" : "E+";
        const int magnitude = std::abs(exponent);
        if (magnitude < 10)
            text += '0';
        text += std::to_string(magnitude);
    }
    return localized(text, locale);
}

QString integerText(qint32 value)
{
    QLocale locale;
    locale.setNumberOptions(locale.numberOptions() | QLocale::OmitGroupSeparator);
    return locale.toString(value);
}

// --- date formats ----------------------------------------------------------------------------

/// One piece of a Qt date or time format: a field ("dd", "MMMM", "yyyy", "AP") or literal text.
struct FormatToken {
    bool field = false;
    QString text;
};

bool isFieldLetter(QChar c)
{
    return QStringView(u"dMyhHmszt").contains(c);
}

QList<FormatToken> tokenize(const QString& format)
{
    QList<FormatToken> tokens;
    auto addLiteral = [&tokens](const QString& text) {
        if (!tokens.isEmpty() && !tokens.last().field)
            tokens.last().text += text;
        else
            tokens.append({false, text});
    };
    const qsizetype n = format.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = format[i];
        if (c == u'\'') {
            qsizetype j = i + 1;
            QString literal;
            while (j < n) {
                if (format[j] == u'\'') {
                    if (j + 1 < n && format[j + 1] == u'\'') {
                        literal += u'\'';
                        j += 2;
                        continue;
                    }
                    break;
                }
                literal += format[j++];
            }
            addLiteral(j == i + 1 ? QStringLiteral("'") : literal); // '' alone is a quote
            i = j + 1;
        } else if (c == u'A' || c == u'a') {
            const qsizetype len = (i + 1 < n && (format[i + 1] == u'P' || format[i + 1] == u'p')) ? 2 : 1;
            tokens.append({true, format.mid(i, len)});
            i += len;
        } else if (isFieldLetter(c)) {
            qsizetype j = i;
            while (j < n && format[j] == c)
                ++j;
            tokens.append({true, format.mid(i, j - i)});
            i = j;
        } else {
            addLiteral(QString(c));
            ++i;
        }
    }
    return tokens;
}

QString serialize(const QList<FormatToken>& tokens)
{
    QString format;
    for (const FormatToken& t : tokens) {
        if (t.field) {
            format += t.text;
        } else {
            const bool needsQuotes = std::any_of(t.text.begin(), t.text.end(),
                                                 [](QChar c) { return c.isLetter() || c == u'\''; });
            if (needsQuotes)
                format += u'\'' + QString(t.text).replace(u'\'', QStringLiteral("''")) + u'\'';
            else
                format += t.text;
        }
    }
    return format;
}

bool isAmPm(const FormatToken& t) { return t.field && (t.text[0] == u'A' || t.text[0] == u'a'); }
bool isBlankLiteral(const FormatToken& t) { return !t.field && t.text.trimmed().isEmpty(); }

/// The locale's short time form with seconds, without a time-zone field.
QList<FormatToken> timeTokens(const QLocale& locale)
{
    QList<FormatToken> tokens = tokenize(plainSpaces(locale.timeFormat(QLocale::ShortFormat)));
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        if (tokens[i].field && tokens[i].text[0] == u't') {
            // Drop the zone and the blank that joins it.
            if (i > 0 && isBlankLiteral(tokens[i - 1])) {
                tokens.remove(i - 1, 2);
                i -= 2;
            } else {
                tokens.remove(i--);
            }
        }
    }
    const bool hasSeconds = std::any_of(tokens.begin(), tokens.end(),
                                        [](const FormatToken& t) { return t.field && t.text[0] == u's'; });
    if (!hasSeconds) {
        QString separator = QStringLiteral(":");
        qsizetype minute = -1;
        for (qsizetype i = 0; i < tokens.size(); ++i)
            if (tokens[i].field && tokens[i].text[0] == u'm') {
                minute = i;
                if (i > 0 && !tokens[i - 1].field)
                    separator = tokens[i - 1].text;
                break;
            }
        if (minute >= 0) {
            tokens.insert(minute + 1, FormatToken{true, QStringLiteral("ss")});
            tokens.insert(minute + 1, FormatToken{false, separator});
        }
    }
    return tokens;
}

QString timeFormatWithSeconds(const QLocale& locale) { return serialize(timeTokens(locale)); }

/// The locale's short date form with the year in four digits.
QString shortDateFormat4(const QLocale& locale)
{
    QList<FormatToken> tokens = tokenize(plainSpaces(locale.dateFormat(QLocale::ShortFormat)));
    for (FormatToken& t : tokens)
        if (t.field && t.text[0] == u'y')
            t.text = QStringLiteral("yyyy");
    return serialize(tokens);
}

// --- date parsing ------------------------------------------------------------------------------

enum class DatePart { Day, Month, MonthName, Weekday, Year, Hour, Minute, Second, AmPm };

/// A locale form turned into a regular expression, with what each capture group holds.
struct DatePattern {
    QRegularExpression regex;
    QList<DatePart> parts;
};

QString namesAlternation(QStringList names)
{
    names.removeAll(QString());
    names.removeDuplicates();
    // Longest first, so that "Juni" is not taken for "Jun".
    std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) { return a.size() > b.size(); });
    for (QString& name : names)
        name = QRegularExpression::escape(forMatching(name));
    return QStringLiteral("(") + names.join(u'|') + QStringLiteral(")");
}

QStringList monthNames(const QLocale& locale)
{
    QStringList names;
    for (int m = 1; m <= 12; ++m)
        for (auto format : {QLocale::LongFormat, QLocale::ShortFormat})
            names << locale.monthName(m, format) << locale.standaloneMonthName(m, format);
    return names;
}

QStringList weekdayNames(const QLocale& locale)
{
    QStringList names;
    for (int d = 1; d <= 7; ++d)
        for (auto format : {QLocale::LongFormat, QLocale::ShortFormat})
            names << locale.dayName(d, format) << locale.standaloneDayName(d, format);
    return names;
}

QString literalRegex(const QString& literal)
{
    QString out;
    bool inBlank = false;
    for (QChar c : forMatching(literal)) {
        if (c.isSpace()) {
            if (!inBlank)
                out += QStringLiteral("\\s+");
            inBlank = true;
        } else {
            out += QRegularExpression::escape(QString(c));
            inBlank = false;
        }
    }
    return out;
}

/// Appends the regex of `tokens` to `regex`. In a time, the seconds (with the separator before
/// them) and the AM/PM marker (with its blank) are optional.
void appendRegex(const QList<FormatToken>& tokens, const QLocale& locale, bool time, QString& regex,
                 QList<DatePart>& parts)
{
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const FormatToken& t = tokens[i];
        if (!t.field) {
            const bool beforeOptional = time && i + 1 < tokens.size() && tokens[i + 1].field
                && (tokens[i + 1].text[0] == u's' || (isAmPm(tokens[i + 1]) && isBlankLiteral(t)));
            if (time && i > 0 && isAmPm(tokens[i - 1]) && isBlankLiteral(t))
                regex += QStringLiteral("\\s*"); // a leading marker may be left out
            else if (!beforeOptional)
                regex += literalRegex(t.text);
            continue;
        }
        const QChar c = t.text[0];
        const QString before = (i > 0 && !tokens[i - 1].field) ? literalRegex(tokens[i - 1].text) : QString();
        if (c == u'd' && t.text.size() <= 2) {
            regex += QStringLiteral("(\\d{1,2})");
            parts << DatePart::Day;
        } else if (c == u'd') {
            regex += namesAlternation(weekdayNames(locale));
            parts << DatePart::Weekday;
        } else if (c == u'M' && t.text.size() <= 2) {
            regex += QStringLiteral("(\\d{1,2})");
            parts << DatePart::Month;
        } else if (c == u'M') {
            regex += namesAlternation(monthNames(locale));
            parts << DatePart::MonthName;
        } else if (c == u'y') {
            regex += QStringLiteral("(\\d{4}|\\d{2})");
            parts << DatePart::Year;
        } else if (c == u'h' || c == u'H') {
            regex += QStringLiteral("(\\d{1,2})");
            parts << DatePart::Hour;
        } else if (c == u'm') {
            regex += QStringLiteral("(\\d{1,2})");
            parts << DatePart::Minute;
        } else if (c == u's') {
            regex += QStringLiteral("(?:") + before + QStringLiteral("(\\d{1,2}))?");
            parts << DatePart::Second;
        } else if (isAmPm(t)) {
            const QString marker = namesAlternation({locale.amText(), locale.pmText(), QStringLiteral("AM"),
                                                     QStringLiteral("PM")});
            if (i > 0 && isBlankLiteral(tokens[i - 1]))
                regex += QStringLiteral("(?:\\s*") + marker + QStringLiteral(")?");
            else
                regex += QStringLiteral("(?:") + marker + QStringLiteral(")?");
            parts << DatePart::AmPm;
        }
        // Other fields (milliseconds) do not occur in the forms used here.
    }
}

/// The locale forms that dates are read in, compiled once per thread and locale.
struct LocaleDatePatterns {
    QLocale locale;
    QList<DatePattern> patterns;
};

const QList<DatePattern>& localePatterns()
{
    thread_local LocaleDatePatterns cache{QLocale::c(), {}};
    const QLocale locale;
    if (!cache.patterns.isEmpty() && cache.locale == locale)
        return cache.patterns;
    cache.locale = locale;
    cache.patterns.clear();

    QList<DatePart> timeParts;
    QString timeRegex;
    appendRegex(timeTokens(locale), locale, true, timeRegex, timeParts);

    const auto options = QRegularExpression::CaseInsensitiveOption;
    QStringList dateFormats{plainSpaces(locale.dateFormat(QLocale::ShortFormat)),
                            plainSpaces(locale.dateFormat(QLocale::LongFormat))};
    dateFormats.removeDuplicates();
    for (const QString& format : dateFormats) {
        DatePattern p;
        QString regex;
        appendRegex(tokenize(format), locale, false, regex, p.parts);
        regex = QStringLiteral("^") + regex + QStringLiteral("(?:\\s+") + timeRegex + QStringLiteral(")?$");
        p.parts << timeParts;
        p.regex = QRegularExpression(regex, options);
        cache.patterns << p;
    }
    cache.patterns << DatePattern{QRegularExpression(QStringLiteral("^") + timeRegex + QStringLiteral("$"), options),
                                  timeParts};
    return cache.patterns;
}

int monthOfName(const QString& name, const QLocale& locale)
{
    for (int m = 1; m <= 12; ++m)
        for (auto format : {QLocale::LongFormat, QLocale::ShortFormat})
            if (TextEquals(name, forMatching(locale.monthName(m, format)), 1)
                || TextEquals(name, forMatching(locale.standaloneMonthName(m, format)), 1))
                return m;
    return 0;
}

int weekdayOfName(const QString& name, const QLocale& locale)
{
    for (int d = 1; d <= 7; ++d)
        for (auto format : {QLocale::LongFormat, QLocale::ShortFormat})
            if (TextEquals(name, forMatching(locale.dayName(d, format)), 1)
                || TextEquals(name, forMatching(locale.standaloneDayName(d, format)), 1))
                return d;
    return 0;
}

bool inRange(const QDate& date) { return date.isValid() && date >= firstDate() && date <= lastDate(); }

Result<QDateTime> fromMatch(const QRegularExpressionMatch& match, const QList<DatePart>& parts)
{
    const QLocale locale;
    int day = -1, month = -1, year = -1, weekday = 0, hour = 0, minute = 0, second = 0;
    bool pm = false, amPm = false;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString text = match.captured(static_cast<int>(i + 1));
        if (text.isEmpty())
            continue;
        switch (parts[i]) {
        case DatePart::Day: day = text.toInt(); break;
        case DatePart::Month: month = text.toInt(); break;
        case DatePart::MonthName: month = monthOfName(text, locale); break;
        case DatePart::Weekday: weekday = weekdayOfName(text, locale); break;
        case DatePart::Year:
            year = text.toInt();
            // Two-digit years: 00 to 29 in this century, 30 to 99 in the last.
            if (text.size() == 2)
                year += year < 30 ? 2000 : 1900;
            break;
        case DatePart::Hour: hour = text.toInt(); break;
        case DatePart::Minute: minute = text.toInt(); break;
        case DatePart::Second: second = text.toInt(); break;
        case DatePart::AmPm:
            amPm = true;
            pm = TextEquals(text, forMatching(locale.pmText()), 1) || TextEquals(text, QStringLiteral("PM"), 1);
            break;
        }
    }
    if (amPm) {
        if (hour > 12)
            return fail<QDateTime>(kTypeMismatch);
        hour = hour % 12 + (pm ? 12 : 0);
    }
    const QTime time(hour, minute, second);
    if (!time.isValid())
        return fail<QDateTime>(kTypeMismatch);
    QDate date = dayZero();
    if (year >= 0) {
        date = QDate(year, month, day);
        if (!inRange(date) || (weekday != 0 && date.dayOfWeek() != weekday))
            return fail<QDateTime>(kTypeMismatch);
    }
    return QDateTime(date, time);
}

Result<QDateTime> parseIso(const QRegularExpressionMatch& m)
{
    const QDate date(m.captured(1).toInt(), m.captured(2).toInt(), m.captured(3).toInt());
    if (!inRange(date))
        return fail<QDateTime>(kTypeMismatch);
    QTime time(0, 0);
    if (m.hasCaptured(4)) {
        const int ms = m.hasCaptured(7) ? m.captured(7).left(3).leftJustified(3, u'0').toInt() : 0;
        time = QTime(m.captured(4).toInt(), m.captured(5).toInt(), m.captured(6).toInt(), ms);
        if (!time.isValid())
            return fail<QDateTime>(kTypeMismatch);
    }
    return QDateTime(date, time);
}

// --- conversions of a value --------------------------------------------------------------------

template <typename... T>
struct Overloaded : T... { using T::operator()...; };

} // namespace

double BankersRound(double value)
{
    if (!std::isfinite(value))
        return value;
    const double floor = std::floor(value);
    const double diff = value - floor;
    if (diff < 0.5)
        return floor;
    if (diff > 0.5)
        return floor + 1;
    return std::fmod(floor, 2.0) == 0 ? floor : floor + 1;
}

double NumericPrefix(const QString& text)
{
    qsizetype start = 0;
    while (start < text.size() && text[start].isSpace())
        ++start;
    const CNumberScan scan = scanCNumber(text, start);
    if (!scan.hasDigits)
        return 0;
    return cNumberValue(QStringView(text).mid(start, scan.end - start));
}

Result<QDateTime> ParseDateText(const QString& text)
{
    const QString trimmed = forMatching(text).trimmed();
    thread_local const QRegularExpression iso(
        QStringLiteral("^(\\d{4})-(\\d{1,2})-(\\d{1,2})(?:(?:\\s+|T)(\\d{1,2}):(\\d{2})(?::(\\d{2})(?:[.,](\\d+))?)?)?$"),
        QRegularExpression::CaseInsensitiveOption);
    if (const auto m = iso.match(trimmed); m.hasMatch())
        return parseIso(m);
    // Where forms overlap ("05.03.09" is a date and a time in some locales) the first that gives
    // a real date wins.
    for (const DatePattern& p : localePatterns())
        if (const auto m = p.regex.match(trimmed); m.hasMatch())
            if (Result<QDateTime> r = fromMatch(m, p.parts))
                return r;
    return Result<QDateTime>::failure(kTypeMismatch);
}

QString DateToText(const QDateTime& value)
{
    const QLocale locale;
    const QString time = locale.toString(value.time(), timeFormatWithSeconds(locale));
    if (value.date() == dayZero())
        return plainSpaces(time);
    QString text = locale.toString(value.date(), shortDateFormat4(locale));
    if (value.time().msecsSinceStartOfDay() != 0)
        text += u' ' + time;
    return plainSpaces(text);
}

bool TextEquals(const QString& a, const QString& b, int ignoreCase)
{
    return QString::compare(a, b, ignoreCase == 1 ? Qt::CaseInsensitive : Qt::CaseSensitive) == 0;
}

Value Value::null() { return Value(NullTag{}); }

QDateTime Value::zeroDate() { return QDateTime(dayZero(), QTime(0, 0)); }

Value::Type Value::type() const
{
    // The alternatives of m_data stand in the order of Type.
    return static_cast<Type>(m_data.index());
}

bool Value::isNumeric() const
{
    switch (type()) {
    case Type::Int16:
    case Type::Int32:
    case Type::Single:
    case Type::Double:
    case Type::Boolean:
        return true;
    case Type::Text:
        return numberOfText(std::get<QString>(m_data)).ok();
    default:
        return false;
    }
}

bool Value::isDate() const
{
    if (type() == Type::DateTime)
        return std::get<QDateTime>(m_data).isValid();
    if (type() == Type::Text)
        return ParseDateText(std::get<QString>(m_data)).ok();
    return false;
}

Result<double> Value::toDouble() const
{
    return std::visit(
        Overloaded{
            [](std::monostate) { return Result<double>(0.0); },
            [](NullTag) { return fail<double>(kInvalidNull); },
            [](qint16 v) { return Result<double>(v); },
            [](qint32 v) { return Result<double>(v); },
            [](float v) { return Result<double>(v); },
            [](double v) { return Result<double>(v); },
            [](const QDateTime& v) {
                return v.isValid() ? Result<double>(serialOf(v)) : fail<double>(kTypeMismatch);
            },
            [](bool v) { return Result<double>(v ? -1.0 : 0.0); },
            [](const QString& v) { return numberOfText(v); },
        },
        m_data);
}

Result<qint16> Value::toInt16() const
{
    if (type() == Type::Int16)
        return std::get<qint16>(m_data);
    const Result<double> d = toDouble();
    return d ? roundToInteger<qint16>(d.value()) : fail<qint16>(d.error());
}

Result<qint32> Value::toInt32() const
{
    if (type() == Type::Int32)
        return std::get<qint32>(m_data);
    const Result<double> d = toDouble();
    return d ? roundToInteger<qint32>(d.value()) : fail<qint32>(d.error());
}

Result<float> Value::toSingle() const
{
    if (type() == Type::Single)
        return std::get<float>(m_data);
    const Result<double> d = toDouble();
    return d ? narrowToSingle(d.value()) : fail<float>(d.error());
}

Result<QDateTime> Value::toDateTime() const
{
    switch (type()) {
    case Type::Empty:
        return zeroDate();
    case Type::Null:
        return fail<QDateTime>(kInvalidNull);
    case Type::DateTime: {
        const QDateTime& v = std::get<QDateTime>(m_data);
        return v.isValid() ? Result<QDateTime>(v) : fail<QDateTime>(kTypeMismatch);
    }
    case Type::Text:
        return ParseDateText(std::get<QString>(m_data));
    default: {
        const Result<double> d = toDouble();
        return d ? dateOfSerial(d.value()) : fail<QDateTime>(d.error());
    }
    }
}

Result<bool> Value::toBoolean() const
{
    if (type() == Type::Boolean)
        return std::get<bool>(m_data);
    if (type() == Type::Text) {
        const QString text = std::get<QString>(m_data).trimmed();
        if (TextEquals(text, QStringLiteral("True"), 1))
            return true;
        if (TextEquals(text, QStringLiteral("False"), 1))
            return false;
    }
    const Result<double> d = toDouble();
    return d ? Result<bool>(d.value() != 0) : fail<bool>(d.error());
}

Result<QString> Value::toText() const
{
    return std::visit(
        Overloaded{
            [](std::monostate) { return Result<QString>(QString()); },
            [](NullTag) { return fail<QString>(kInvalidNull); },
            [](qint16 v) { return Result<QString>(integerText(v)); },
            [](qint32 v) { return Result<QString>(integerText(v)); },
            [](float v) { return Result<QString>(numberText(v, 7)); },
            [](double v) { return Result<QString>(numberText(v, 15)); },
            [](const QDateTime& v) {
                return v.isValid() ? Result<QString>(DateToText(v)) : fail<QString>(kTypeMismatch);
            },
            [](bool v) { return Result<QString>(v ? QStringLiteral("True") : QStringLiteral("False")); },
            [](const QString& v) { return Result<QString>(v); },
        },
        m_data);
}

QString Value::text() const { return toText().valueOr(QString()); }

Result<Value> Value::convertTo(Type target) const
{
    if (isBlank())
        return *this;
    auto wrap = [](auto result) {
        return result ? Result<Value>(Value(result.value())) : Result<Value>::failure(result.error());
    };
    switch (target) {
    case Type::Empty: return Value();
    case Type::Null: return Value::null();
    case Type::Int16: return wrap(toInt16());
    case Type::Int32: return wrap(toInt32());
    case Type::Single: return wrap(toSingle());
    case Type::Double: return wrap(toDouble());
    case Type::DateTime: return wrap(toDateTime());
    case Type::Boolean: return wrap(toBoolean());
    case Type::Text: return wrap(toText());
    }
    return Result<Value>::failure(kTypeMismatch);
}

QVariant Value::toVariant() const
{
    return std::visit(
        Overloaded{
            [](std::monostate) { return QVariant(); },
            [](NullTag) { return QVariant(); },
            // Drivers bind int natively but a short as text, which then compares unequal to numbers.
            [](qint16 v) { return QVariant(static_cast<int>(v)); },
            [](qint32 v) { return QVariant(static_cast<int>(v)); },
            // A single goes out as the double of its shortest decimal form, so that 0.1f is stored
            // as 0.1 and equals the literal a filter writes.
            [](float v) {
                char buf[32];
                const auto end = std::to_chars(buf, buf + sizeof buf, v).ptr;
                double d = static_cast<double>(v);
                std::from_chars(buf, end, d);
                return QVariant(d);
            },
            [](double v) { return QVariant(v); },
            [](const QDateTime& v) { return QVariant(v); },
            [](bool v) { return QVariant(v); },
            [](const QString& v) { return QVariant(v); },
        },
        m_data);
}

Value Value::fromVariant(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return null();
    auto fromWide = [](auto n) {
        using N = decltype(n);
        if constexpr (std::is_signed_v<N>) {
            if (n >= std::numeric_limits<qint32>::min() && n <= std::numeric_limits<qint32>::max())
                return Value(static_cast<qint32>(n));
        } else {
            if (n <= static_cast<N>(std::numeric_limits<qint32>::max()))
                return Value(static_cast<qint32>(n));
        }
        return Value(static_cast<double>(n));
    };
    switch (v.typeId()) {
    case QMetaType::Bool:
        return Value(v.toBool());
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return Value(static_cast<qint16>(v.toInt()));
    case QMetaType::Int:
    case QMetaType::UShort:
        return Value(static_cast<qint32>(v.toInt()));
    case QMetaType::Long:
    case QMetaType::LongLong:
        return fromWide(v.toLongLong());
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return fromWide(v.toULongLong());
    case QMetaType::Float:
        return Value(v.toFloat());
    case QMetaType::Double:
        return Value(v.toDouble());
    case QMetaType::QDateTime:
        return Value(v.toDateTime());
    case QMetaType::QDate:
        return Value(QDateTime(v.toDate(), QTime(0, 0)));
    case QMetaType::QTime:
        return Value(QDateTime(dayZero(), v.toTime()));
    case QMetaType::QString:
        return Value(v.toString());
    case QMetaType::QByteArray:
        return Value(QString::fromUtf8(v.toByteArray()));
    default:
        return v.canConvert<QString>() ? Value(v.toString()) : null();
    }
}

bool Value::operator==(const Value& other) const
{
    if (m_data.index() != other.m_data.index())
        return false;
    if (type() == Type::DateTime) {
        const QDateTime& a = std::get<QDateTime>(m_data);
        const QDateTime& b = std::get<QDateTime>(other.m_data);
        return a.date() == b.date() && a.time() == b.time();
    }
    return m_data == other.m_data;
}

} // namespace searchdata
