#include "searchdata/CFilterTerm.h"

#include "platform/Guard_p.h"
#include "searchdata/AdoTypes.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Dialect.h"
#include "searchdata/Value.h"

#include <QRegularExpression>
#include <cfloat>
#include <cmath>

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterTerm";

bool isLike(EComparisonOperations operation)
{
    return operation == kvoOP_IsLike || operation == kvoOP_IsNotLike;
}

/// A pattern whose last character escapes nothing, which a LIKE with an escape character refuses.
bool endsWithLoneEscape(const QString& pattern, QChar escape)
{
    qsizetype run = 0;
    for (qsizetype i = pattern.size() - 1; i >= 0 && pattern[i] == escape; --i)
        ++run;
    return run % 2 == 1;
}

/// Whether a number survives the server's conversion to a single without overflow or underflow.
bool fitsSingle(double value)
{
    if (value == 0)
        return true;
    const float single = static_cast<float>(value);
    return std::isfinite(single) && std::fabs(single) >= FLT_MIN;
}

} // namespace

/// A compare value in both of its SQL forms.
struct CFilterTerm::Operand {
    QString literal;
    QString marker;
    QVariant value;
};

CFilterTerm::CFilterTerm() = default;
CFilterTerm::~CFilterTerm() = default;

const Dialect& CFilterTerm::dialect() const
{
    // Dialects are static, so the reference outlives the collection it came from.
    if (const auto owner = m_owner.lock(); owner && owner->Handler())
        return owner->Handler()->dialect();
    return Dialect::forKind(dbkSQLite);
}

int CFilterTerm::baseFieldType() const
{
    const auto owner = m_owner.lock();
    if (!owner || m_table != owner->BaseTableName())
        return adEmpty;
    if (owner->BaseStructure())
        if (const auto field = owner->BaseStructure()->ColumnNamed(m_field))
            return field->type;
    if (const auto field = GetTableColumn(owner->BaseTable(), m_field))
        return field->type;
    return adEmpty;
}

QString CFilterTerm::SQLField() const
{
    return dialect().QualifiedName(m_table, m_field);
}

QString CFilterTerm::SQLOperator() const
{
    SD_PROC("SQLOperator");
    QString result;
    SD_GUARDED([&] {
        const bool ordered = m_class == kvoCC_Text || m_class == kvoCC_Numeric || m_class == kvoCC_Date;
        switch (m_operation) {
        case kvoOP_IsFalse:
            if (m_class == kvoCC_Boolean)
                result = QStringLiteral(" = ") + dialect().SqlBoolean(false);
            break;
        case kvoOP_IsTrue:
            // Anything but false is true, so every non-zero stored value counts.
            if (m_class == kvoCC_Boolean)
                result = QStringLiteral(" <> ") + dialect().SqlBoolean(false);
            break;
        case kvoOP_Equals:
            if (ordered)
                result = QStringLiteral(" = ");
            break;
        case kvoOP_NotEquals:
            if (ordered)
                result = QStringLiteral(" <> ");
            break;
        case kvoOP_Less:
            if (ordered)
                result = QStringLiteral(" < ");
            break;
        case kvoOP_Greater:
            if (ordered)
                result = QStringLiteral(" > ");
            break;
        case kvoOP_LessOrEqual:
            if (ordered)
                result = QStringLiteral(" <= ");
            break;
        case kvoOP_GreatorOrEqual:
            if (ordered)
                result = QStringLiteral(" >= ");
            break;
        case kvoOP_IsLike:
            if (m_class == kvoCC_Keyword || m_class == kvoCC_Text)
                result = QStringLiteral(" LIKE ");
            break;
        case kvoOP_IsNotLike:
            if (m_class == kvoCC_Keyword || m_class == kvoCC_Text)
                result = QStringLiteral(" NOT LIKE ");
            break;
        default:
            break;
        }
    });
    return result;
}

CFilterTerm::Operand CFilterTerm::compareOperand() const
{
    const Dialect& d = dialect();
    switch (m_class) {
    case kvoCC_Keyword:
    case kvoCC_Text: {
        if (m_compareTo.contains(QChar(0)))
            detail::fail(QStringLiteral("the compare text of %1 holds a null character").arg(m_field));
        // Wildcards stay as typed; only a pattern that the database would refuse is kept out.
        if (m_class == kvoCC_Text && isLike(m_operation) && endsWithLoneEscape(m_compareTo, QLatin1Char('\\')))
            detail::fail(QStringLiteral("the pattern \"%1\" of %2 ends with the escape character").arg(m_compareTo, m_field));
        // A null text would bind as NULL, which no row equals; the literal is an empty text.
        return {d.SqlQuote(m_compareTo), QStringLiteral("?"), QVariant(m_compareTo.isNull() ? QStringLiteral("") : m_compareTo)};
    }
    case kvoCC_Numeric: {
        static const QRegularExpression wholeNumber(QStringLiteral("^[+-]?[0-9]+$"));
        const QString text = m_compareTo.trimmed();
        Operand operand;
        double number = 0;
        bool whole = false;
        if (wholeNumber.match(text).hasMatch()) {
            const qint64 n = text.toLongLong(&whole);
            if (whole) {
                number = static_cast<double>(n);
                operand = {Dialect::sqlNumber(n), QStringLiteral("?"), QVariant(n)};
            }
        }
        if (!whole) {
            const Result<double> converted = Value(m_compareTo).toDouble();
            if (!converted)
                detail::fail(QStringLiteral("the compare value \"%1\" of %2 is no number").arg(m_compareTo, m_field));
            number = converted.value();
            operand = {Dialect::sqlNumber(number), QStringLiteral("?"), QVariant(number)};
        }
        // A single is stored with less precision than the number typed: compare at the field's own
        // precision, so that 0.1 finds a stored 0.1.
        const bool single = m_column ? m_column->ColumnType() == fcSingle : baseFieldType() == adSingle;
        if (single && fitsSingle(number)) {
            operand.literal = d.numericConversion(adSingle, operand.literal);
            operand.marker = d.numericConversion(adSingle, operand.marker);
        } else {
            // A bound value compares as the exact number that the literal is.
            operand.marker = d.numericConversion(adNumeric, operand.marker);
        }
        return operand;
    }
    case kvoCC_Date: {
        const Result<QDateTime> converted = ParseDateText(m_compareTo);
        if (!converted)
            detail::fail(QStringLiteral("the compare value \"%1\" of %2 is no date").arg(m_compareTo, m_field));
        QDateTime date = converted.value();
        const QTime time = date.time();
        date.setTime(QTime(time.hour(), time.minute(), time.second()));
        return {d.SqlDate(date), QStringLiteral("?"), QVariant(date)};
    }
    default:
        return {};
    }
}

QString CFilterTerm::SQLCompareTo() const
{
    SD_PROC("SQLCompareTo");
    QString result;
    SD_GUARDED([&] { result = compareOperand().literal; });
    return result;
}

QString CFilterTerm::SQLCompareToParameter(QVariant& value) const
{
    SD_PROC("SQLCompareToParameter");
    QString result;
    SD_GUARDED([&] {
        Operand operand = compareOperand();
        if (operand.literal.isEmpty())
            return;
        value = operand.value;
        result = operand.marker;
    });
    return result;
}

} // namespace searchdata
