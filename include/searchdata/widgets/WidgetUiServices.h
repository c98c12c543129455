#pragma once

#include "searchdata/UiServices.h"

#include <QPointer>
#include <functional>

class QWidget;

namespace searchdata {

class ICleanupFormManager;
class frmLockedMessage;

/// The UI services of a desktop host: the library's dialogs, message boxes, questions, the locked
/// message with a Cancel button, and a progress dialog. Install with `UiServices::install` on the
/// user-interface thread.
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
    Answer AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer) override;
    void ShowLockedMessage(const IDebugLockedMessage& message) override;
    void ClearLockedMessage() override;
    bool KeepWaitingForLock(std::chrono::milliseconds waited) override;
    std::any RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo* owner) override;
    void CloseForms() override;
    QSizeF UsableScreenSize() const override;
    float DialogOffset() const override;
    void NotImplementedNotice() override;
    QString ClipboardText() const override;
    void ObjectCreated(const QString& typeName, const void* object) override;
    void ObjectDestroyed(const QString& typeName, const void* object) override;
    void RegisterCleanup() override;
    void Beep() override;

    /// The host's clean-up service: it receives the library's clean-up manager each time the host
    /// creates a `CCommon`, and calls its `CleanupForms` when the host closes (the manager's `Key`
    /// tells libraries apart). Without one, the manager cleans up when the application quits.
    void setCleanupService(std::function<void(ICleanupFormManager&)> service) { m_cleanupService = std::move(service); }

private:
    /// The window that a dialog opened for `owner` stands over.
    QWidget* dialogParent(const IFormInfo* owner) const;

    QPointer<QWidget> m_parent;
    QPointer<frmLockedMessage> m_locked;
    std::function<void(ICleanupFormManager&)> m_cleanupService;
};

} // namespace searchdata
