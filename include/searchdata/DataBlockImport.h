#pragma once

#include <QString>

namespace searchdata {

/// What the import of one data block came to.
struct DataBlockImport {
    /// Some line of the block gave a column its value.
    bool imported = false;
    /// Those values reached the database.
    bool written = false;
    /// Lines that could not be imported; each is an entry of the error log when there is one.
    int errors = 0;
    /// The error log, when one was written; blank otherwise.
    QString logFile;
    /// Why the block was not read to its end, and so nothing was written: a file that is no regular
    /// file, a line far too long for a block, a read that failed. Blank when it was read.
    QString refused;
};

} // namespace searchdata
