#pragma once

// What the steps of one schema check share on the calling thread: the host's answers so far, and a
// failure flag that only this check's repairs set.

#include <QString>

namespace searchdata {

class DatabaseHandler;

namespace detail {

/// Marks the length of a schema check; scopes nest, and the outermost one is the check. Inside it
/// `Diagnostics::ConversionFailed` starts clear, so that the steps see only this check's failures; at
/// its end the flag is what it was before, or true when a repair of this check failed.
class SchemaCheckScope {
public:
    SchemaCheckScope();
    ~SchemaCheckScope();
    SchemaCheckScope(const SchemaCheckScope&) = delete;
    SchemaCheckScope& operator=(const SchemaCheckScope&) = delete;
};

/// The host's answer to whether the search tables of `table` are to be converted. Every question of
/// a check is the same question, so inside a check an answer that let it go on stands for the rest of
/// it, and the host is asked once per flag.
int askConversion(DatabaseHandler& db, const QString& table, int flag);

/// Whether a check result is one of the host's answers that end a check.
inline bool endsCheck(int result)
{
    return result >= 1 && result <= 5;
}

/// Records that a repair failed.
void markConversionFailed();
bool conversionFailed();

} // namespace detail
} // namespace searchdata
