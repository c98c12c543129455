#include "ConfigTestSupport.h"
#include "config/frmConfigure.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QSqlRecord>
#include <QTimer>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class ColumnDialogsSaveTest : public ConfigDialogTest {
protected:
    /// A table's fields, keys and indexes, with the base table's name in them replaced by "B", and
    /// without the declared default of the fields in `varying`.
    QString shape(const QString& table, const QString& base, const QStringList& varying = {})
    {
        const CatalogTablePtr t = GetCatalogTable(*catalog, table);
        if (!t)
            return QStringLiteral("no table ") + table;
        const auto generic = [&](QString text) { return text.replace(base, QStringLiteral("B")); };
        QStringList lines;
        for (const CatalogColumn& c : t->columns)
            lines << QStringLiteral("field %1 %2 %3 %4 %5 %6")
                         .arg(c.name)
                         .arg(c.type)
                         .arg(c.definedSize)
                         .arg(c.nullable)
                         .arg(c.declaredType, varying.contains(c.name) ? QStringLiteral("~") : c.defaultText);
        for (const CatalogKey& k : t->keys)
            lines << QStringLiteral("key %1 %2 %3 %4 %5 %6")
                         .arg(generic(k.name))
                         .arg(k.kind)
                         .arg(k.columns.join(','), generic(k.relatedTable), k.relatedColumns.join(','), k.deleteRule);
        for (const CatalogIndex& i : t->indexes)
            lines << QStringLiteral("index %1 %2 %3").arg(generic(i.name), i.columns.join(',')).arg(i.unique);
        return lines.join(QLatin1Char('\n'));
    }
    /// Every row of a table in its order, without the fields in `varying`.
    QString content(const QString& table, const QStringList& varying = {})
    {
        QStringList lines;
        QSqlQuery query(db().database());
        EXPECT_TRUE(query.exec("SELECT * FROM " + q(table) + " ORDER BY 1, 2")) << qPrintable(table);
        while (query.next()) {
            QStringList fields;
            for (int i = 0; i < query.record().count(); ++i)
                if (!varying.contains(query.record().fieldName(i)))
                    fields << Value::fromVariant(query.value(i)).text();
            lines << fields.join(QLatin1Char('|'));
        }
        return lines.join(QLatin1Char('\n'));
    }
    QStringList tablesOf(const QString& base)
    {
        QStringList names;
        for (const CatalogTablePtr& t : catalog->Tables())
            if (t->name.contains(base))
                names << QString(t->name).replace(base, QStringLiteral("B"));
        return names;
    }
};

TEST_P(ColumnDialogsSaveTest, EveryTypeDefinedThroughTheDialogsMakesWhatTheCoreMakes)
{
    const QList<ColumnSpec> specs = {
        {"Tags", fcKeyword, 40, "Tags", "keywords of the file"},
        {"Customer", fcText, 30, "Customer name", "who ordered it", true, true, "ACME"},
        {"Grade", fcInteger16, 0, "", "", true, false, "5"},
        {"Qty", fcInteger32},
        {"Weight", fcSingle, 0, "", "", true, false, "1.5"},
        {"Price", fcDouble, 0, "Unit price"},
        {"Due", fcDateTime, 0, "", "", false, false, "2024-03-01"},
        {"Stamp", fcDateTime, 0, "", "", false, false, "", true, true},
        {"Shipped", fcDateTime, 0, "", "", true, false, "3/2/2024"},
        {"Done", fcBoolean},
        {"Remarks", fcNote, 0, "", "", false, false, "none yet"},
    };
    makeBaseTable("Docs", "FileId", rowCount);

    auto files = columns();
    frmConfigure dialog;
    dialog.Setup(*files);
    showActive(&dialog);
    for (const ColumnSpec& spec : specs)
        newColumnThroughTheDialogs(&dialog, spec);
    ASSERT_EQ(listed(&dialog).size(), specs.size());
    click(&dialog, "cmdApply");
    EXPECT_FALSE(dialog.IsDirty());

    auto docs = columns("Docs", "FileId");
    for (const ColumnSpec& spec : specs)
        ASSERT_NE(addColumn(*docs, spec), nullptr);
    ASSERT_TRUE(docs->ColumnsSave(nullptr));

    EXPECT_EQ(definitions("Files").size(), specs.size());
    EXPECT_EQ(definitions("Files"), definitions("Docs"));
    catalog->Refresh();
    EXPECT_EQ(tablesOf("Files"), tablesOf("Docs"));
    // "Stamp" takes the time of each save as its default.
    const QStringList varying{"Stamp"};
    for (const QString& table : tablesOf("Files")) {
        const QString filesTable = QString(table).replace("B", "Files"), docsTable = QString(table).replace("B", "Docs");
        EXPECT_EQ(shape(filesTable, "Files", varying), shape(docsTable, "Docs", varying)) << qPrintable(table);
        EXPECT_EQ(content(filesTable, varying), content(docsTable, varying)) << qPrintable(table);
    }
    EXPECT_NE(content("FilesSearchData", varying).indexOf("none yet"), -1);
}

SD_INSTANTIATE_DATABASE_SUITE(ColumnDialogsSaveTest);

// Another connection holding the SQLite file is what a second user of a shared database file does.
class LockedSaveTest : public ColumnDialogsSaveTest {};

TEST_P(LockedSaveTest, ASaveThatMeetsALockShowsTheLockedWindowAndItsCancelLeavesEverythingAsItWas)
{
    auto collection = storedColumns({{"Alpha", fcText, 20}, {"Beta", fcInteger32}});
    ASSERT_NE(collection, nullptr);
    UiServices::install(std::make_shared<WidgetUiServices>());
    frmConfigure dialog;
    dialog.Setup(*collection);
    showActive(&dialog);
    click(&dialog, "cmdDown");
    newColumnThroughTheDialogs(&dialog, {"Fresh", fcInteger16});
    ASSERT_EQ(listed(&dialog), QStringList({"Beta", "Alpha", "Fresh"}));
    const QStringList definitionsBefore = definitions();
    catalog->Refresh();
    const QString tableBefore = shape("FilesSearchData", "Files");

    auto other = testDb().openAnotherConnection();
    ASSERT_NE(other, nullptr);
    TransactionState held;
    ASSERT_TRUE(other->BeginTableTransaction(held));
    ASSERT_TRUE(other->ExecuteSql("UPDATE " + q("Files") + " SET " + q("Name") + " = " + q("Name")));

    // The save waits inside the click; the user cancels the wait from the locked window.
    bool cancelled = false;
    QElapsedTimer waited;
    waited.start();
    QTimer watch;
    watch.setInterval(20);
    QObject::connect(&watch, &QTimer::timeout, [&] {
        if (waited.elapsed() > 10000) { // no locked window to cancel: let the save go on, and fail below
            watch.stop();
            other->EndTableTransaction(held);
            return;
        }
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() == "frmLockedMessage" && window->isVisible()) {
                if (auto* cancel = named<QAbstractButton>(window, "cmdCancel")) {
                    watch.stop();
                    QTest::mouseClick(cancel, Qt::LeftButton);
                    cancelled = true;
                }
            }
        }
    });
    watch.start();
    click(&dialog, "cmdApply");
    watch.stop();
    other->EndTableTransaction(held);

    EXPECT_TRUE(cancelled);
    EXPECT_EQ(definitions(), definitionsBefore);
    catalog->Refresh();
    EXPECT_EQ(shape("FilesSearchData", "Files"), tableBefore);
    EXPECT_EQ(listed(&dialog), QStringList({"Alpha", "Beta"}));
    EXPECT_FALSE(dialog.IsDirty());
}

INSTANTIATE_TEST_SUITE_P(Db, LockedSaveTest, ::testing::Values(DbKind::SQLite), dbKindName);

} // namespace
