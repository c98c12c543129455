#pragma once

// The entry control without a window: one console control per search column, bound to the columns so
// that a record's values are loaded, changed and saved by the same routines as in the entry control.

#include "searchdata/CFilterColumns.h"
#include "searchdata/ControlInterfaces.h"
#include "searchdata/DatabaseHandler.h"
#include "searchdata/ISearchBaseEntry.h"

#include <memory>
#include <vector>

namespace searchdata::cli {

class ConsoleTextBox : public ITextBoxControl {
public:
    QString Text() const override { return m_text; }
    void SetText(const QString& text) override { m_text = text; }
    int MaxLength() const override { return m_maxLength; }
    void SetMaxLength(int length) override { m_maxLength = length; }

private:
    QString m_text;
    int m_maxLength = 0;
};

class ConsoleCheckBox : public ICheckBoxControl {
public:
    int Value() const override { return m_value; }
    void SetValue(int value) override { m_value = value; }

private:
    int m_value = 0;
};

/// A combo box: typing sets the text and leaves the list unselected, choosing an entry sets both.
class ConsoleComboBox : public IComboBoxControl {
public:
    QString Text() const override { return m_text; }
    void SetText(const QString& text) override;
    QString List(int index) const override { return m_items.value(index); }
    int ListCount() const override { return static_cast<int>(m_items.size()); }
    int ListIndex() const override { return m_index; }
    void SetListIndex(int index) override;
    int NewIndex() const override { return m_newIndex; }
    void Clear() override;
    void AddItem(const QString& text) override;
    void RemoveItem(int index) override;
    void SetFocus() override {}
    QStringList items() const { return m_items; }

private:
    QStringList m_items;
    QString m_text;
    int m_index = -1;
    int m_newIndex = -1;
};

/// Types `text` into `control` character by character through the key test of the entry control's
/// fields, as a user would; fails naming `column` at the first character that the field refuses.
void typeInto(const CFilterColumn& column, IControl* control, const QString& text, int maxLength);

/// The rows of one record: binds a control to every column for its life, and lets go at the end.
class ConsoleEntry {
public:
    explicit ConsoleEntry(std::shared_ptr<CFilterColumns> columns);
    ~ConsoleEntry();
    ConsoleEntry(const ConsoleEntry&) = delete;
    ConsoleEntry& operator=(const ConsoleEntry&) = delete;

    /// Loads the record's stored values and shows them in the controls. To change the record, `edit`
    /// loads it instead, inside the transaction that `save` commits.
    void load(const ISearchBaseEntry& entry);
    void edit(const ISearchBaseEntry& entry);
    /// Types `text` into the column's control as a user would, or chooses it from its list; fails
    /// with a message naming the column when the control does not take it.
    void setValue(CFilterColumn& column, const QString& text);
    /// Adds keywords to a keyword column's list; gives those that were there already.
    QStringList addKeywords(CFilterColumn& column, const QStringList& words);
    /// Removes keywords from a keyword column's list; fails for a keyword that is not there.
    void removeKeywords(CFilterColumn& column, const QStringList& words);
    /// Checks every control against its column's type, then saves the record and commits what `edit`
    /// began; fails naming what did not fit, before anything is written.
    void save(const ISearchBaseEntry& entry);

    /// What the column's control shows.
    QString shownText(const CFilterColumn& column) const;
    /// The entries of a column's list: keywords, or the choices of a picklist.
    QStringList shownList(const CFilterColumn& column) const;

private:
    std::shared_ptr<CFilterColumns> m_columns;
    std::vector<std::unique_ptr<IControl>> m_controls;
    std::unique_ptr<TableTransaction> m_transaction; // of `edit`, rolled back unless `save` commits
};

} // namespace searchdata::cli
