#pragma once

#include "searchdata/Value.h"

#include <QDialog>
#include <QTimer>
#include <memory>

class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace searchdata {

class CFilterColumn;
class CScPicklist;
class IFormInfo;

/// Maintains one picklist on three tabs: new entries not saved yet, the entries offered for choice,
/// and hidden ones. An entry that stored data uses is never deleted, only hidden; the default entry,
/// shown bold, can be neither.
class frmPicklistEdit : public QDialog {
    Q_OBJECT
public:
    explicit frmPicklistEdit(QWidget* parent = nullptr);

    /// Edits `picklist` in a modal dialog over `oFI`.
    void Edit(const IFormInfo* oFI, CScPicklist& picklist);
    /// Everything of `Edit` short of running modally.
    void Prepare(const IFormInfo* oFI, CScPicklist& picklist);

    /// The typed value of `text` for the column: the text of a text column, the number of a numeric
    /// one (Empty when it is too large for the type), the date of a date column; Empty when the text
    /// is blank or does not fit, and always for other kinds of column.
    Value EvaluateEntry(const QString& text) const;
    /// Whether `text` may be added: it fits the column and is no entry yet on any tab. Numbers and
    /// dates compare by their value, texts ignoring case.
    bool ValidateEntry(const QString& text) const;

private:
    QWidget* makeTab(QTreeWidget*& tree, QLineEdit*& text, std::initializer_list<QPushButton**> buttons, const char* treeName,
                     const char* textName, std::initializer_list<const char*> buttonNames);
    void InitializeLists();
    void UpdateButtons();
    void UpdateNewListButtons();
    void AddNewEntry();
    void RemoveNewItems();
    void SaveAdditions();
    void HideShowChecked(QTreeWidget* tree, int mode);
    void RemoveChecked(QTreeWidget* tree);
    void FixDefault();
    void itemChanged(QTreeWidget* tree, QTreeWidgetItem* item);

    QTreeWidgetItem* addNode(QTreeWidget* tree, const QString& text, const QString& stored, bool bold);
    /// The text an entry is known by: the form of its value, or the trimmed text when it has none.
    QString entryText(const QString& text) const;
    bool EntryUsed(const QTreeWidget* tree, const QString& text) const;
    /// The stored texts of the checked entries; the default's check does not count.
    static QStringList checkedEntries(const QTreeWidget* tree);
    /// Selects and shows the first entry that begins with `text`; false when there is none.
    static bool LocateEntry(QTreeWidget* tree, const QString& text);
    /// The entries as the user sees them, for stored texts of `tree`.
    static QStringList shownTexts(const QTreeWidget* tree, const QStringList& stored);

    QLabel* lblPrompt;
    QFrame* fraOld;
    QTabWidget* tabEdit;
    QTreeWidget* tvwNew;
    QTreeWidget* tvwOld;
    QTreeWidget* tvwHidden;
    QLineEdit* txtNew;
    QLineEdit* txtOld;
    QLineEdit* txtHidden;
    QPushButton* cmdAdd;
    QPushButton* cmdRemove;
    QPushButton* cmdSave;
    QPushButton* cmdHide;
    QPushButton* cmdRemoveOld;
    QPushButton* cmdShow;
    QPushButton* cmdRemoveHidden;
    QPushButton* cmdCancel;
    QTimer* tmrFixDefault;

    CScPicklist* m_picklist = nullptr;
    std::shared_ptr<const CFilterColumn> m_column;
    QTreeWidgetItem* m_fixNode = nullptr; // the default whose check is to be taken back
};

} // namespace searchdata
