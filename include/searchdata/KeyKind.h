#pragma once

namespace searchdata {

/// Kind of a table key, in structures and in the catalog. Primary is 2: the opening of a search looks
/// for the first key of that kind in the structure that the host gives of its base table, so the value
/// is fixed.
enum KeyKind : int {
    kkUnique = 1,
    kkPrimary = 2,
    kkForeign = 3,
};

} // namespace searchdata
