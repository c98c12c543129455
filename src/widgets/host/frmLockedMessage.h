#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace searchdata {

class IDebugLockedMessage;

/// The small window shown while a statement waits for a table that another user holds: the title,
/// the message, and a Cancel button that ends the wait.
class frmLockedMessage : public QDialog {
    Q_OBJECT
public:
    explicit frmLockedMessage(const IDebugLockedMessage& message, QWidget* parent = nullptr);

    /// Whether the user asked to stop waiting.
    bool cancelled() const { return m_cancelled; }

    /// Escape, the close button and Cancel all end the wait.
    void reject() override;

private:
    QLabel* m_title;
    QLabel* m_message;
    QPushButton* m_cancel;
    bool m_cancelled = false;
};

} // namespace searchdata
