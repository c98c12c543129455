#include "host/KeyPress.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMenu>

namespace searchdata {

namespace {

constexpr int kKeyCopy = 3;
constexpr int kKeyBackspace = 8;
constexpr int kKeyDelete = 46;

} // namespace

std::optional<int> keyPressCode(const QKeyEvent& event)
{
    if (event.matches(QKeySequence::Paste))
        return kKeyPaste;
    if (event.matches(QKeySequence::Copy))
        return kKeyCopy;
    if (event.matches(QKeySequence::Cut) || event.key() == Qt::Key_Backspace)
        return kKeyBackspace;
    if (event.key() == Qt::Key_Delete)
        return kKeyDelete;
    const QList<uint> characters = event.text().toUcs4();
    if (characters.isEmpty() || characters.first() < 0x20 || characters.first() == 0x7f)
        return std::nullopt;
    return int(characters.first());
}

QAction* pasteAction(const QMenu* menu, const char* context)
{
    if (auto* named = menu->findChild<QAction*>(QStringLiteral("edit-paste")))
        return named;
    const QString paste = QCoreApplication::translate(context, "&Paste");
    for (QAction* action : menu->actions())
        if (action->text() == paste || action->text().startsWith(paste + QLatin1Char('\t')))
            return action;
    return nullptr;
}

} // namespace searchdata
