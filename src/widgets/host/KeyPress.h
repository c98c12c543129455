#pragma once

#include <optional>

class QAction;
class QKeyEvent;
class QMenu;

namespace searchdata {

/// The key code of a paste as the core's key test knows it.
inline constexpr int kKeyPaste = 22;

/// The key code under which the core's key test judges a key press: 8 backspace (and a cut, which
/// takes the selection away as a backspace over it does), 46 delete, 3 copy, 22 paste, else the
/// character typed. Nothing for keys that change no text.
std::optional<int> keyPressCode(const QKeyEvent& event);

/// The paste of a standard edit menu: named so by newer Qt, else known by its text in the
/// translation context of the widget that made the menu ("QLineEdit", "QWidgetTextControl").
QAction* pasteAction(const QMenu* menu, const char* context);

} // namespace searchdata
