#pragma once

#include "searchdata/Enums.h"

#include <QString>

namespace searchdata {

class CFilterColumn;
class IControl;
struct CatalogColumn;
struct StructureColumn;

/// Checks of user text against a type. Each trims the text for its blank test; a blank passes the
/// four numeric checks, and passes `ValidDate` unless a value is required.
bool ValidInteger16(const QString& text);
bool ValidInteger32(const QString& text);
bool ValidSingle(const QString& text);
bool ValidDouble(const QString& text);
bool ValidDate(const QString& text, bool required = false);
/// Text that reads as a number; a blank never does.
bool ValidNumber(const QString& text, bool required = false);

/// Whether a text may name a new search column: letters, digits and `_` only, no blank, not empty,
/// and not the name of the field that numbers the rows of a keyword table. The name becomes the
/// column's field and part of its table names. Stored columns keep their names.
bool ValidColumnName(const QString& name);
/// Why a text may not name a new search column, for users; blank when it may.
QString ColumnNameRefusal(const QString& name);

/// How a search column compares in a filter; no column is `kvoCC_Unknown`.
FilterComparisonClasses ComparisonClassFromColumn(const CFilterColumn* column);
/// How a field of a base table compares, by its type code; no field, or one that the host did not
/// mark usable, is `kvoCC_Unknown`. Integers of every width count as numbers, so that a host's 64-bit
/// keys and counters can be filtered.
FilterComparisonClasses ComparisonClassFromColumn(const StructureColumn* field);
FilterComparisonClasses ComparisonClassFromColumn(const CatalogColumn* field);
/// The comparison class of a base-table field of type code `adoType`.
FilterComparisonClasses ComparisonClassOfFieldType(int adoType);

/// Whether the key `key` (a character code, 8 backspace, 46 delete, 3 copy, 22 paste) may change the
/// text of a text box or combo box: never a quote, never a text ending in two blanks, and within
/// `maximumLength` when that is at least 1. False for no control or any other kind of control.
bool ValidKeyPress(IControl* control, int key, int maximumLength);

} // namespace searchdata
