#pragma once

#include "searchdata/UiServices.h"

#include <QPointer>

class QProgressDialog;
class QWidget;

namespace searchdata {

/// The UI services of a desktop host: message boxes, questions, the locked message with a Cancel
/// button, and a progress dialog. Install with `UiServices::install` on the user-interface thread.
class WidgetUiServices : public UiServices {
public:
    /// `parent` is the window that dialogs stand over; it may be null.
    explicit WidgetUiServices(QWidget* parent = nullptr);
    ~WidgetUiServices() override;

    void OpenConfigureDialog(CFilterColumns& columns, const IFormInfo* owner) override;
    void OpenExamineWindow(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner) override;
    std::shared_ptr<CFilterTerms> OpenFilterDialog(CFilterColumns& columns, std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner) override;
    void OpenPicklistDialog(CScPicklist& picklist, const IFormInfo* owner) override;
    void OpenPicklistChoiceDialog(CFilterColumns& columns, const IFormInfo* owner) override;
    void ShowMessage(MessageKind kind, const QString& title, const QString& text) override;
    Answer AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer) override;
    void ShowLockedMessage(const IDebugLockedMessage& message) override;
    void ClearLockedMessage() override;
    bool KeepWaitingForLock(std::chrono::milliseconds waited) override;
    std::any RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo* owner) override;
    void CloseForms() override;
    QSizeF UsableScreenSize() const override;
    float DialogOffset() const override;
    void NotImplementedNotice() override;

private:
    QPointer<QWidget> m_parent;
    QPointer<QProgressDialog> m_locked;
};

} // namespace searchdata
