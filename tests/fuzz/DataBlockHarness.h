#pragma once

#include "searchdata/CSearchFilter.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace searchdata::fuzz {

/// Feeds one data block at a time into record 2 of a SQLite database whose search columns cover
/// every column type, and checks what the import left behind: the other records' rows, the tables'
/// shapes and the picklist's entries as they were (the list may only grow), nothing written but the
/// error log and the copy beside it, and a log exactly when a line failed.
class DataBlockHarness {
public:
    DataBlockHarness();
    ~DataBlockHarness();

    /// The seed corpus of real blocks.
    static QList<QByteArray> seedCorpus();
    /// Pieces of the format for the mutations to insert.
    static QList<QByteArray> tokens();

    /// Whether the database and folders could be set up; `error()` says why not.
    bool ok() const { return m_error.isEmpty(); }
    const QString& error() const { return m_error; }

    /// Imports `block`; blank when all held, else what went wrong.
    QString run(const QByteArray& block);
    /// What the last import came to.
    const DataBlockImport& lastResult() const { return m_last; }

private:
    /// The schema, and every row but the target record's and the picklists'.
    QString snapshot() const;
    QStringList picklistEntries() const;
    QStringList filesUnder(const QString& folder) const;

    QTemporaryDir m_root;
    QString m_error;
    QString m_sourceFile;
    QString m_logFolder;
    std::shared_ptr<DatabaseHandler> m_db;
    std::shared_ptr<Catalog> m_catalog;
    std::shared_ptr<CSearchFilter> m_filter;
    QString m_others;
    DataBlockImport m_last;
};

} // namespace searchdata::fuzz
