#pragma once

#include "searchdata/CFilterColumns.h"
#include "searchdata/CScPicklist.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/UiServices.h"
#include "support/SearchFixture.h"

namespace searchdata::test {

/// A search on Files whose text column Colour holds, before any picklist: "red" in rows 1-10,
/// "blue" in 11-15, blanks in 16-20 and nulls in 21-30; and whose integer column Qty holds 7 in
/// rows 1-10 and nulls elsewhere.
class PicklistTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        ui = std::make_shared<HeadlessUiServices>();
        UiServices::install(ui);
        Diagnostics::instance().clearReports();
    }
    void TearDown() override
    {
        UiServices::install(nullptr);
        SearchTest::TearDown();
    }

    void defineColourAndQty()
    {
        auto cols = columns();
        cols->Add("Colour", "", "", fcText, 20, false, false);
        cols->Add("Qty", "", "", fcInteger32, 0, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr)) << qPrintable(lastError());
        const QString data = q("FilesSearchData");
        const QString id = q("FileId");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Colour") + " = 'red', " + q("Qty") + " = 7 WHERE " + id + " <= 10");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Colour") + " = 'blue' WHERE " + id + " BETWEEN 11 AND 15");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Colour") + " = '' WHERE " + id + " BETWEEN 16 AND 20");
        // The search rows were made with the columns' defaults (a blank, 0): nulls come from elsewhere.
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Colour") + " = NULL WHERE " + id + " > 20");
        SD_ASSERT_SQL(testDb(), "UPDATE " + data + " SET " + q("Qty") + " = NULL WHERE " + id + " > 10");
    }

    /// Makes Colour a picklist and saves; the collection, or null when the save failed.
    std::shared_ptr<CFilterColumns> makeColourPicklist(bool allowBlanks, const QString& defaultText)
    {
        auto cols = columns();
        auto colour = cols->Item("Colour");
        colour->setIsPicklist(true);
        colour->setPicklistAllowBlanks(allowBlanks);
        colour->setPicklistDefault(defaultText);
        return cols->ColumnsSave(nullptr) ? cols : nullptr;
    }

    /// The values of a column, sorted, nulls as "<null>".
    QStringList values(const QString& table, const QString& column, const QString& where = "1 = 1")
    {
        QStringList out;
        auto rs = db().OpenSqlRecordset("SELECT " + q(column) + " FROM " + q(table) + " WHERE " + where);
        if (!rs)
            return {"<cannot read " + table + ">"};
        for (; !rs->EndOfFile(); rs->MoveNext()) {
            const Value v = rs->field(column);
            out << (v.isNull() ? QStringLiteral("<null>") : v.text());
        }
        out.sort();
        return out;
    }
    /// How often each value occurs: "blue x5".
    QStringList counts(const QString& table, const QString& column)
    {
        QStringList out;
        const QStringList all = values(table, column);
        for (qsizetype i = 0; i < all.size();) {
            qsizetype j = i;
            while (j < all.size() && all[j] == all[i])
                ++j;
            out << QStringLiteral("%1 x%2").arg(all[i]).arg(j - i);
            i = j;
        }
        return out;
    }
    QStringList hiddenEntries(const QString& picklist, const QString& column)
    {
        return values(picklist, column, q("HideEntry") + " = " + db().SqlBoolean(true));
    }
    bool hasKey(const QString& table, const QString& key)
    {
        catalog->Refresh();
        return GetTableKey(GetCatalogTable(*catalog, table), key).has_value();
    }
    bool hasTable(const QString& table)
    {
        catalog->Refresh();
        return GetCatalogTable(*catalog, table) != nullptr;
    }
    QString lastError() { return Diagnostics::instance().lastError().value_or(ErrorReport{}).text; }

    std::shared_ptr<HeadlessUiServices> ui;
};

} // namespace searchdata::test
