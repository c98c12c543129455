#pragma once

namespace searchdata {
class CFilterColumns;
}

namespace searchdata::fuzz {

/// Adds the search columns that the fuzzed readers meet: one of every column type, picklists with and
/// without blanks, and a picklist with a default.
void addEveryColumnType(CFilterColumns& columns);

} // namespace searchdata::fuzz
