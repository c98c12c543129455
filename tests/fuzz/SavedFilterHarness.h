#pragma once

#include "searchdata/CSearchFilter.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <memory>
#include <optional>

namespace searchdata::fuzz {

/// Reads one profile text at a time as the saved filter of a base table whose search columns cover
/// every column type, and checks what the reader made of it: whatever the text, the filter's SQL (when
/// its terms give any) is taken by the database, as text and with bound values, and both select the
/// same records.
class SavedFilterHarness {
public:
    /// Makes the base table and its search columns in the (empty) database of `db`; the profile file
    /// is written in `folder`.
    SavedFilterHarness(std::shared_ptr<DatabaseHandler> db, const QString& folder);

    /// The seed corpus of saved filters.
    static QList<QByteArray> seedCorpus();
    /// Pieces of the profile's format for the mutations to insert.
    static QList<QByteArray> tokens();

    bool ok() const { return m_error.isEmpty(); }
    const QString& error() const { return m_error; }

    /// Reads `profile`; blank when all held, else what went wrong.
    QString run(const QByteArray& profile);
    /// How many terms the last profile gave.
    int lastTermCount() const { return m_lastTerms; }

private:
    /// The records the predicate selects, or nothing when the database refused it.
    std::optional<qint64> count(const QString& predicate, const QVariantList& values) const;

    std::shared_ptr<DatabaseHandler> m_db;
    std::shared_ptr<CSearchFilter> m_filter;
    QString m_profileFile;
    QString m_error;
    int m_lastTerms = 0;
};

} // namespace searchdata::fuzz
