#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace searchdata {

/// Text number `number` of the resource table, with `%1`, `%2`... replaced by `args`.
/// Number 0 is the empty text; any other unknown number gives a visible placeholder and a
/// diagnostics report.
QString GetResourceText(int number, const QStringList& args = {});

/// Picture number `number` as the bytes of a PNG image; empty when there is none.
QByteArray GetResourcePicture(int number);

/// The table of texts in force. The English table is compiled in; another language replaces it.
class ResourceTable {
public:
    /// Replaces the table by a file of lines "number<TAB>text" (UTF-8). False, and the table
    /// unchanged, when the file cannot be read or has a malformed line.
    static bool load(const QString& path);
    /// Back to the compiled-in English table.
    static void reset();
    static bool contains(int number);
    static QList<int> numbers();
};

} // namespace searchdata
