#include "searchdata/CScPicklist.h"
#include "searchdata/Diagnostics.h"
#include "searchdata/ISearchBaseEntry.h"
#include "support/SearchFixture.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

class Record : public ISearchBaseEntry {
public:
    explicit Record(qint32 id) : m_id(id) {}
    qint32 Id() const override { return m_id; }

private:
    qint32 m_id;
};

struct Expected {
    QString name;
    QString caption;
    FilterColumnTypeConstants type;
    int size;
    bool picklist;
    bool blanks;
    QString picklistDefault;
};

class DemoSet : public SearchTest {
protected:
    /// The non-blank entries of a picklist table in the order the table holds them.
    QStringList entriesOf(const CFilterColumn& column)
    {
        QStringList entries;
        auto rs = db().OpenSqlRecordset("SELECT " + q(column.Name()) + " AS v FROM " + q(column.PicklistTableName()) + " ORDER BY "
                                        + db().dialect().storageOrder());
        EXPECT_TRUE(rs) << qPrintable(db().lastError());
        for (; rs && !rs->EndOfFile(); rs->MoveNext())
            if (!rs->field("v").text().isEmpty())
                entries << rs->field("v").text();
        return entries;
    }

    void expectColumns(const CFilterColumns& columns, const QList<Expected>& expected)
    {
        ASSERT_EQ(columns.Count(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            const auto c = columns.Item(i + 1);
            const Expected& e = expected[i];
            EXPECT_EQ(c->Name(), e.name);
            EXPECT_EQ(c->Caption(), e.caption) << qPrintable(e.name);
            EXPECT_EQ(c->ColumnType(), e.type) << qPrintable(e.name);
            EXPECT_EQ(c->TextLengthInUI(), e.size) << qPrintable(e.name);
            EXPECT_EQ(c->IsPicklist(), e.picklist) << qPrintable(e.name);
            EXPECT_EQ(c->PicklistAllowBlanks(), e.blanks) << qPrintable(e.name);
            EXPECT_EQ(c->PicklistDefault(), e.picklistDefault) << qPrintable(e.name);
            EXPECT_TRUE(c->Description().isEmpty()) << qPrintable(e.name);
        }
    }

    qint64 definitionRows() { return rows(CFilterColumns::definitionTableName()); }
};

TEST_P(DemoSet, TheDncFileSetIsDefinedAsStoredWithItsCustomersInOrder)
{
    auto search = open();
    ASSERT_TRUE(search->CreateDemoColumnSet(fltrDCS_DncFile, nullptr, nullptr)) << qPrintable(Diagnostics::instance().lastError()->text);

    // As a later open reads them back from the definition table.
    const auto reopened = columns();
    expectColumns(*reopened, {{"DrawingNo", "Drawing Number", fcText, 20, false, false, ""},
                              {"PartNo", "Part Number", fcText, 20, false, false, ""},
                              {"Customer", "", fcText, 20, true, true, ""}});
    EXPECT_EQ(entriesOf(*reopened->Item("Customer")),
              (QStringList{"Acme Machine", "General Parts", "Johnson Auto Supply", "Jones Gear and Axle", "Phillips Mfg"}));
    // Every record of the base table has its search row, ready for the demo values.
    EXPECT_EQ(rows("FilesSearchData"), rowCount);
}

TEST_P(DemoSet, ThePacketSetGivesItsNoteDefaultToRecordsThatExist)
{
    auto search = open();
    ASSERT_TRUE(search->CreateDemoColumnSet(fltrDCS_Packet, nullptr, nullptr));
    const auto reopened = columns();
    expectColumns(*reopened, {{"OpNo", "Operation Number", fcText, 10, false, false, ""},
                              {"OpType", "Operation Type", fcText, 20, true, true, ""},
                              {"Description", "", fcNote, 255, false, true, "Add description here!"}});
    EXPECT_EQ(entriesOf(*reopened->Item("OpType")), (QStringList{"Drill", "Finish Cut", "Mill", "Rough Cut"}));
    EXPECT_EQ(rows("FilesSearchData", q("Description") + " = 'Add description here!'"), rowCount);
}

TEST_P(DemoSet, ATableWithColumnsIsLeftAsItIs)
{
    auto first = columns();
    ASSERT_TRUE(first->Add("Remark", "", "", fcText, 30, false, false));
    ASSERT_TRUE(first->ColumnsSave(nullptr));
    const qint64 before = definitionRows();

    auto search = open();
    EXPECT_FALSE(search->CreateDemoColumnSet(fltrDCS_DncFile, nullptr, nullptr));
    EXPECT_EQ(definitionRows(), before);
    const auto reopened = columns();
    ASSERT_EQ(reopened->Count(), 1);
    EXPECT_EQ(reopened->Item(1)->Name(), "Remark");
    catalog->Refresh();
    EXPECT_FALSE(GetCatalogTable(*catalog, "PicklistFilesCustomer"));
}

TEST_P(DemoSet, SetsThatDoNotExistAreReportedByNameAndDefineNothing)
{
    auto search = open();
    const struct {
        EDemoColumnSet set;
        const char* notice;
    } cases[] = {{fltrDCS_ControlledDocument, "Controlled Document is not implemented yet"},
                 {fltrDCS_Undefined, "Undefined demo set 0 is not implemented yet"},
                 {static_cast<EDemoColumnSet>(7), "Undefined demo set 7 is not implemented yet"}};
    for (const auto& c : cases) {
        Diagnostics::instance().clearReports();
        EXPECT_FALSE(search->CreateDemoColumnSet(c.set, nullptr, nullptr));
        const auto last = Diagnostics::instance().lastError();
        ASSERT_TRUE(last);
        EXPECT_EQ(last->text, c.notice);
        EXPECT_EQ(Diagnostics::instance().reportCount(), 1);
    }
    EXPECT_FALSE(search->Exists());
    EXPECT_EQ(definitionRows(), 0);
}

TEST_P(DemoSet, DemoValuesReachOnlyTheRecordNamed)
{
    auto dnc = open();
    ASSERT_TRUE(dnc->CreateDemoColumnSet(fltrDCS_DncFile, nullptr, nullptr));
    const Record record(7);
    ASSERT_TRUE(dnc->UpdateDemoDncFile(nullptr, nullptr, &record, "D-1'7", "P-7", "Phillips Mfg"));

    const auto reopened = columns();
    reopened->GetData(&record);
    EXPECT_EQ(reopened->Item("DrawingNo")->SavedValue().text(), "D-1'7");
    EXPECT_EQ(reopened->Item("PartNo")->SavedValue().text(), "P-7");
    EXPECT_EQ(reopened->Item("Customer")->SavedValue().text(), "Phillips Mfg");
    EXPECT_EQ(rows("FilesSearchData", q("PartNo") + " IS NOT NULL AND " + q("PartNo") + " <> ''"), 1);
    // A customer outside the picklist is refused by the database itself.
    EXPECT_FALSE(dnc->UpdateDemoDncFile(nullptr, nullptr, &record, "D-1", "P-1", "Nobody Ltd"));

    makeBaseTable("Packets", "PacketId", 3);
    auto packets = open("Packets", "PacketId");
    ASSERT_TRUE(packets->CreateDemoColumnSet(fltrDCS_Packet, nullptr, nullptr));
    const Record packet(2);
    ASSERT_TRUE(packets->UpdateDemoPacket(nullptr, nullptr, &packet, "20", "Mill", "Two passes"));
    const auto packetColumns = columns("Packets", "PacketId");
    packetColumns->GetData(&packet);
    EXPECT_EQ(packetColumns->Item("OpType")->SavedValue().text(), "Mill");
    EXPECT_EQ(packetColumns->Item("Description")->SavedValue().text(), "Two passes");
    EXPECT_EQ(rows("PacketsSearchData", q("Description") + " = 'Add description here!'"), 2);
}

SD_INSTANTIATE_DATABASE_SUITE(DemoSet);

} // namespace
