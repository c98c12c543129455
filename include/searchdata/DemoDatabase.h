#pragma once

#include <QString>
#include <memory>

namespace searchdata {

class Catalog;
class DatabaseHandler;
class IProfile;
class IProgress;

/// The demonstration database that the command line's "demo init" and the desktop demo make: a table
/// of program files and a table of packets, each with its demonstration column set and values.
class DemoDatabase {
public:
    /// Files (Id, Name, Folder, Size, Modified), with the DNC file column set.
    static QString filesTable();
    /// Packets (Id, Name, Machine, Created), with the packet column set.
    static QString packetsTable();
    /// Records of Packets for `files` records of Files: a tenth, at least one.
    static int packetCount(int files);

    /// Makes both tables with `files` records in a database that has neither, defines the column sets
    /// and writes their values into every record. Progress goes to `progress` (may be null). False,
    /// with the reason reported to diagnostics, when a step failed; the tables are then not complete.
    static bool Create(const std::shared_ptr<DatabaseHandler>& db, const std::shared_ptr<Catalog>& catalog,
                       const std::shared_ptr<IProfile>& profile, int files, IProgress* progress);
};

} // namespace searchdata
