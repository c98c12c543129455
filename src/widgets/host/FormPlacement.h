#pragma once

class QWidget;

namespace searchdata {

class CFilterColumns;
class IFormInfo;

/// Centres `form` over the window that `owner` describes, or over the screen without one, and keeps
/// it on the screen.
void CentreForm(QWidget& form, const IFormInfo* owner);

/// Puts a dialog of `columns` where the library's dialogs stand: off the corner of `owner` by the
/// dialog offset and kept on the screen (the collection remembers `owner`'s place for the next
/// dialog), or in the middle of the screen without an owner.
void PositionForm(QWidget& form, CFilterColumns& columns, const IFormInfo* owner);

} // namespace searchdata
