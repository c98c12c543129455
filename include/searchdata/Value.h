#pragma once

#include "searchdata/Result.h"

#include <QDateTime>
#include <QString>
#include <QVariant>
#include <variant>

namespace searchdata {

/// The library's variant value: what a search column holds, what the database gives and takes.
///
/// Conversions follow the rules that stored data and profiles were written with: numbers convert
/// with banker's rounding to integers and report overflow as an error; texts convert through the
/// process locale (numbers shown to and read from users) and always accept ISO dates; date-times
/// count from the day 0 of 1899-12-30, so a date and a double convert into each other.
///
/// A date-time is a wall-clock value: conversions read only the date and time of a QDateTime,
/// whatever zone it is in; the QDateTimes made here are in local time, as the SQL drivers give them.
/// Failed conversions give one of the errors "type mismatch", "overflow" or "invalid use of Null";
/// Empty converts to 0, "", False and the date 0.
class Value {
public:
    enum class Type { Empty, Null, Int16, Int32, Single, Double, DateTime, Boolean, Text };

    /// Empty: nothing assigned yet.
    Value() = default;
    Value(qint16 v) : m_data(v) {}
    Value(qint32 v) : m_data(v) {}
    Value(float v) : m_data(v) {}
    Value(double v) : m_data(v) {}
    Value(bool v) : m_data(v) {}
    Value(const QDateTime& v) : m_data(v) {}
    Value(const QString& v) : m_data(v) {}
    Value(const char* v) : m_data(QString::fromUtf8(v)) {}

    static Value null();
    /// The date 0 (1899-12-30 00:00:00), the "zero" of a date-time.
    static QDateTime zeroDate();

    Type type() const;
    bool isEmpty() const { return type() == Type::Empty; }
    bool isNull() const { return type() == Type::Null; }
    /// Empty or Null.
    bool isBlank() const { return isEmpty() || isNull(); }
    /// A number, a boolean, or a text that converts to a number (locale or C form).
    bool isNumeric() const;
    /// A date-time, or a text that reads as a date (ISO or the locale's short or long form).
    bool isDate() const;

    Result<qint16> toInt16() const;
    Result<qint32> toInt32() const;
    Result<float> toSingle() const;
    Result<double> toDouble() const;
    Result<QDateTime> toDateTime() const;
    Result<bool> toBoolean() const;
    /// Text form: numbers in the process locale without grouping, booleans "True"/"False",
    /// dates in the locale's short form, Empty as "", Null is an error.
    Result<QString> toText() const;

    /// The text form, or "" when there is none (Null).
    QString text() const;

    /// Converts to the given type; Empty and Null convert to themselves.
    Result<Value> convertTo(Type target) const;

    /// The Qt form for binding into statements; Null and Empty become a null QVariant. A 16-bit
    /// integer goes out as int and a single as the double of its shortest decimal form (0.1f as
    /// 0.1), which every driver binds as a number.
    QVariant toVariant() const;
    /// Reads a value that a statement gave back; dates, numbers, texts and booleans keep their kind.
    static Value fromVariant(const QVariant& v);

    /// Same type and same content. Numbers of different widths are not equal here: convert first.
    bool operator==(const Value& other) const;
    bool operator!=(const Value& other) const { return !(*this == other); }

private:
    struct NullTag { bool operator==(const NullTag&) const { return true; } };
    std::variant<std::monostate, NullTag, qint16, qint32, float, double, QDateTime, bool, QString> m_data;
    explicit Value(NullTag t) : m_data(t) {}
};

/// The leading number of a text, as far as it reads as one: "12abc" gives 12, "abc" gives 0,
/// " -3.5e2x" gives -350. Always in the C form (a point for decimals).
double NumericPrefix(const QString& text);

/// Rounds half to even, as integer conversions do: 2.5 gives 2, 3.5 gives 4.
double BankersRound(double value);

/// Reads a date from text: ISO `yyyy-mm-dd[ hh:nn[:ss]]` (also with a "T"), or the process locale's
/// short or long date form, optionally followed by a time.
Result<QDateTime> ParseDateText(const QString& text);

/// The locale's short date form with a four-digit year, and the time when it is not midnight;
/// a date on day 0 shows its time alone.
QString DateToText(const QDateTime& value);

/// Compares two texts as Unicode without regard to case when `ignoreCase` is 1, exactly otherwise.
bool TextEquals(const QString& a, const QString& b, int ignoreCase);

} // namespace searchdata
