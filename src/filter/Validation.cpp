#include "searchdata/Validation.h"

#include "searchdata/AdoTypes.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/Catalog.h"
#include "searchdata/ControlInterfaces.h"
#include "searchdata/Resources.h"
#include "searchdata/TableStructure.h"
#include "searchdata/UiServices.h"
#include "searchdata/Value.h"

#include <algorithm>

namespace searchdata {

namespace {

constexpr int kKeyBackspace = 8;
constexpr int kKeyCopy = 3;
constexpr int kKeyPaste = 22;
// The code of Delete is also that of the full stop; the key press cannot tell them apart.
constexpr int kKeyDelete = 46;

} // namespace

bool ValidInteger16(const QString& text)
{
    return text.trimmed().isEmpty() || Value(text).toInt16().ok();
}

bool ValidInteger32(const QString& text)
{
    return text.trimmed().isEmpty() || Value(text).toInt32().ok();
}

bool ValidSingle(const QString& text)
{
    return text.trimmed().isEmpty() || Value(text).toSingle().ok();
}

bool ValidDouble(const QString& text)
{
    return text.trimmed().isEmpty() || Value(text).toDouble().ok();
}

bool ValidDate(const QString& text, bool required)
{
    if (text.trimmed().isEmpty())
        return !required;
    return Value(text).isDate();
}

bool ValidNumber(const QString& text, bool required)
{
    Q_UNUSED(required); // a blank is never numeric, so the numeric test already requires a value
    return !text.trimmed().isEmpty() && Value(text).isNumeric();
}

QString ColumnNameRefusal(const QString& name)
{
    const QList<uint> codePoints = name.toUcs4();
    if (name.isEmpty() || !std::all_of(codePoints.cbegin(), codePoints.cend(), [](uint c) {
            return c == u'_' || QChar::isLetter(char32_t(c)) || QChar::isDigit(char32_t(c));
        }))
        return GetResourceText(9202, {name});
    // A keyword table numbers its rows in a field of this name, beside the column's own.
    if (TextEquals(name, CFilterColumns::KeywordOrder(), 1))
        return GetResourceText(9204, {name});
    return {};
}

bool ValidColumnName(const QString& name)
{
    return ColumnNameRefusal(name).isEmpty();
}

FilterComparisonClasses ComparisonClassFromColumn(const CFilterColumn* column)
{
    if (!column)
        return kvoCC_Unknown;
    switch (column->ColumnType()) {
    case fcKeyword:
        return kvoCC_Keyword;
    case fcText:
    case fcNote:
        return kvoCC_Text;
    case fcInteger16:
    case fcInteger32:
    case fcSingle:
    case fcDouble:
        return kvoCC_Numeric;
    case fcDateTime:
        return kvoCC_Date;
    case fcBoolean:
        return kvoCC_Boolean;
    default:
        return kvoCC_Unknown;
    }
}

FilterComparisonClasses ComparisonClassOfFieldType(int adoType)
{
    switch (adoType) {
    case adSmallInt:
    case adInteger:
    case adSingle:
    case adDouble:
    case adCurrency:
    case adDecimal:
    case adTinyInt:
    case adUnsignedTinyInt:
    case 18: // unsigned 16-bit
    case 19: // unsigned 32-bit
    case adBigInt:
    case 21: // unsigned 64-bit
    case adNumeric:
        return kvoCC_Numeric;
    case adDate:
        return kvoCC_Date;
    case adBoolean:
        return kvoCC_Boolean;
    case adChar:
    case adVarWChar:
        return kvoCC_Text;
    default:
        return kvoCC_Unknown;
    }
}

FilterComparisonClasses ComparisonClassFromColumn(const StructureColumn* field)
{
    return field && field->usable ? ComparisonClassOfFieldType(field->type) : kvoCC_Unknown;
}

FilterComparisonClasses ComparisonClassFromColumn(const CatalogColumn* field)
{
    return field ? ComparisonClassOfFieldType(field->type) : kvoCC_Unknown;
}

bool ValidKeyPress(IControl* control, int key, int maximumLength)
{
    QString text;
    int selStart = 0;
    int selLength = 0;
    if (const auto* box = dynamic_cast<const ITextBoxControl*>(control)) {
        text = box->Text();
        selStart = box->SelStart();
        selLength = box->SelLength();
    } else if (const auto* combo = dynamic_cast<const IComboBoxControl*>(control)) {
        text = combo->Text();
        selStart = combo->SelStart();
        selLength = combo->SelLength();
    } else {
        return false;
    }
    const qsizetype start = std::clamp<qsizetype>(selStart, 0, text.size());
    const qsizetype length = std::clamp<qsizetype>(selLength, 0, text.size() - start);
    QString left = text.left(start);
    const QString selection = text.mid(start, length);
    QString right = text.mid(start + length);

    QString inserted;
    switch (key) {
    case kKeyBackspace:
        if (selection.isEmpty())
            left.chop(1);
        break;
    case kKeyDelete:
        right.remove(0, 1);
        break;
    case kKeyCopy:
        inserted = selection;
        break;
    case kKeyPaste:
        inserted = UiServices::current().ClipboardText();
        break;
    case '"':
    case '\'':
        return false;
    default: {
        if (key < 0 || key > 0x10FFFF)
            return false;
        const char32_t character = static_cast<char32_t>(key);
        inserted = QString::fromUcs4(&character, 1);
        break;
    }
    }
    const QString result = left + inserted + right;
    if (result.endsWith(QLatin1String("  ")))
        return false;
    return maximumLength < 1 || result.size() <= maximumLength;
}

} // namespace searchdata
