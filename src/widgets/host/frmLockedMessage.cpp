#include "host/frmLockedMessage.h"

#include "host/LanguageAdaptation.h"
#include "searchdata/LockedMessage.h"
#include "searchdata/Resources.h"

#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace searchdata {

frmLockedMessage::frmLockedMessage(const IDebugLockedMessage& message, QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frmLockedMessage"));
    setWindowTitle(message.Title());
    setWindowModality(Qt::ApplicationModal);

    m_title = new QLabel(message.Title(), this);
    m_title->setObjectName(QStringLiteral("lblTitle"));
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);

    m_message = new QLabel(message.Message(), this);
    m_message->setObjectName(QStringLiteral("lblMessage"));
    m_message->setWordWrap(true);

    auto* icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("imgWaiting"));
    const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation, nullptr, this).pixmap(iconSize, iconSize));
    icon->setAlignment(Qt::AlignTop);

    m_cancel = new QPushButton(GetResourceText(8073), this);
    m_cancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cancel->setDefault(true);
    connect(m_cancel, &QPushButton::clicked, this, &frmLockedMessage::reject);

    auto* texts = new QVBoxLayout;
    texts->addWidget(m_title);
    texts->addWidget(m_message);
    auto* top = new QHBoxLayout;
    top->addWidget(icon);
    top->addLayout(texts, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    FormToJapanese(this);
    // Wide enough that a message of a sentence or two wraps into a few lines, not a column.
    m_message->setMinimumWidth(m_message->fontMetrics().averageCharWidth() * 45);
    adjustSize();
}

void frmLockedMessage::reject()
{
    m_cancelled = true;
    // The window stays until the statement has given up, which the next question about the wait does.
    m_cancel->setEnabled(false);
}

} // namespace searchdata
