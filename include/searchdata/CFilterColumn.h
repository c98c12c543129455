#pragma once

#include "searchdata/ControlInterfaces.h"
#include "searchdata/Enums.h"
#include "searchdata/Value.h"

#include <QDateTime>
#include <QStringList>
#include <QVariant>
#include <memory>
#include <optional>

namespace searchdata {

class Catalog;
class CImportField;
class CScPicklist;
class DatabaseHandler;
class Dialect;

/// One search column of a base table: its definition as stored, its values for the record shown,
/// and its binding to the controls of its row in the entry control. Made by `CFilterColumns` only.
class CFilterColumn : public std::enable_shared_from_this<CFilterColumn> {
public:
    CFilterColumn();
    ~CFilterColumn();
    CFilterColumn(const CFilterColumn&) = delete;
    CFilterColumn& operator=(const CFilterColumn&) = delete;

    // ---- the public face -------------------------------------------------------------------

    QString Caption() const { return m_caption; }
    /// `Caption` when it has at least one character (a blank counts), else `Name`.
    QString CaptionOrName() const;
    FilterColumnTypeConstants ColumnType() const { return m_columnType; }
    QString Description() const { return m_description; }
    /// Position in the collection, from 1.
    qint16 Index() const { return m_index; }
    QString Name() const { return m_name; }
    /// The column's picklist, made on first use and kept for the column's life; it refers back to the
    /// column weakly. Null only when it could not be made (reported).
    std::shared_ptr<CScPicklist> PickList() const;
    /// Keyword entries as saved, or the choices of a picklist column for the record shown.
    const QStringList& SavedKeys() const { return m_savedKeys; }
    QStringList& SavedKeys() { return m_savedKeys; }
    Value SavedValue() const { return m_savedValue; }
    Value TemplateValue() const { return m_templateValue; }
    void setTemplateValue(const Value& value) { guardedCopy(m_templateValue, value); }
    /// Always 255: the size of text fields in the search tables.
    int TextLengthInDB() const { return 255; }
    qint16 TextLengthInUI() const { return m_textLengthInUI; }
    /// A value that the host pushes for `SaveDataFromClientUpdates`; Empty leaves the field alone.
    Value UpdatedValue() const { return m_updatedValue; }
    void setUpdatedValue(const Value& value) { m_updatedValue = value; }
    /// What the user typed, converted to the column's type; never fails (the type's zero instead, and
    /// Null for a date column that holds no date).
    Value value() const;

    // ---- definition, for the library ---------------------------------------------------------

    void setName(const QString& name) { m_name = name; }
    void setCaption(const QString& caption) { m_caption = caption; }
    void setDescription(const QString& description) { m_description = description; }
    void setColumnType(FilterColumnTypeConstants type) { m_columnType = type; }
    void setTextLengthInUI(qint16 length) { m_textLengthInUI = length; }
    bool IsNew() const { return m_isNew; }
    void setIsNew(bool isNew) { m_isNew = isNew; }
    void setIndex(qint16 index) { m_index = index; }
    bool HasSavedValue() const { return m_hasSavedValue; }
    void setHasSavedValue(bool has) { m_hasSavedValue = has; }
    void setSavedValue(const Value& value) { guardedCopy(m_savedValue, value); }
    bool IsValid() const { return m_isValid; }
    void setIsValid(bool valid) { m_isValid = valid; }
    const QStringList& TemplateKeys() const { return m_templateKeys; }
    QStringList& TemplateKeys() { return m_templateKeys; }
    bool IsPicklist() const { return m_isPicklist; }
    void setIsPicklist(bool isPicklist) { m_isPicklist = isPicklist; }
    bool PicklistAllowBlanks() const { return m_picklistAllowBlanks; }
    void setPicklistAllowBlanks(bool allow) { m_picklistAllowBlanks = allow; }
    /// Default picklist value in text form; for a note column that is not a picklist, its default.
    QString PicklistDefault() const { return m_picklistDefault; }
    void setPicklistDefault(const QString& value) { m_picklistDefault = value; }
    EFilterColumnDateTimeDefaultModeConstants DateTimeDefaultMode() const { return m_dateTimeDefaultMode; }
    void setDateTimeDefaultMode(EFilterColumnDateTimeDefaultModeConstants mode) { m_dateTimeDefaultMode = mode; }
    bool DisableEditDateTime() const { return m_disableEditDateTime; }
    void setDisableEditDateTime(bool disable) { m_disableEditDateTime = disable; }
    Value DateTimeDefaultValue() const { return m_dateTimeDefaultValue; }
    void setDateTimeDefaultValue(const Value& value) { m_dateTimeDefaultValue = value; }
    bool IsMergeColumn() const { return m_isMergeColumn; }
    void setIsMergeColumn(bool isMerge) { m_isMergeColumn = isMerge; }
    QString MergeName() const { return m_mergeName; }
    void setMergeName(const QString& name) { m_mergeName = name; }
    bool SaveDone() const { return m_saveDone; }
    void setSaveDone(bool done) { m_saveDone = done; }

    /// What one record held in this column when it was last read or written here: a save writes the
    /// field only where the value differs from it, and a keyword list as the entries added and
    /// removed since, so that what other users changed meanwhile stays.
    struct Loaded {
        QVariant key;      // the record's key, as the link column holds it
        Value value;       // `StoredForm` of the field's value
        QStringList keys;  // the keywords, in the order they were stored
    };
    /// What was loaded for the record `key`; null when nothing is known of that record.
    const Loaded* LoadedFor(const QVariant& key) const { return m_loaded && m_loaded->key == key ? &*m_loaded : nullptr; }
    void setLoaded(const QVariant& key, const Value& value, const QStringList& keys) { m_loaded = Loaded{key, value, keys}; }
    void forgetLoaded() { m_loaded.reset(); }

    /// Where the column's values live: catalogue, search table, database, keyword table, and the
    /// base table whose column this is.
    void SetupContext(std::shared_ptr<Catalog> catalog, const QString& searchTable, std::shared_ptr<DatabaseHandler> database,
                      const QString& keywordTable, const QString& baseTable);
    std::shared_ptr<Catalog> MyCatalog() const { return m_catalog; }
    QString MySearchTable() const { return m_searchTable; }
    std::shared_ptr<DatabaseHandler> MyDatabase() const { return m_database; }
    QString KeywordTable() const { return m_keywordTable; }
    QString BaseTableName() const { return m_baseTable; }

    // ---- types, defaults and SQL ---------------------------------------------------------------

    /// Field type code of the column's values.
    int ADOFieldType() const;
    /// Name of the column's type, for users.
    QString ColumnTypeName() const;
    /// What the field takes, for users.
    QString ValidationPrompt() const;
    /// `value` in the column's own type: a number of its width, a date, a boolean; keyword, text and
    /// note columns, and types this version does not know, take it as it stands. Null stays Null.
    Result<Value> InColumnType(const Value& value) const;
    /// Whether a value of a date column holds no date: blank, the number 0, or day zero (1899-12-30),
    /// which is how a record without a date reads. Such a value is stored as NULL.
    static bool HoldsNoDate(const Value& value);
    /// `value` as the column's field would show it again, for telling whether a save changes the
    /// field: a blank, a zero and a False count as what the field holds when it holds nothing, texts
    /// are trimmed, dates are taken to the second.
    Value StoredForm(const Value& value) const;
    /// The typed default value at the moment `now`.
    Value DefaultValue(const QDateTime& now) const;
    /// The default value as an SQL literal; text defaults are quoted safely.
    QString SQLDefaultValue(const QDateTime& now) const;
    /// One picklist value as an SQL expression: a quoted text, a number (converted explicitly where
    /// the server needs it), a date literal, or Empty when the text does not fit the type.
    Value SQLFormatPicklistValue(const QString& text) const;
    Value SQLPicklistDefault() const { return SQLFormatPicklistValue(m_picklistDefault); }
    /// `SQLFormatPicklistValue` as SQL text; blank when the text does not fit the column's type.
    QString SQLPicklistLiteral(const QString& text) const;
    /// Name of the column's picklist table.
    QString PicklistTableName() const;
    /// True for a picklist column whose table the catalogue lacks.
    bool IsPicklistTableMissing() const;
    /// Whether an import field's present value suits the column: not null; a text that fits the field
    /// for keyword, text and note columns; a number of the type for numeric ones; a field of the date
    /// or boolean type for those.
    bool ImportFieldFits(const CImportField& field) const;

    // ---- controls ------------------------------------------------------------------------------

    IControl* MyControl() const { return m_control; }
    void setMyControl(IControl* control) { m_control = control; }
    ILabelControl* MyCaptionLabel() const { return m_captionLabel; }
    void setMyCaptionLabel(ILabelControl* label) { m_captionLabel = label; }
    IButtonControl* MyAddButton() const { return m_addButton; }
    void setMyAddButton(IButtonControl* button) { m_addButton = button; }
    IButtonControl* MyRemoveButton() const { return m_removeButton; }
    void setMyRemoveButton(IButtonControl* button) { m_removeButton = button; }
    IButtonControl* MyDefaultButton() const { return m_defaultButton; }
    void setMyDefaultButton(IButtonControl* button) { m_defaultButton = button; }
    /// Lets go of every control of the row.
    void unbindControls();

    ITextBoxControl* MyTextBox() const { return dynamic_cast<ITextBoxControl*>(m_control); }
    ICheckBoxControl* MyCheckBox() const { return dynamic_cast<ICheckBoxControl*>(m_control); }
    IComboBoxControl* MyComboBox() const { return dynamic_cast<IComboBoxControl*>(m_control); }
    ILabelControl* MyLabelControl() const { return dynamic_cast<ILabelControl*>(m_control); }
    ILabelControl* MyViewLabel() const { return MyLabelControl(); }

    /// The control holds nothing (no control counts as blank; an unchecked box too).
    bool IsBlank() const;
    /// Empties the control, a picklist back to its default entry.
    void ClearValue();
    /// Shows `SavedValue` or `SavedKeys` in the control.
    void ResetData();
    /// Shows `TemplateValue` or `TemplateKeys` in the control.
    void CopyTemplate();
    /// Checks the control's text against the type and keeps the answer in `IsValid`.
    void Validate();
    /// Adds the typed text of a keyword combo as an entry, or selects it when it is there.
    bool AddComboText();
    /// Removes the selected entry of a keyword combo.
    bool RemoveComboEntry();
    /// Enables the add and remove buttons of a keyword combo.
    void UpdateListButtons();
    void ClearSavedKeys() { m_savedKeys.clear(); }
    void ClearTemplateKeys() { m_templateKeys.clear(); }

private:
    void guardedCopy(Value& target, const Value& source);
    void showValue(const Value& value, const QStringList& comboList, bool raiseMaxLength);
    const Dialect& dialect() const;

    QString m_name;
    QString m_caption;
    QString m_description;
    FilterColumnTypeConstants m_columnType = fcUndefined;
    qint16 m_textLengthInUI = 0;
    bool m_isNew = false;
    qint16 m_index = 0;
    ILabelControl* m_captionLabel = nullptr;
    IControl* m_control = nullptr;
    IButtonControl* m_addButton = nullptr;
    IButtonControl* m_removeButton = nullptr;
    IButtonControl* m_defaultButton = nullptr;
    bool m_hasSavedValue = false;
    Value m_savedValue;
    bool m_isValid = false;
    QStringList m_savedKeys;
    QStringList m_templateKeys;
    Value m_updatedValue;
    bool m_isPicklist = false;
    bool m_picklistAllowBlanks = false;
    QString m_picklistDefault;
    QString m_searchTable;
    std::shared_ptr<Catalog> m_catalog;
    QString m_keywordTable;
    QString m_baseTable;
    std::shared_ptr<DatabaseHandler> m_database;
    Value m_templateValue;
    EFilterColumnDateTimeDefaultModeConstants m_dateTimeDefaultMode = fcDTDM_Configure;
    bool m_disableEditDateTime = false;
    Value m_dateTimeDefaultValue = Value::null();
    bool m_isMergeColumn = false;
    QString m_mergeName;
    bool m_saveDone = false;
    mutable std::shared_ptr<CScPicklist> m_picklist; // made by the first PickList()
    std::optional<Loaded> m_loaded;
};

} // namespace searchdata
