#pragma once

#include "searchdata/Enums.h"
#include "searchdata/TableStructure.h"

#include <QDialog>
#include <QIcon>
#include <QList>
#include <QMetaType>
#include <array>
#include <memory>
#include <optional>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QMenu;
class QMenuBar;
class QPushButton;
class QStandardItemModel;

namespace searchdata {

class CFilterColumn;
class CFilterColumns;
class CFilterTerms;
class Dialect;
class IFormInfo;

/// What an entry of a field list stands for: a search column, or a field of the base table.
struct FilterFieldTag {
    std::weak_ptr<const CFilterColumn> column;
    std::optional<StructureColumn> field;

    /// Whether the entry still stands for something: a field, or a column that still exists.
    bool live() const { return field.has_value() || !column.expired(); }
    FilterComparisonClasses comparisonClass() const;
};

/// The filter dialog: up to ten rows of conjunction, field, comparison and compare-to text, from
/// which OK makes a new filter. `Filter` runs it modally; `Prepare` and `Result` let a caller drive
/// it without a nested event loop.
class frmFilter : public QDialog {
    Q_OBJECT
public:
    static constexpr int kRows = 10;
    /// Item data roles of a field list: the entry's key and its `FilterFieldTag`.
    static constexpr int KeyRole = Qt::UserRole;
    static constexpr int TagRole = Qt::UserRole + 1;
    /// Key of the first entry of a field list, which ends the filter.
    static QString noneKey() { return QStringLiteral("<<none>>"); }

    explicit frmFilter(QWidget* parent = nullptr);
    ~frmFilter() override;

    /// Shows the dialog modally over `columns`, starting from `terms` (may be null), by the window of
    /// `owner` (may be null). The filter the user accepted, possibly without terms; null after Cancel.
    std::shared_ptr<CFilterTerms> Filter(std::shared_ptr<CFilterColumns> columns, std::shared_ptr<CFilterTerms> terms,
                                         const IFormInfo* owner = nullptr);
    /// What `Filter` does before it shows the dialog: the rows made, `terms` restored into them as
    /// far as they still fit the columns, the dialog placed by `owner`. False when that failed
    /// (reported to diagnostics).
    bool Prepare(std::shared_ptr<CFilterColumns> columns, std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner = nullptr);
    /// The filter that OK made; null before, and after Cancel.
    const std::shared_ptr<CFilterTerms>& Result() const { return m_result; }

    /// The fields of the base table that can be filtered, in the structure's order.
    static QList<StructureColumn> BaseFields(const CFilterColumns& columns);

    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void ControlsInitialize();
    void InitMyConjunction(int i, int m);
    void InitMyField(int i, int m);
    void InitMyComparison(int i, int m);
    void InitMyCompareTo(int i, int m);
    void placeButtonsAndForm(int m);
    void EnableControl(QWidget* control, bool enabled);

    void makeFieldList();
    void LoadColumns(QComboBox* combo);
    void closeFieldList(QComboBox* combo);
    void LoadConjunctions(QComboBox* combo);
    void LoadComparisons(FilterComparisonClasses comparisonClass, int i);
    void ClearRowsFrom(int i);
    void Setup();

    void imgcboFields_Click(int i);
    void imgcboFields_GotFocus();
    void txtCompareTo_Change(int i);
    bool txtCompareTo_KeyPress(int i, int key);
    void txtCompareTo_GotFocus(int i);
    void txtCompareTo_LostFocus(int i);
    void txtCompareTo_ContextMenu(int i, const QPoint& position);
    void Revalidate(int i);
    void normalise(int i);
    void ControlsUpdate();

    void cmdOK_Click();
    void cmdClear_Click();
    void ShowHelp();

    static bool ValidCompareTo(const QString& text, FilterComparisonClasses comparisonClass);
    bool HasField(int i) const;
    /// The tag of the entry selected in row `i`'s field list; nothing for "<<none>>" or no entry.
    std::optional<FilterFieldTag> selectedTag(int i) const;
    FilterComparisonClasses rowClass(int i) const;
    bool compareToValid(int i) const;
    void setCompareToValid(int i, bool valid);
    int rowOf(const QObject* control) const;
    const Dialect& dialect() const;

    std::shared_ptr<CFilterColumns> m_columns;
    std::shared_ptr<CFilterTerms> m_terms;
    std::shared_ptr<CFilterTerms> m_result;
    bool m_fieldsHadFocus = false;

    std::array<QComboBox*, kRows> cboConjunction{};
    std::array<QComboBox*, kRows> imgcboFields{};
    std::array<QComboBox*, kRows> cboComparison{};
    std::array<QLineEdit*, kRows> txtCompareTo{};
    QLabel* lblFields = nullptr;
    QLabel* lblComparison = nullptr;
    QLabel* lblCompareTo = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdClear = nullptr;
    QPushButton* cmdHelp = nullptr;
    QMenuBar* menuBar = nullptr;
    QMenu* mnuHelp = nullptr;
    QAction* mnuHelpDisplay = nullptr;
    /// The images of the field lists by key: "basetablefield" and "seachcolumn".
    QIcon m_baseFieldImage;
    QIcon m_searchColumnImage;
    /// The entries of an open field list, made once per display and shown by every open row.
    QStandardItemModel* m_fieldList = nullptr;
    /// What a closed field list shows: nothing.
    QStandardItemModel* m_closedList = nullptr;
};

} // namespace searchdata

Q_DECLARE_METATYPE(searchdata::FilterFieldTag)
