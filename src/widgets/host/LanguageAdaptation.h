#pragma once

#include <QString>

class QWidget;

namespace searchdata {

/// The family of an installed font with Japanese glyphs, one whose Latin letters are proportional
/// where there is a choice; empty when none is installed.
QString JapaneseFontFamily();

/// Gives `form` and every control on it a font family with Japanese glyphs, keeping size, weight
/// and style, when the language services want adaptation. A form calls it once at load, after its
/// controls are made; controls made later take the family from the form. A form without controls
/// stays as it is.
void FormToJapanese(QWidget* form);

/// The same for a control that hosts place on their forms, when the user's language is Japanese.
void UserControlToJapanese(QWidget* control);

} // namespace searchdata
