#pragma once

#include "RowControl.h"

#include <QPointer>

class QComboBox;

namespace searchdata::detail {

/// A combo box of a row over a `QComboBox`: an editable one for a keyword list being edited, a
/// list to choose from otherwise. `ListIndex` is -1 while the typed text is not the selected entry.
class ComboBoxAdapter : public IComboBoxControl, public RowControl {
public:
    explicit ComboBoxAdapter(QComboBox* combo);

    QString Text() const override;
    void SetText(const QString& text) override;
    QString List(int index) const override;
    int ListCount() const override;
    int ListIndex() const override;
    void SetListIndex(int index) override;
    int NewIndex() const override { return m_newIndex; }
    void Clear() override;
    void AddItem(const QString& text) override;
    void RemoveItem(int index) override;
    void SetFocus() override;
    int SelStart() const override;
    int SelLength() const override;

    /// A locked combo shows its entries but keeps its text and selection: a choice from the list is
    /// taken back.
    bool Locked() const { return m_locked; }
    void SetLocked(bool locked);

    QWidget* widget() const override;

private:
    QPointer<QComboBox> m_combo;
    int m_newIndex = -1;
    bool m_locked = false;
    int m_lockedIndex = -1;
};

} // namespace searchdata::detail
