#include "filter/FilterDialogFixture.h"

#include "filter/FilterTestSupport.h"
#include "searchdata/CFilterColumns.h"
#include "searchdata/widgets/WidgetUiServices.h"

#include <QApplication>
#include <QSqlQuery>
#include <QTest>

namespace searchdata::test {

void FilterDialogTest::SetUp()
{
    DatabaseTest::SetUp();
    if (HasFatalFailure())
        return;
    DatabaseHandler& db = *m_db->handler();
    SD_ASSERT_SQL(*m_db, createTableSql(db, "Parts", "PartId",
                                        {{"Name", adVarWChar}, {"Qty", adInteger}, {"Internal", adVarWChar}, {"Picture", adLongVarBinary}}));
    const QStringList names = {"bolt", "nut", "washer", "gear", "shaft", "bracket"};
    const QList<int> quantities = {10, 200, 35, 7, 120, 0};
    for (int i = 0; i < names.size(); ++i)
        SD_ASSERT_SQL(*m_db, "INSERT INTO " + q("Parts") + " (" + q("PartId") + ", " + q("Name") + ", " + q("Qty") + ", " + q("Internal")
                                 + ") VALUES (" + QString::number(i + 1) + ", " + db.SqlQuote(names[i]) + ", "
                                 + QString::number(quantities[i]) + ", 'internal')");

    auto catalog = std::make_shared<Catalog>(m_db->handler());
    catalog->Refresh();
    const CatalogTablePtr parts = GetCatalogTable(*catalog, "Parts");
    ASSERT_TRUE(parts);
    auto structure = DescribeBaseTable(*parts, "PartId");
    ASSERT_TRUE(structure);
    ASSERT_TRUE(structure->MarkFilterField("Internal", false));
    ASSERT_TRUE(structure->MarkFilterField("Qty", true, "Quantity"));

    profile = std::make_shared<IniProfile>(m_db->tempDir().filePath("profile.ini"), 7);
    search = std::make_shared<CSearchFilter>();
    search->OpenSearch(m_db->handler(), std::make_shared<PartsTable>(), catalog, profile, 0, structure);
    columns = search->FilterColumns();
    ASSERT_TRUE(columns);
    ASSERT_TRUE(columns->Add("Maker", "Made by", "Who made the part", fcText, 50, false, false));
    ASSERT_TRUE(columns->Add("Price", "", "Price of one part", fcDouble, 0, false, false));
    ASSERT_TRUE(columns->Add("Delivered", "Delivered on", "", fcDateTime, 0, false, false));
    ASSERT_TRUE(columns->Add("Checked", "", "Checked at the goods entrance", fcBoolean, 0, false, false));
    ASSERT_TRUE(columns->Add("Tag", "Tags", "Free keywords", fcKeyword, 20, false, false));
    ASSERT_TRUE(columns->ColumnsSave(nullptr));
    fillValues();

    services = std::make_unique<ServicesGuard>(std::make_shared<WidgetUiServices>());
}

void FilterDialogTest::TearDown()
{
    services.reset();
    columns.reset();
    search.reset();
    DatabaseTest::TearDown();
}

void FilterDialogTest::fillValues()
{
    DatabaseHandler& db = *m_db->handler();
    struct Values {
        QString maker;
        QString price;
        QDateTime delivered;
        bool checked;
        QStringList tags;
    };
    const QList<Values> values = {
        {"Acme", "1.5", QDateTime({2024, 1, 10}, {}), true, {"red", "small"}},
        {"Bolton", "0.2", QDateTime({2024, 3, 1}, {}), false, {"blue"}},
        {"Acme", "0.05", QDateTime({2023, 12, 24}, {}), false, {}},
        {"Gearco", "12", QDateTime({2024, 2, 15}, {10, 30}), true, {"red"}},
        {"O'Neil", "45.5", QDateTime({2024, 5, 5}, {}), false, {"steel", "red"}},
        {"", "0", QDateTime(), false, {}},
    };
    const QString keywords = columns->SearchKeyword(columns->Item("Tag").get());
    for (int i = 0; i < values.size(); ++i) {
        const Values& v = values[i];
        const QString id = QString::number(i + 1);
        SD_ASSERT_SQL(*m_db, "UPDATE " + q(columns->SearchKeyword()) + " SET " + q("Maker") + " = " + db.SqlQuote(v.maker) + ", "
                                 + q("Price") + " = " + v.price + ", " + q("Delivered") + " = "
                                 + (v.delivered.isValid() ? db.SqlDate(v.delivered) : QStringLiteral("NULL")) + ", " + q("Checked")
                                 + " = " + db.SqlBoolean(v.checked) + " WHERE " + q("PartId") + " = " + id);
        for (const QString& tag : v.tags)
            SD_ASSERT_SQL(*m_db, "INSERT INTO " + q(keywords) + " (" + q("PartId") + ", " + q("Tag") + ") VALUES (" + id + ", "
                                     + db.SqlQuote(tag) + ")");
    }
    ASSERT_EQ(m_db->scalar("SELECT COUNT(*) FROM " + q(columns->SearchKeyword()) + " WHERE " + q("Maker") + " IS NOT NULL").toInt(), 6)
        << "every part has its search row";
}

std::unique_ptr<frmFilter> FilterDialogTest::openDialog(std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner)
{
    auto made = std::make_unique<frmFilter>();
    EXPECT_TRUE(made->Prepare(columns, std::move(terms), owner));
    made->show();
    QApplication::setActiveWindow(made.get());
    EXPECT_TRUE(QTest::qWaitForWindowActive(made.get()));
    dialog = made.get();
    return made;
}

QComboBox* FilterDialogTest::combo(const char* name, int row) const
{
    auto* found = named<QComboBox>(dialog, QLatin1String(name) + QLatin1Char('_') + QString::number(row));
    EXPECT_NE(found, nullptr) << name << " " << row;
    return found;
}

QLineEdit* FilterDialogTest::compareTo(int row) const
{
    auto* found = named<QLineEdit>(dialog, "txtCompareTo_" + QString::number(row));
    EXPECT_NE(found, nullptr) << "txtCompareTo " << row;
    return found;
}

QPushButton* FilterDialogTest::button(const char* name) const
{
    auto* found = named<QPushButton>(dialog, QLatin1String(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

void FilterDialogTest::chooseField(int row, const QString& key)
{
    chooseByKeys(field(row), field(row)->findData(key, frmFilter::KeyRole));
}

QString FilterDialogTest::baseKey(const QString& name) const
{
    return m_db->handler()->dialect().QualifiedName(name, "Parts");
}

void FilterDialogTest::chooseOperation(int row, EComparisonOperations operation)
{
    chooseByKeys(comparison(row), comparison(row)->findData(int(operation)));
}

void FilterDialogTest::chooseConjunction(int row, EConjunctions value)
{
    chooseByKeys(conjunction(row), conjunction(row)->findData(int(value)));
}

void FilterDialogTest::typeCompareTo(int row, const QString& text)
{
    QLineEdit* box = compareTo(row);
    ASSERT_TRUE(box->isEnabled());
    QTest::mouseClick(box, Qt::LeftButton);
    ASSERT_TRUE(box->hasFocus());
    box->selectAll();
    QTest::keyClick(box, Qt::Key_Delete);
    QTest::keyClicks(box, text);
    QTest::keyClick(box, Qt::Key_Tab);
}

void FilterDialogTest::fillRows(const QList<Row>& rows)
{
    for (int r = 0; r < rows.size(); ++r) {
        if (r > 0)
            chooseConjunction(r, rows[r].conjunction);
        chooseField(r, rows[r].key);
        chooseOperation(r, rows[r].operation);
        if (compareTo(r)->isEnabled())
            typeCompareTo(r, rows[r].compareTo);
    }
}

QList<qint64> FilterDialogTest::partsWhere(const QString& predicate)
{
    QSqlQuery query(m_db->handler()->database());
    const QString sql = "SELECT " + q("PartId") + " FROM " + q("Parts") + " WHERE " + predicate + " ORDER BY " + q("PartId");
    QList<qint64> keys;
    if (!query.exec(sql)) {
        ADD_FAILURE() << qPrintable(query.lastError().text()) << "\n  in: " << qPrintable(sql);
        return keys;
    }
    while (query.next())
        keys << query.value(0).toLongLong();
    return keys;
}

} // namespace searchdata::test
