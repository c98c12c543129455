#pragma once

#include <QDialog>
#include <QStringList>

class QLabel;
class QListWidget;
class QPushButton;

namespace searchdata {

/// Tells which picklist entries stayed because stored records use them, and can ask whether to hide
/// them instead.
class frmPicklistKept : public QDialog {
    Q_OBJECT
public:
    explicit frmPicklistKept(QWidget* parent = nullptr);

    /// Says which entries were kept, over `owner` (the screen without one). Nothing for no entries.
    static void Display(QWidget* owner, const QStringList& kept);
    /// Asks whether to hide the kept entries; true when the user agreed. False for no entries.
    static bool QueryHide(QWidget* owner, const QStringList& kept);

    /// Fills the dialog for `kept` as `Display` (`query` false) or `QueryHide` shows it, centred over
    /// `owner`; false when there is nothing to show. `exec` then runs it; `result` is the answer.
    bool Prepare(QWidget* owner, const QStringList& kept, bool query);
    /// True once the confirming button was pressed.
    bool Confirmed() const { return m_confirmed; }

    /// Above this many entries the list is not filled; the prompt gives the count.
    static constexpr int kListLimit = 199;

private:
    static bool run(QWidget* owner, const QStringList& kept, bool query);

    QLabel* lblPrompt;
    QListWidget* lstKept;
    QPushButton* cmdOk;
    QPushButton* cmdClose;
    bool m_confirmed = false;
};

} // namespace searchdata
