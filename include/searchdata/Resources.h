#pragma once

#include <QByteArray>
#include <QList>
#include <QLocale>
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
///
/// At the first use of a text (once the application object exists) the table of the process
/// locale's language is looked for, unless the host chose a table before: `<lang>_<TERRITORY>.tsv`,
/// then `<lang>.tsv` (`de_CH.tsv`, `de.tsv`), in the folder the host named, then in each folder of
/// `QStandardPaths::AppDataLocation`, then beside the program. The first file found is taken.
class ResourceTable {
public:
    /// Replaces the table by a file of lines "number<TAB>text" (UTF-8). False, and the table
    /// unchanged, when the file cannot be read or has a malformed line.
    static bool load(const QString& path);
    /// Back to the compiled-in English table.
    static void reset();
    /// Looks for the table of `locale`'s language and loads the first one found. False, and the
    /// table unchanged, when there is none or it cannot be taken.
    static bool loadForLocale(const QLocale& locale = QLocale());
    /// Makes `folder` the first place to look for tables (empty: none of the host's own), and looks
    /// again for the process locale's table there and in the other places.
    static bool setTranslationFolder(const QString& folder);
    /// The folders looked in, in order.
    static QStringList translationFolders();
    static bool contains(int number);
    static QList<int> numbers();
};

} // namespace searchdata
