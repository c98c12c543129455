#include "searchdata/Value.h"
#include "support/LocaleScope.h"

#include <QLocale>
#include <QVariant>
#include <cfloat>
#include <gtest/gtest.h>

// Readable failure messages for dates and values.
static void PrintTo(const QDateTime& dt, std::ostream* os)
{
    *os << dt.toString(Qt::ISODateWithMs).toStdString();
}

namespace searchdata {
static void PrintTo(const Value& v, std::ostream* os)
{
    *os << "Value(type " << static_cast<int>(v.type()) << ", \"" << v.text().toStdString() << "\")";
}
} // namespace searchdata

using namespace searchdata;
using searchdata::test::LocaleScope;
using Type = Value::Type;

namespace {

const QLocale kGerman(QLocale::German, QLocale::Germany);

QDateTime at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0, int ms = 0)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s, ms));
}

TEST(ValueNumbers, BankersRoundingGoesToEvenOnBothSides)
{
    EXPECT_EQ(BankersRound(2.5), 2);
    EXPECT_EQ(BankersRound(3.5), 4);
    EXPECT_EQ(BankersRound(-2.5), -2);
    EXPECT_EQ(BankersRound(-3.5), -4);
    EXPECT_EQ(BankersRound(0.5), 0);
    EXPECT_EQ(BankersRound(2.5000001), 3);
    EXPECT_EQ(BankersRound(-2.4), -2);
    EXPECT_EQ(BankersRound(-2.6), -3);

    EXPECT_EQ(Value(2.5).toInt32().value(), 2);
    EXPECT_EQ(Value(-3.5).toInt16().value(), -4);
    EXPECT_EQ(Value(2.5f).toInt16().value(), 2);
    EXPECT_EQ(Value("6.5").toInt32().value(), 6);
    EXPECT_EQ(Value("-6.5").toInt32().value(), -6);
}

TEST(ValueNumbers, IntegerRangesReportOverflow)
{
    EXPECT_EQ(Value(32767).toInt16().value(), 32767);
    EXPECT_EQ(Value(-32768).toInt16().value(), -32768);
    EXPECT_EQ(Value(32768).toInt16().error(), "overflow");
    EXPECT_EQ(Value(-32769).toInt16().error(), "overflow");
    EXPECT_EQ(Value(99999).toInt16().error(), "overflow");
    EXPECT_EQ(Value("99999").toInt16().error(), "overflow");
    // The range is checked after rounding.
    EXPECT_EQ(Value(32767.5).toInt16().error(), "overflow");
    EXPECT_EQ(Value(-32768.5).toInt16().value(), -32768);

    EXPECT_EQ(Value(2147483647.0).toInt32().value(), 2147483647);
    EXPECT_EQ(Value(-2147483648.0).toInt32().value(), std::numeric_limits<qint32>::min());
    EXPECT_EQ(Value(2147483648.0).toInt32().error(), "overflow");
    EXPECT_EQ(Value("1e999").toInt32().error(), "overflow");

    EXPECT_EQ(Value(static_cast<double>(FLT_MAX)).toSingle().value(), FLT_MAX);
    EXPECT_EQ(Value(1e39).toSingle().error(), "overflow");
    EXPECT_EQ(Value(-1e39).toSingle().error(), "overflow");
}

TEST(ValueNumbers, OtherKindsConvertToNumbers)
{
    EXPECT_EQ(Value(true).toInt16().value(), -1);
    EXPECT_EQ(Value(false).toInt32().value(), 0);
    EXPECT_EQ(Value(true).toDouble().value(), -1.0);
    EXPECT_EQ(Value().toInt32().value(), 0);
    EXPECT_EQ(Value().toDouble().value(), 0.0);
    EXPECT_EQ(Value::null().toInt32().error(), "invalid use of Null");
    EXPECT_EQ(Value::null().toDouble().error(), "invalid use of Null");
    EXPECT_EQ(Value("abc").toInt32().error(), "type mismatch");
    EXPECT_EQ(Value("").toDouble().error(), "type mismatch");
    EXPECT_EQ(Value("inf").toDouble().error(), "type mismatch");
    EXPECT_EQ(Value("12abc").toDouble().error(), "type mismatch");

    // Dates count days from 1899-12-30; noon is half a day and rounds to even.
    EXPECT_EQ(Value(at(2000, 1, 1, 12)).toDouble().value(), 36526.5);
    EXPECT_EQ(Value(at(2000, 1, 1, 12)).toInt32().value(), 36526);
    EXPECT_EQ(Value(at(2000, 1, 1, 18)).toInt32().value(), 36527);
    EXPECT_EQ(Value(at(1899, 12, 29, 6)).toDouble().value(), -1.25);
    EXPECT_EQ(Value(Value::zeroDate()).toDouble().value(), 0.0);
}

TEST(ValueNumbers, NumericPrefixReadsTheLeadingCNumber)
{
    EXPECT_EQ(NumericPrefix("12abc"), 12);
    EXPECT_EQ(NumericPrefix("abc"), 0);
    EXPECT_EQ(NumericPrefix(""), 0);
    EXPECT_EQ(NumericPrefix("  -3.5e2x"), -350);
    EXPECT_EQ(NumericPrefix("1e"), 1);
    EXPECT_EQ(NumericPrefix("1e+"), 1);
    EXPECT_EQ(NumericPrefix("2E-1z"), 0.2);
    EXPECT_EQ(NumericPrefix(".5."), 0.5);
    EXPECT_EQ(NumericPrefix("+7 8"), 7);
    EXPECT_EQ(NumericPrefix("-"), 0);
    EXPECT_EQ(NumericPrefix("1,5"), 1);

    LocaleScope german(kGerman);
    EXPECT_EQ(NumericPrefix("1.5"), 1.5);
}

TEST(ValueText, NumbersReadInTheLocaleAndInTheCForm)
{
    EXPECT_EQ(Value(" 2.5 ").toDouble().value(), 2.5);
    EXPECT_EQ(Value("1,234.5").toDouble().value(), 1234.5);
    EXPECT_EQ(Value("1e3").toDouble().value(), 1000);
    EXPECT_FALSE(Value("1,5").isNumeric());

    LocaleScope german(kGerman);
    EXPECT_EQ(Value("1,5").toDouble().value(), 1.5);
    EXPECT_EQ(Value("-0,25").toSingle().value(), -0.25f);
    EXPECT_EQ(Value("2,5").toInt16().value(), 2);
    // Not a German number, but the C form.
    EXPECT_EQ(Value("1.5").toDouble().value(), 1.5);
    // A German number first: the point groups thousands.
    EXPECT_EQ(Value("1.500").toDouble().value(), 1500);
    EXPECT_TRUE(Value("1,5").isNumeric());
    EXPECT_FALSE(Value("1,5x").isNumeric());
}

TEST(ValueText, PlainDigitsReadAlikeInEveryLocale)
{
    // Digits alone, with a sign or not, at the length where a double is still exact and beyond it.
    const struct {
        const char* text;
        double value;
    } cases[] = {{"7", 7}, {"+7", 7}, {"-0012", -12}, {" 42 ", 42}, {"999999999999999", 999999999999999.0},
                 {"1234567890123456", 1234567890123456.0}, {"-9007199254740993", -9007199254740992.0}};
    for (const QLocale& locale : {QLocale::c(), QLocale(kGerman)}) {
        LocaleScope scope(locale);
        for (const auto& c : cases)
            EXPECT_EQ(Value(c.text).toDouble().value(), c.value) << c.text << " in " << qPrintable(locale.name());
        EXPECT_FALSE(Value("12-3").isNumeric()) << qPrintable(locale.name());
        EXPECT_FALSE(Value("+-3").isNumeric()) << qPrintable(locale.name());
    }
}

TEST(ValueText, NumbersWriteShortestInTheLocaleWithoutGrouping)
{
    EXPECT_EQ(Value(0.1).text(), "0.1");
    EXPECT_EQ(Value(0.1 + 0.2).text(), "0.30000000000000004");
    EXPECT_EQ(Value(1234567.0).text(), "1234567");
    EXPECT_EQ(Value(-2.5).text(), "-2.5");
    EXPECT_EQ(Value(0.0001).text(), "0.0001");
    EXPECT_EQ(Value(1e20).text(), "1E+20");
    EXPECT_EQ(Value(1.5e-7).text(), "1.5E-07");
    EXPECT_EQ(Value(0.1f).text(), "0.1");
    EXPECT_EQ(Value(1234567.f).text(), "1234567");
    EXPECT_EQ(Value(static_cast<qint32>(1234567)).text(), "1234567");
    EXPECT_EQ(Value(static_cast<qint16>(-12345)).text(), "-12345");
    EXPECT_EQ(Value(true).text(), "True");
    EXPECT_EQ(Value(false).text(), "False");
    EXPECT_EQ(Value().toText().value(), "");
    EXPECT_FALSE(Value::null().toText().ok());
    EXPECT_EQ(Value::null().text(), "");

    const double samples[] = {0.1, 1.0 / 3, -123456.789, 1e20, 6.02214076e23, 1e-300, 2.5e-5};
    for (const QLocale& locale : {QLocale(QLocale::English, QLocale::UnitedStates), kGerman}) {
        LocaleScope scope(locale);
        for (double d : samples)
            EXPECT_EQ(Value(Value(d).text()).toDouble().value(), d) << Value(d).text().toStdString();
        EXPECT_EQ(Value(Value(0.7f).text()).toSingle().value(), 0.7f);
    }

    LocaleScope german(kGerman);
    EXPECT_EQ(Value(1234.5).text(), "1234,5");
    EXPECT_EQ(Value(static_cast<qint32>(1234567)).text(), "1234567");
    EXPECT_EQ(Value(2.5e-7).text(), "2,5E-07");
}

TEST(ValueText, BooleansReadWordsAndNumbers)
{
    EXPECT_TRUE(Value("true").toBoolean().value());
    EXPECT_FALSE(Value(" FALSE ").toBoolean().value());
    EXPECT_FALSE(Value("0").toBoolean().value());
    EXPECT_TRUE(Value("0.5").toBoolean().value());
    EXPECT_EQ(Value("yes").toBoolean().error(), "type mismatch");
    EXPECT_TRUE(Value(-3).toBoolean().value());
    EXPECT_FALSE(Value(0.0).toBoolean().value());
    EXPECT_FALSE(Value().toBoolean().value());
    EXPECT_FALSE(Value::null().toBoolean().ok());
}

TEST(ValueDates, ParsesIsoFormsAndRejectsImpossibleDates)
{
    EXPECT_EQ(ParseDateText("2003-07-04").value(), at(2003, 7, 4));
    EXPECT_EQ(ParseDateText(" 2003-07-04 13:05 ").value(), at(2003, 7, 4, 13, 5));
    EXPECT_EQ(ParseDateText("2003-07-04 13:05:09").value(), at(2003, 7, 4, 13, 5, 9));
    EXPECT_EQ(ParseDateText("2003-07-04T13:05:09.25").value(), at(2003, 7, 4, 13, 5, 9, 250));
    EXPECT_EQ(ParseDateText("2004-02-29").value(), at(2004, 2, 29));

    for (const char* bad : {"2003-02-30", "2003-02-29", "2003-13-01", "2003-07-04 24:00", "2003-07-04 12:60",
                            "2003-07-04 13", "2003-07-04x", "", "abc", "36526"})
        EXPECT_FALSE(ParseDateText(bad).ok()) << bad;
}

TEST(ValueDates, ParsesTheLocaleForms)
{
    EXPECT_EQ(ParseDateText("3/5/2003").value(), at(2003, 3, 5));
    EXPECT_EQ(ParseDateText("03/05/03").value(), at(2003, 3, 5));
    EXPECT_EQ(ParseDateText("3/5/75").value(), at(1975, 3, 5));
    // The two-digit year belongs to 2000 before the day is checked: 1900 had no 29 February.
    EXPECT_EQ(ParseDateText("2/29/00").value(), at(2000, 2, 29));
    EXPECT_EQ(ParseDateText("3/5/2003 1:05:09 PM").value(), at(2003, 3, 5, 13, 5, 9));
    EXPECT_EQ(ParseDateText("3/5/2003 12:30 am").value(), at(2003, 3, 5, 0, 30));
    EXPECT_EQ(ParseDateText("3/5/2003 13:05").value(), at(2003, 3, 5, 13, 5));
    EXPECT_EQ(ParseDateText("Wednesday, March 5, 2003").value(), at(2003, 3, 5));
    EXPECT_EQ(ParseDateText("wednesday, MARCH 5, 03 1:05 PM").value(), at(2003, 3, 5, 13, 5));
    // A time alone lies on day 0.
    EXPECT_EQ(ParseDateText("1:05 PM").value(), at(1899, 12, 30, 13, 5));

    for (const char* bad : {"Monday, March 5, 2003", "13/5/2003", "3/5", "2/29/2003", "3/5/2003 13:05 PM",
                            "3/5/2003 1:61", "5.3.2003", "12abc"})
        EXPECT_FALSE(ParseDateText(bad).ok()) << bad;

    LocaleScope german(kGerman);
    EXPECT_EQ(ParseDateText("5.3.2003").value(), at(2003, 3, 5));
    EXPECT_EQ(ParseDateText("05.03.03 13:05:09").value(), at(2003, 3, 5, 13, 5, 9));
    EXPECT_EQ(ParseDateText("Mittwoch, 5. März 2003").value(), at(2003, 3, 5));
    EXPECT_EQ(ParseDateText("2003-03-05").value(), at(2003, 3, 5));
    EXPECT_FALSE(ParseDateText("3/5/2003").ok());
    EXPECT_FALSE(ParseDateText("31.4.2003").ok());
}

TEST(ValueDates, WritesTheShortLocaleFormAndReadsItBack)
{
    EXPECT_EQ(DateToText(at(2003, 3, 5)), "3/5/2003");
    EXPECT_EQ(DateToText(at(2003, 3, 5, 13, 5, 9)), "3/5/2003 1:05:09 PM");
    EXPECT_EQ(DateToText(at(1899, 12, 30, 13, 5, 9)), "1:05:09 PM");
    EXPECT_EQ(DateToText(Value::zeroDate()), "12:00:00 AM");
    EXPECT_EQ(Value(at(2003, 3, 5, 13, 5, 9)).text(), "3/5/2003 1:05:09 PM");

    const QDateTime samples[] = {at(2003, 3, 5), at(2003, 12, 31, 23, 59, 59), at(1899, 12, 30, 0, 0, 1),
                                 at(100, 1, 1, 12), at(9999, 12, 31, 0, 0, 1), at(2000, 2, 29, 12)};
    for (const QLocale& locale : {QLocale(QLocale::English, QLocale::UnitedStates), kGerman}) {
        LocaleScope scope(locale);
        for (const QDateTime& dt : samples)
            EXPECT_EQ(ParseDateText(DateToText(dt)).value(), dt) << DateToText(dt).toStdString();
    }

    LocaleScope german(kGerman);
    EXPECT_EQ(DateToText(at(2003, 3, 5, 13, 5, 9)), "05.03.2003 13:05:09");
}

TEST(ValueDates, SerialNumbersConvertBothWays)
{
    EXPECT_EQ(Value(36526.25).toDateTime().value(), at(2000, 1, 1, 6));
    EXPECT_EQ(Value(-1.25).toDateTime().value(), at(1899, 12, 29, 6));
    EXPECT_EQ(Value(-0.5).toDateTime().value(), at(1899, 12, 30, 12));
    EXPECT_EQ(Value(static_cast<qint16>(1)).toDateTime().value(), at(1899, 12, 31));
    EXPECT_EQ(Value(true).toDateTime().value(), at(1899, 12, 29));
    // Rounding up to midnight carries into the next day.
    EXPECT_EQ(Value(0.9999999999).toDateTime().value(), at(1899, 12, 31));
    EXPECT_EQ(Value(3e6).toDateTime().error(), "overflow");
    EXPECT_EQ(Value(-7e5).toDateTime().error(), "overflow");
    EXPECT_EQ(Value().toDateTime().value(), Value::zeroDate());
    EXPECT_EQ(Value("3/5/2003").toDateTime().value(), at(2003, 3, 5));
    EXPECT_EQ(Value("soon").toDateTime().error(), "type mismatch");

    for (const QDateTime& dt : {at(1950, 6, 1, 8, 30), at(1899, 1, 2, 18), at(2026, 11, 22, 23, 59, 59)})
        EXPECT_EQ(Value(Value(dt).toDouble().value()).toDateTime().value(), dt);
}

TEST(ValueKinds, NumericAndDateTests)
{
    EXPECT_TRUE(Value(static_cast<qint16>(1)).isNumeric());
    EXPECT_TRUE(Value(1.5f).isNumeric());
    EXPECT_TRUE(Value(false).isNumeric());
    EXPECT_TRUE(Value(" -1.5e3 ").isNumeric());
    EXPECT_FALSE(Value("12abc").isNumeric());
    EXPECT_FALSE(Value().isNumeric());
    EXPECT_FALSE(Value::null().isNumeric());
    EXPECT_FALSE(Value(at(2003, 3, 5)).isNumeric());

    EXPECT_TRUE(Value(at(2003, 3, 5)).isDate());
    EXPECT_TRUE(Value("2003-03-05").isDate());
    EXPECT_FALSE(Value("2003-02-30").isDate());
    EXPECT_FALSE(Value(36526.0).isDate());
    EXPECT_FALSE(Value().isDate());

    EXPECT_TRUE(Value().isBlank());
    EXPECT_TRUE(Value::null().isBlank());
    EXPECT_FALSE(Value("").isBlank());
}

TEST(ValueKinds, EqualityNeedsTheSameType)
{
    EXPECT_EQ(Value(static_cast<qint16>(5)).type(), Type::Int16);
    EXPECT_NE(Value(static_cast<qint16>(5)), Value(5));
    EXPECT_NE(Value(5), Value(5.0));
    EXPECT_NE(Value(), Value::null());
    EXPECT_EQ(Value::null(), Value::null());
    EXPECT_EQ(Value("a"), Value(QStringLiteral("a")));
    EXPECT_NE(Value("a"), Value("A"));
    EXPECT_EQ(Value(at(2003, 3, 5, 1)), Value(at(2003, 3, 5, 1)));
    EXPECT_NE(Value(at(2003, 3, 5, 1)), Value(at(2003, 3, 5, 2)));
}

TEST(ValueKinds, ConvertToKeepsBlanksAndReportsErrors)
{
    EXPECT_TRUE(Value::null().convertTo(Type::Int16).value().isNull());
    EXPECT_TRUE(Value().convertTo(Type::Text).value().isEmpty());
    EXPECT_EQ(Value("12").convertTo(Type::Int16).value(), Value(static_cast<qint16>(12)));
    EXPECT_EQ(Value(2.5).convertTo(Type::Int32).value(), Value(2));
    EXPECT_EQ(Value(7).convertTo(Type::Text).value(), Value("7"));
    EXPECT_EQ(Value("2003-03-05").convertTo(Type::DateTime).value(), Value(at(2003, 3, 5)));
    EXPECT_EQ(Value(1).convertTo(Type::Boolean).value(), Value(true));
    EXPECT_EQ(Value("99999").convertTo(Type::Int16).error(), "overflow");
    EXPECT_EQ(Value("x").convertTo(Type::Double).error(), "type mismatch");
}

TEST(ValueVariants, ReadsWhatTheDriversGive)
{
    EXPECT_TRUE(Value::fromVariant(QVariant()).isNull());
    EXPECT_TRUE(Value::fromVariant(QVariant(QMetaType::fromType<qlonglong>())).isNull());
    EXPECT_TRUE(Value::fromVariant(QVariant(QMetaType::fromType<QString>())).isNull());

    // SQLite hands integers back as 64-bit.
    EXPECT_EQ(Value::fromVariant(QVariant(qlonglong(42))), Value(42));
    EXPECT_EQ(Value::fromVariant(QVariant(qlonglong(-2147483648LL))), Value(std::numeric_limits<qint32>::min()));
    EXPECT_EQ(Value::fromVariant(QVariant(qlonglong(5000000000LL))), Value(5e9));
    EXPECT_EQ(Value::fromVariant(QVariant(qulonglong(4294967295ULL))), Value(4294967295.0));
    EXPECT_EQ(Value::fromVariant(QVariant::fromValue<short>(7)), Value(static_cast<qint16>(7)));
    EXPECT_EQ(Value::fromVariant(QVariant(7)), Value(7));
    EXPECT_EQ(Value::fromVariant(QVariant(true)), Value(true));
    EXPECT_EQ(Value::fromVariant(QVariant(2.5)), Value(2.5));
    EXPECT_EQ(Value::fromVariant(QVariant(1.5f)), Value(1.5f));
    EXPECT_EQ(Value::fromVariant(QVariant(QByteArray("\xc3\xa4"))), Value(QStringLiteral("ä")));

    // SQLite gives dates as text; PostgreSQL as QDateTime or QDate.
    const Value stored = Value::fromVariant(QVariant(QStringLiteral("2003-03-05 13:05:09")));
    EXPECT_EQ(stored.type(), Type::Text);
    EXPECT_EQ(stored.toDateTime().value(), at(2003, 3, 5, 13, 5, 9));
    EXPECT_EQ(Value::fromVariant(QVariant(at(2003, 3, 5, 1))), Value(at(2003, 3, 5, 1)));
    EXPECT_EQ(Value::fromVariant(QVariant(QDate(2003, 3, 5))), Value(at(2003, 3, 5)));
}

TEST(ValueVariants, BindsAsPlainQtValues)
{
    EXPECT_FALSE(Value().toVariant().isValid());
    EXPECT_FALSE(Value::null().toVariant().isValid());
    const QVariant small = Value(static_cast<qint16>(-3)).toVariant();
    EXPECT_EQ(small.typeId(), QMetaType::Int);
    EXPECT_EQ(small.toInt(), -3);
    const QVariant single = Value(0.1f).toVariant();
    EXPECT_EQ(single.typeId(), QMetaType::Double);
    EXPECT_EQ(single.toDouble(), 0.1);
    EXPECT_EQ(Value(true).toVariant(), QVariant(true));

    for (const Value& v : {Value(12), Value(2.5), Value(false), Value("text"), Value(at(2003, 3, 5, 13))})
        EXPECT_EQ(Value::fromVariant(v.toVariant()), v);
}

TEST(ValueText, TextEqualsFoldsCaseOnlyWhenAsked)
{
    EXPECT_TRUE(TextEquals(QStringLiteral("ÄRGER"), QStringLiteral("ärger"), 1));
    EXPECT_FALSE(TextEquals(QStringLiteral("ÄRGER"), QStringLiteral("ärger"), 0));
    EXPECT_TRUE(TextEquals(QStringLiteral("Ärger"), QStringLiteral("Ärger"), 0));
    EXPECT_FALSE(TextEquals(QStringLiteral("Ärger"), QStringLiteral("Ärgern"), 1));
    EXPECT_TRUE(TextEquals(QString(), QStringLiteral(""), 0));
}

} // namespace
