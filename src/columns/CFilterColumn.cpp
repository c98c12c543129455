#include "searchdata/CFilterColumn.h"

#include "platform/Guard_p.h"
#include "searchdata/AdoTypes.h"
#include "searchdata/Catalog.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"

namespace searchdata {

namespace {

constexpr char kModule[] = "CFilterColumn";

bool isTextType(FilterColumnTypeConstants t)
{
    return t == fcKeyword || t == fcText || t == fcNote;
}

bool isNumericType(FilterColumnTypeConstants t)
{
    return t == fcInteger16 || t == fcInteger32 || t == fcSingle || t == fcDouble;
}

/// A number as SQL text: a whole number exactly, a single in the shortest decimal form that reads back
/// as it, so that 1.1f is 1.1, as it was typed, wherever the column's number goes into SQL.
QString sqlNumberOf(const Value& v)
{
    if (v.type() == Value::Type::Int16 || v.type() == Value::Type::Int32)
        return Dialect::sqlNumber(static_cast<qint64>(v.toInt32().value()));
    return Dialect::sqlNumber(v.toVariant().toDouble());
}

Value zeroOf(FilterColumnTypeConstants type)
{
    switch (type) {
    case fcInteger16: return Value(qint16(0));
    case fcInteger32: return Value(qint32(0));
    case fcSingle: return Value(0.0f);
    default: return Value(0.0);
    }
}

} // namespace

CFilterColumn::CFilterColumn() = default;
CFilterColumn::~CFilterColumn() = default;

QString CFilterColumn::CaptionOrName() const
{
    return m_caption.isEmpty() ? m_name : m_caption;
}

void CFilterColumn::SetupContext(std::shared_ptr<Catalog> catalog, const QString& searchTable, std::shared_ptr<DatabaseHandler> database,
                                 const QString& keywordTable, const QString& baseTable)
{
    m_catalog = std::move(catalog);
    m_searchTable = searchTable;
    m_database = std::move(database);
    m_keywordTable = keywordTable;
    m_baseTable = baseTable;
}

const Dialect& CFilterColumn::dialect() const
{
    return m_database ? m_database->dialect() : Dialect::forKind(dbkSQLite);
}

void CFilterColumn::guardedCopy(Value& target, const Value& source)
{
    // A copy of a value can only fail for want of memory; the column then holds Empty and says so.
    try {
        target = source;
    } catch (...) {
        target = Value();
        UiServices::current().ShowMessage(MessageKind::Warning, Diagnostics::instance().caption(), GetResourceText(7776));
    }
}

void CFilterColumn::unbindControls()
{
    m_captionLabel = nullptr;
    m_control = nullptr;
    m_addButton = nullptr;
    m_removeButton = nullptr;
    m_defaultButton = nullptr;
}

int CFilterColumn::ADOFieldType() const
{
    switch (m_columnType) {
    case fcInteger16: return adSmallInt;
    case fcInteger32: return adInteger;
    case fcSingle: return adSingle;
    case fcDouble: return adDouble;
    case fcDateTime: return adDate;
    case fcBoolean: return adBoolean;
    default: return adVarWChar;
    }
}

QString CFilterColumn::ColumnTypeName() const
{
    switch (m_columnType) {
    case fcKeyword: return GetResourceText(7012);
    case fcText: return GetResourceText(7015);
    case fcInteger16: return GetResourceText(7011);
    case fcInteger32: return GetResourceText(7013);
    case fcSingle: return GetResourceText(7014);
    case fcDouble: return GetResourceText(7010);
    case fcDateTime: return GetResourceText(7009);
    case fcBoolean: return GetResourceText(7008);
    case fcNote: return GetResourceText(7017);
    default: return GetResourceText(7016);
    }
}

QString CFilterColumn::ValidationPrompt() const
{
    const QString length = QString::number(m_textLengthInUI);
    switch (m_columnType) {
    case fcKeyword: return GetResourceText(6916, {length});
    case fcText: return GetResourceText(6919, {length});
    case fcInteger16: return GetResourceText(6915);
    case fcInteger32: return GetResourceText(6917);
    case fcSingle: return GetResourceText(6918);
    case fcDouble: return GetResourceText(6914);
    case fcDateTime: return GetResourceText(6913);
    case fcBoolean: return GetResourceText(6912);
    case fcNote: return GetResourceText(6920);
    default: return {};
    }
}

Value CFilterColumn::value() const
{
    if (m_isPicklist) {
        const IComboBoxControl* combo = MyComboBox();
        return Value(combo ? combo->Text() : QString());
    }
    const ITextBoxControl* box = MyTextBox();
    switch (m_columnType) {
    case fcText:
    case fcNote:
        return Value(box ? box->Text().trimmed() : QString());
    case fcInteger16:
    case fcInteger32:
    case fcSingle:
    case fcDouble:
        if (box)
            if (Result<Value> v = InColumnType(Value(box->Text())))
                return v.value();
        return zeroOf(m_columnType);
    case fcDateTime:
        if (box && !box->Text().trimmed().isEmpty())
            if (Result<QDateTime> d = Value(box->Text()).toDateTime())
                return Value(d.value());
        return Value::null();
    case fcBoolean: {
        const ICheckBoxControl* check = MyCheckBox();
        return Value(check && check->Value() == 1);
    }
    default:
        return Value::null();
    }
}

Result<Value> CFilterColumn::InColumnType(const Value& value) const
{
    switch (m_columnType) {
    case fcInteger16: return value.convertTo(Value::Type::Int16);
    case fcInteger32: return value.convertTo(Value::Type::Int32);
    case fcSingle: return value.convertTo(Value::Type::Single);
    case fcDouble: return value.convertTo(Value::Type::Double);
    case fcDateTime: return value.convertTo(Value::Type::DateTime);
    case fcBoolean: return value.convertTo(Value::Type::Boolean);
    default: return value;
    }
}

bool CFilterColumn::HoldsNoDate(const Value& value)
{
    if (value.isBlank())
        return true;
    if (value.type() == Value::Type::DateTime)
        return value.toDateTime().value() == Value::zeroDate();
    if (value.isNumeric())
        return value.toDouble().valueOr(1) == 0;
    return value.text().trimmed().isEmpty();
}

Value CFilterColumn::StoredForm(const Value& value) const
{
    switch (m_columnType) {
    case fcInteger16:
    case fcInteger32:
    case fcSingle:
    case fcDouble:
        return value.isBlank() ? zeroOf(m_columnType) : InColumnType(value).valueOr(value);
    case fcDateTime: {
        if (HoldsNoDate(value))
            return Value::null();
        const Result<QDateTime> d = value.toDateTime();
        if (!d)
            return value;
        const QDateTime t = d.value();
        return Value(QDateTime(t.date(), QTime(t.time().hour(), t.time().minute(), t.time().second())));
    }
    case fcBoolean:
        return Value(value.toBoolean().valueOr(false));
    default:
        return Value(value.isBlank() ? QString() : value.text().trimmed());
    }
}

Value CFilterColumn::DefaultValue(const QDateTime& now) const
{
    if (m_isPicklist) {
        const Value text(m_picklistDefault);
        if (isTextType(m_columnType))
            return text;
        if (isNumericType(m_columnType))
            return InColumnType(Value(NumericPrefix(m_picklistDefault))).valueOr(zeroOf(m_columnType));
        if (m_columnType == fcDateTime) {
            if (Result<QDateTime> d = text.toDateTime())
                return Value(d.value());
            return Value::null();
        }
        if (m_columnType == fcBoolean)
            return text.toBoolean().ok() ? Value(text.toBoolean().value()) : Value(false);
        return Value::null();
    }
    switch (m_columnType) {
    case fcKeyword:
    case fcText:
        return Value(QString());
    case fcNote:
        return Value(m_picklistDefault);
    case fcDateTime:
        return m_dateTimeDefaultMode == fcDTDM_Now ? Value(now) : m_dateTimeDefaultValue;
    case fcInteger16:
    case fcInteger32:
    case fcSingle:
    case fcDouble:
    case fcBoolean:
        return Value(qint16(0));
    default:
        return Value::null();
    }
}

QString CFilterColumn::SQLDefaultValue(const QDateTime& now) const
{
    const Value v = DefaultValue(now);
    if (v.isNull())
        return QStringLiteral("NULL");
    if (m_columnType == fcBoolean)
        return dialect().SqlBoolean(v.toBoolean().valueOr(false));
    if (isNumericType(m_columnType))
        return v.isNumeric() ? sqlNumberOf(v) : QStringLiteral("0");
    if (m_columnType == fcDateTime) {
        const Result<QDateTime> d = v.toDateTime();
        return d ? dialect().SqlDate(d.value()) : QStringLiteral("NULL");
    }
    return dialect().SqlQuote(v.text());
}

Value CFilterColumn::SQLFormatPicklistValue(const QString& text) const
{
    SD_PROC("SQLFormatPicklistValue");
    Value result;
    SD_GUARDED([&] {
        const QString trimmed = text.trimmed();
        if (isTextType(m_columnType)) {
            result = Value(dialect().SqlQuote(trimmed));
        } else if (isNumericType(m_columnType)) {
            const Value number(trimmed);
            if (!number.isNumeric())
                return;
            if (dialect().kind() == dbkPostgreSQL) {
                const Result<double> d = number.toDouble();
                if (d)
                    result = Value(dialect().numericConversion(ADOFieldType(), Dialect::sqlNumber(d.value())));
            } else if (Result<Value> typed = InColumnType(number)) {
                result = typed.value();
            }
        } else if (m_columnType == fcDateTime) {
            if (Result<QDateTime> d = Value(trimmed).toDateTime())
                result = Value(dialect().SqlDate(d.value()));
        }
    });
    return result;
}

std::shared_ptr<CScPicklist> CFilterColumn::PickList() const
{
    if (m_picklist)
        return m_picklist;
    SD_PROC("PickList");
    SD_GUARDED([&] {
        auto picklist = std::make_shared<CScPicklist>();
        picklist->Init(m_database, m_catalog ? GetCatalogTable(*m_catalog, m_baseTable) : nullptr, weak_from_this());
        m_picklist = std::move(picklist);
    });
    return m_picklist;
}

QString CFilterColumn::SQLPicklistLiteral(const QString& text) const
{
    const Value v = SQLFormatPicklistValue(text);
    if (v.isBlank())
        return {};
    if (v.type() == Value::Type::Text)
        return v.text();
    return sqlNumberOf(v);
}

QString CFilterColumn::PicklistTableName() const
{
    return QStringLiteral("Picklist") + m_baseTable + m_name;
}

bool CFilterColumn::IsPicklistTableMissing() const
{
    if (!m_isPicklist)
        return false;
    return !m_catalog || !GetCatalogTable(*m_catalog, PicklistTableName());
}

bool CFilterColumn::IsBlank() const
{
    if (!m_control)
        return true;
    if (const ITextBoxControl* box = MyTextBox())
        return box->Text().trimmed().isEmpty();
    if (const ICheckBoxControl* check = MyCheckBox())
        return check->Value() == 0;
    if (const ILabelControl* label = MyLabelControl())
        return label->Caption().trimmed().isEmpty();
    if (const IComboBoxControl* combo = MyComboBox())
        return combo->ListCount() == 0;
    return true;
}

void CFilterColumn::ClearValue()
{
    if (ITextBoxControl* box = MyTextBox()) {
        box->SetText(QString());
    } else if (ICheckBoxControl* check = MyCheckBox()) {
        check->SetValue(0);
    } else if (IComboBoxControl* combo = MyComboBox()) {
        if (m_columnType == fcKeyword) {
            combo->Clear();
        } else if (m_isPicklist) {
            const Value wanted(m_picklistDefault);
            for (int i = 0; i < combo->ListCount(); ++i) {
                const Value entry(combo->List(i));
                bool equal = false;
                if (isTextType(m_columnType) || m_columnType == fcBoolean) {
                    equal = TextEquals(entry.text(), m_picklistDefault, 1);
                } else if (m_columnType == fcDateTime) {
                    equal = entry.isDate() && wanted.isDate() && entry.toDateTime().value() == wanted.toDateTime().value();
                } else if (isNumericType(m_columnType)) {
                    equal = entry.isNumeric() && wanted.isNumeric() && entry.toDouble().value() == wanted.toDouble().value();
                }
                if (equal) {
                    combo->SetListIndex(i);
                    break;
                }
            }
        }
    }
}

void CFilterColumn::showValue(const Value& value, const QStringList& comboList, bool raiseMaxLength)
{
    if (ITextBoxControl* box = MyTextBox()) {
        if (m_columnType == fcDateTime) {
            box->SetText(HoldsNoDate(value) ? QString() : value.text());
            return;
        }
        const QString text = value.text();
        // A stored value longer than today's limit can still be shown and edited.
        if (raiseMaxLength && isTextType(m_columnType))
            box->SetMaxLength(std::max<int>(m_textLengthInUI, text.size()));
        box->SetText(text);
    } else if (ICheckBoxControl* check = MyCheckBox()) {
        check->SetValue(value.toBoolean().valueOr(false) ? 1 : 0);
    } else if (ILabelControl* label = MyLabelControl()) {
        const bool isTrue = value.toBoolean().valueOr(false);
        label->SetCaption(CaptionOrName() + QStringLiteral(" = ") + Value(isTrue).text());
    } else if (IComboBoxControl* combo = MyComboBox()) {
        combo->Clear();
        const QString wanted = value.text();
        for (const QString& entry : comboList) {
            combo->AddItem(entry);
            if (m_columnType != fcKeyword && TextEquals(entry, wanted, 1))
                combo->SetListIndex(combo->NewIndex());
        }
        if (m_columnType == fcKeyword && combo->ListCount() > 0)
            combo->SetListIndex(0);
    }
}

void CFilterColumn::ResetData()
{
    SD_PROC("ResetData");
    SD_GUARDED([&] { showValue(m_savedValue, m_savedKeys, true); });
}

void CFilterColumn::CopyTemplate()
{
    SD_PROC("CopyTemplate");
    // A picklist's list is still its saved choices; only a keyword combo shows the template's entries.
    SD_GUARDED([&] { showValue(m_templateValue, m_columnType == fcKeyword ? m_templateKeys : m_savedKeys, false); });
}

void CFilterColumn::Validate()
{
    const ITextBoxControl* box = MyTextBox();
    if (!box) {
        m_isValid = true;
        return;
    }
    const QString text = box->Text();
    switch (m_columnType) {
    case fcInteger16: m_isValid = ValidInteger16(text); break;
    case fcInteger32: m_isValid = ValidInteger32(text); break;
    case fcSingle: m_isValid = ValidSingle(text); break;
    case fcDouble: m_isValid = ValidDouble(text); break;
    case fcDateTime: m_isValid = ValidDate(text); break;
    default: m_isValid = true; break;
    }
}

bool CFilterColumn::AddComboText()
{
    IComboBoxControl* combo = MyComboBox();
    if (!combo || combo->ListIndex() >= 0)
        return false;
    const QString text = combo->Text().trimmed();
    for (int i = 0; i < combo->ListCount(); ++i) {
        if (combo->List(i) == text) {
            combo->SetListIndex(i);
            combo->SetFocus();
            return false;
        }
    }
    if (text.isEmpty())
        return false;
    combo->AddItem(text);
    combo->SetListIndex(combo->NewIndex());
    combo->SetFocus();
    return true;
}

bool CFilterColumn::RemoveComboEntry()
{
    IComboBoxControl* combo = MyComboBox();
    if (!combo || combo->ListIndex() < 0)
        return false;
    const int index = combo->ListIndex();
    combo->RemoveItem(index);
    if (combo->ListCount() == 0) {
        combo->SetListIndex(-1);
        UpdateListButtons();
    } else {
        combo->SetListIndex(std::min(index, combo->ListCount() - 1));
    }
    combo->SetFocus();
    return true;
}

void CFilterColumn::UpdateListButtons()
{
    const IComboBoxControl* combo = MyComboBox();
    if (!combo || !m_addButton || m_columnType != fcKeyword)
        return;
    const bool selected = combo->ListIndex() >= 0;
    m_addButton->SetEnabled(!selected && !combo->Text().trimmed().isEmpty());
    if (m_removeButton)
        m_removeButton->SetEnabled(selected);
}

} // namespace searchdata
