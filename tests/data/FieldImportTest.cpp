// Importing values from the fields of another table.

#include "searchdata/CFilterColumns.h"
#include "searchdata/CImportFields.h"
#include "searchdata/CMergeBaseEntry.h"
#include "searchdata/CSearchFilter.h"
#include "searchdata/Diagnostics.h"
#include "support/SearchFixture.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

TEST(FieldImportFields, TypesMapToColumnTypesAndTheReportListsEveryField)
{
    const std::pair<int, FilterColumnTypeConstants> map[] = {
        {adSmallInt, fcInteger16}, {adTinyInt, fcInteger16}, {adUnsignedTinyInt, fcInteger16}, {adInteger, fcInteger32},
        {adSingle, fcSingle},      {adDouble, fcDouble},     {adDate, fcDateTime},           {adBoolean, fcBoolean},
        {adChar, fcText},          {adVarWChar, fcText},     {adBigInt, fcUndefined},        {adLongVarBinary, fcUndefined},
        {adNumeric, fcUndefined},
    };
    for (const auto& [ado, type] : map)
        EXPECT_EQ(CImportField::ColumnTypeOf(ado), type) << ado;

    CImportFields fields;
    CatalogColumn text;
    text.name = "Cust";
    auto customer = fields.Add("Customer", text);
    customer->setFieldValue(Value("Acme"));
    fields.Add("Empty", text);
    EXPECT_EQ(fields.Count(), 2);
    EXPECT_EQ(fields.Item(1), customer);
    EXPECT_EQ(fields.Item(3), nullptr);
    EXPECT_EQ(fields.Report("Id", Value(qint32(7))), "Id = 7\r\nCustomer = Acme\r\nEmpty = ");
    fields.Clear();
    EXPECT_EQ(fields.Report("Id", Value(qint32(7))), "Id = 7");
}

/// A host table Legacy whose fields feed the search columns of Files, record by record.
class FieldImportTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        const Dialect& d = db().dialect();
        SD_ASSERT_SQL(testDb(), QStringLiteral("CREATE TABLE %1 (%2 INTEGER PRIMARY KEY, %3 %4, %5 %6, %7 %8, %9 %10, %11 %12, %13 %14, %15 %16)")
                                    .arg(q("Legacy"), q("Id"), q("Cust"), d.declaredType(adVarWChar, 30), q("Amount"), d.declaredType(adInteger, 0))
                                    .arg(q("Price"), d.declaredType(adDouble, 0), q("Made"), d.declaredType(adDate, 0), q("Ok"),
                                         d.declaredType(adBoolean, 0), q("Raw"), d.declaredType(adLongVarBinary, 0))
                                    .arg(q("Word"), d.declaredType(adVarWChar, 20)));
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("Legacy") + " VALUES (1, 'O''Neil', 42, 2.5, " +
                                    db().SqlDate(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6))) + ", " + db().SqlBoolean(true) +
                                    ", NULL, 'red')");
        SD_ASSERT_SQL(testDb(), "INSERT INTO " + q("Legacy") + " VALUES (2, NULL, NULL, NULL, NULL, NULL, NULL, NULL)");
        catalog->Refresh();
        auto cols = columns();
        cols->Add("Tags", "", "", fcKeyword, 20, false, false);
        cols->Add("Qty", "", "", fcInteger16, 0, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        filter = open();
        legacy = db().OpenSqlRecordset("SELECT * FROM " + q("Legacy") + " ORDER BY " + q("Id"));
        ASSERT_NE(legacy, nullptr);
        const CatalogTablePtr table = GetCatalogTable(*catalog, "Legacy");
        for (const char* name : {"Cust", "Amount", "Price", "Made", "Ok", "Raw"})
            fields.Add(name == QString("Cust") ? "Customer" : name, *GetTableColumn(table, name), legacy);
        fields.Add("Tags", *GetTableColumn(table, "Word"), legacy);
        fields.Add("Qty", *GetTableColumn(table, "Cust"), legacy); // a text that is no number does not fit
        Diagnostics::instance().clearReports();
    }
    QVariant stored(const QString& column, int id)
    {
        return testDb().scalar(QStringLiteral("SELECT %1 FROM %2 WHERE %3 = %4").arg(q(column), q("FilesSearchData"), q("FileId")).arg(id));
    }

    std::shared_ptr<CSearchFilter> filter;
    std::shared_ptr<Recordset> legacy;
    CImportFields fields;
};

TEST_P(FieldImportTest, InitializingAddsAColumnForEachFieldThatHasNoneAndATypeThatFits)
{
    ASSERT_TRUE(filter->Import(nullptr, kvoTLImportInitialize, nullptr, fields));
    auto cols = open()->FilterColumns();
    QStringList made;
    for (const auto& c : *cols)
        made << QStringLiteral("%1:%2:%3").arg(c->Name()).arg(c->ColumnType()).arg(c->TextLengthInUI());
    EXPECT_EQ(made, QStringList({"Tags:0:20", "Qty:2:0", "Customer:1:30", "Amount:3:0", "Price:5:0", "Made:6:0", "Ok:7:0"}));
    // Nothing more to add the second time.
    ASSERT_TRUE(open()->Import(nullptr, kvoTLImportInitialize, nullptr, fields));
    EXPECT_EQ(open()->FilterColumns()->Count(), 7);
    EXPECT_TRUE(open()->Import(nullptr, kvoTLImportCleanup, nullptr, fields));
}

TEST_P(FieldImportTest, EachRecordTakesTheFieldsThatSuitItsColumns)
{
    ASSERT_TRUE(filter->Import(nullptr, kvoTLImportInitialize, nullptr, fields));
    filter = open();
    SD_ASSERT_SQL(testDb(), "UPDATE " + q("FilesSearchData") + " SET " + q("Customer") + " = NULL, " + q("Amount") + " = NULL, " +
                                q("Made") + " = NULL, " + q("Qty") + " = 3");
    SD_ASSERT_SQL(testDb(), "DELETE FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = 1");

    for (int id : {1, 2}) {
        const CMergeBaseEntry entry(id);
        ASSERT_TRUE(filter->Import(nullptr, kvoTLImportData, &entry, fields)) << id;
        legacy->MoveNext();
    }
    EXPECT_EQ(stored("Customer", 1).toString(), "O'Neil");
    EXPECT_EQ(stored("Amount", 1).toInt(), 42);
    EXPECT_DOUBLE_EQ(stored("Price", 1).toDouble(), 2.5);
    EXPECT_EQ(Value::fromVariant(stored("Made", 1)).toDateTime().value(), QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6)));
    EXPECT_TRUE(Value::fromVariant(stored("Ok", 1)).toBoolean().value());
    EXPECT_EQ(stored("Qty", 1).toInt(), 0) << "the row was made for the import; Qty took nothing and is filled with 0";
    // Record 2's fields are all null: empty texts and numbers are filled, a date stays without one.
    EXPECT_EQ(stored("Customer", 2).toString(), "");
    EXPECT_FALSE(stored("Customer", 2).isNull());
    EXPECT_EQ(stored("Amount", 2).toInt(), 0);
    EXPECT_FALSE(stored("Amount", 2).isNull());
    EXPECT_TRUE(stored("Made", 2).isNull());
    EXPECT_EQ(stored("Qty", 2).toInt(), 3) << "a field that does not fit leaves the value";

    // A keyword comes once, however often it is imported.
    legacy->MoveFirst();
    const CMergeBaseEntry first(1);
    ASSERT_TRUE(filter->Import(nullptr, kvoTLImportData, &first, fields));
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 1"), 1);
    EXPECT_EQ(rows("FilesSearchKeywordTags", q("FileId") + " = 2"), 0);
    EXPECT_EQ(Diagnostics::instance().reportCount(), 0);
}

} // namespace

SD_INSTANTIATE_DATABASE_SUITE(FieldImportTest);
