#pragma once

class QWidget;

namespace searchdata {

/// Shows the library's about box over `parent`'s window (centred on the screen without one) and
/// returns when the user closes it.
void OpenAboutBox(QWidget* parent = nullptr);

} // namespace searchdata
