#pragma once

#include "searchdata/Enums.h"
#include "searchdata/IContainer.h"

#include <QDialog>
#include <QSizeF>

namespace searchdata {

class CFilterColumns;
class IFormInfo;
class ISearchBaseEntry;
class Recordset;
class UKVOSearch;

/// The library's own window for one record's search data: it holds an entry control, `kseEdit`,
/// and is that control's geometry. It opens at 0.8 of the screen, never gets smaller than the
/// control's suggested minimum, stays on the screen when it grows, and asks before it drops changes.
class frmExamine : public QDialog, public IContainer {
    Q_OBJECT
public:
    explicit frmExamine(QWidget* parent = nullptr);
    ~frmExamine() override;

    /// Shows the search data of `entry` (its base record `source`, may be null) of the collection's
    /// base table for editing, over `owner`, and runs modally until the window closes.
    void Edit(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner);
    /// The same for viewing only.
    void View(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner);
    /// Everything of `Edit` (`kseModeEdit`) and `View` (`kseModeExamine`) short of running modally.
    void Prepare(KVOSearchEditExamineModes mode, CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source,
                 const IFormInfo* owner);

    // The control's view of the window: its outer place and size, its inner width, and the width
    // of a text in the control's font.
    float Height() const override;
    float Left() const override;
    float ScaleWidth() const override;
    /// Takes the control's suggested minimum as the window's.
    void SizeMin() override;
    float TextWidth(const QString& text) const override;
    float Top() const override;
    float Width() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;
    /// The rules of a resize hold from the first showing on, as the size was set before.
    void showEvent(QShowEvent* event) override;
    /// The close button, or the host closing the window: with unsaved changes the user decides.
    void closeEvent(QCloseEvent* event) override;
    /// Escape, where the control does not take it, closes as the close button does.
    void reject() override;

private:
    /// Keeps the window at least at its minimum and on the screen, and the control filling it.
    void formResize();
    void kseEdit_OkButtonClick();

    UKVOSearch* kseEdit;
    QSizeF m_sizeMin;
    bool m_resizing = false;
};

} // namespace searchdata
