#pragma once

#include "searchdata/Progress.h"

#include <QSizeF>
#include <QString>
#include <QStringList>
#include <chrono>
#include <memory>

namespace searchdata {

class CFilterColumns;
class CFilterTerms;
class CScPicklist;
class IDebugLockedMessage;
class IFormInfo;
class ISearchBaseEntry;
class Recordset;

/// The kinds of message box the library shows.
enum class MessageKind { Information, Warning, Critical };

/// Answers of a question: yes/no/cancel, or OK/cancel.
enum class Answer { Yes, No, Cancel, Ok };

/// Everything the core asks of a user interface. The widgets library installs the real one; without
/// it a headless one records each request and gives the default answer the caller names.
class UiServices {
public:
    virtual ~UiServices() = default;

    /// The services of the calling thread: the installed ones, or a headless default.
    static UiServices& current();
    /// Installs `services` for the calling thread; null goes back to the headless default.
    static void install(std::shared_ptr<UiServices> services);

    /// The column list dialog on a collection; modal.
    virtual void OpenConfigureDialog(CFilterColumns& columns, const IFormInfo* owner) = 0;
    /// The window that shows one record's search data.
    virtual void OpenExamineWindow(CFilterColumns& columns, ISearchBaseEntry* entry, Recordset* source, const IFormInfo* owner) = 0;
    /// The filter dialog; gives the terms the user accepted, or null when none are left.
    virtual std::shared_ptr<CFilterTerms> OpenFilterDialog(CFilterColumns& columns, std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner) = 0;
    /// The dialog that edits one picklist.
    virtual void OpenPicklistDialog(CScPicklist& picklist, const IFormInfo* owner) = 0;
    /// The dialog that chooses which picklist of a collection to edit.
    virtual void OpenPicklistChoiceDialog(CFilterColumns& columns, const IFormInfo* owner) = 0;

    virtual void ShowMessage(MessageKind kind, const QString& title, const QString& text) = 0;
    /// Asks a question; `defaultAnswer` is what a user who just presses Enter gives.
    virtual Answer AskYesNoCancel(const QString& title, const QString& text, Answer defaultAnswer) = 0;
    /// Asks whether to go on, with OK and Cancel; gives `Answer::Ok` or `Answer::Cancel`.
    virtual Answer AskOkCancel(const QString& title, const QString& text, Answer defaultAnswer) = 0;

    /// Shows that a statement waits for a lock, and keeps showing it until `ClearLockedMessage`.
    virtual void ShowLockedMessage(const IDebugLockedMessage& message) = 0;
    virtual void ClearLockedMessage() = 0;
    /// Asked between retries of a locked statement: false ends the wait and the statement fails.
    virtual bool KeepWaitingForLock(std::chrono::milliseconds waited) = 0;

    /// Runs `handler` on `request` with a progress display, and gives back the handler's result.
    virtual std::any RunProgress(IProgressHandler& handler, int request, const std::any& arguments, const IFormInfo* owner) = 0;

    /// Hides the library's open windows, last opened first.
    virtual void CloseForms() = 0;

    /// Size of the screen area that windows may use.
    virtual QSizeF UsableScreenSize() const = 0;
    /// How far a dialog stands off the window that opened it.
    virtual float DialogOffset() const = 0;
    /// A notice that the requested operation is not available.
    virtual void NotImplementedNotice() = 0;
    /// The text on the clipboard, which a paste would put in; blank without a clipboard.
    virtual QString ClipboardText() const { return {}; }

    /// For the object monitor: an object of the library's surface came to life, or went. Nothing
    /// is counted without a window.
    virtual void ObjectCreated(const QString& typeName, const void* object) { Q_UNUSED(typeName) Q_UNUSED(object) }
    virtual void ObjectDestroyed(const QString& typeName, const void* object) { Q_UNUSED(typeName) Q_UNUSED(object) }
    /// Hands the host the means to destroy the library's windows when it shuts down; asked each time
    /// the host creates a `CCommon`. Without a window there is nothing to hand.
    virtual void RegisterCleanup() {}
    /// Tells the user, with a sound and no words, that a key was refused.
    virtual void Beep() = 0;
};

/// The services without a window: each request is recorded; questions take their default answer,
/// dialogs return what they were given, and a wait for a lock ends after `lockTimeout`.
class HeadlessUiServices : public UiServices {
public:
    explicit HeadlessUiServices(std::chrono::milliseconds lockTimeout = std::chrono::seconds(30));

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
    QSizeF UsableScreenSize() const override { return m_screen; }
    float DialogOffset() const override { return 0; }
    void NotImplementedNotice() override;
    void Beep() override;

    /// Every request so far, one line each ("message: title: text", "locked: title: message", ...).
    const QStringList& requests() const { return m_requests; }
    void clearRequests() { m_requests.clear(); }
    void setLockTimeout(std::chrono::milliseconds timeout) { m_lockTimeout = timeout; }
    std::chrono::milliseconds lockTimeout() const { return m_lockTimeout; }
    /// The progress that `RunProgress` reports to; null gives one that logs its lines.
    void setProgress(std::shared_ptr<IProgress> progress) { m_progress = std::move(progress); }
    bool lockedMessageShown() const { return m_lockedShown; }
    void setUsableScreenSize(QSizeF size) { m_screen = size; }

private:
    QStringList m_requests;
    std::chrono::milliseconds m_lockTimeout;
    std::shared_ptr<IProgress> m_progress;
    bool m_lockedShown = false;
    QSizeF m_screen{1280, 800};
};

} // namespace searchdata
