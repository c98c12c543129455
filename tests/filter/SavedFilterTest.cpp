#include "FilterTestSupport.h"

#include "searchdata/CFilterTerms.h"
#include "searchdata/UiServices.h"
#include "searchdata/Value.h"

#include <QSettings>
#include <QSqlQuery>

using namespace searchdata;
using namespace searchdata::test;

namespace {

const QString kSection = "Parts_7_Last_Filter";

// A dialog that replaces whatever filter it is shown by one term of its own.
class ReplacingServices : public HeadlessUiServices {
public:
    std::shared_ptr<CFilterTerms> OpenFilterDialog(CFilterColumns& columns, std::shared_ptr<CFilterTerms> terms, const IFormInfo* owner) override
    {
        HeadlessUiServices::OpenFilterDialog(columns, terms, owner);
        shown = terms;
        auto replaced = std::make_shared<CFilterTerms>(columns.shared_from_this());
        replaced->Add(kvoCJ_None, "PartsSearchData", "Price", kvoCC_Numeric, kvoOP_Less, "9");
        return replaced;
    }
    std::shared_ptr<CFilterTerms> shown;
};

// Parts with the base fields Name and Big, a described field Dropped that the table lacks, and the
// search columns Maker, Price, Made, Checked and Tag. The user's number is 7.
class SavedFilter : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_db.ok()) << qPrintable(m_db.error());
        SD_ASSERT_SQL(m_db, createTableSql(*m_db.handler(), "Parts", "PartId", {{"Name", adVarWChar}, {"Big", adBigInt}}));
        m_profile = std::make_shared<IniProfile>(m_db.tempDir().filePath("profile.ini"), 7);
        m_oldProfile = std::make_shared<IniProfile>(m_db.tempDir().filePath("old.ini"), 7);
        m_search = openSearch(m_db.handler(), "Parts", "PartId", {{"Name", adVarWChar}, {"Big", adBigInt}, {"Dropped", adInteger}}, m_profile);
        ASSERT_TRUE(m_search && m_search->FilterColumns());
        m_columns = m_search->FilterColumns();
        ASSERT_TRUE(m_columns->Add("Maker", "Made by", "", fcText, 50, false, false));
        ASSERT_TRUE(m_columns->Add("Price", "", "", fcDouble, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Made", " ", "", fcDateTime, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Checked", "", "", fcBoolean, 0, false, false));
        ASSERT_TRUE(m_columns->Add("Tag", "", "", fcKeyword, 20, false, false));
        m_services = std::make_shared<HeadlessUiServices>();
        UiServices::install(m_services);
    }

    void TearDown() override { UiServices::install(nullptr); }

    std::shared_ptr<CFilterTerms> fiveTerms()
    {
        auto terms = std::make_shared<CFilterTerms>(m_columns);
        terms->Add(kvoCJ_None, "PartsSearchKeywordTag", "Tag", kvoCC_Keyword, kvoOP_Includes, "red");
        terms->Add(kvoCJ_And, "PartsSearchData", "Maker", kvoCC_Text, kvoOP_IsLike, "A%");
        terms->Add(kvoCJ_OR, "PartsSearchData", "Price", kvoCC_Numeric, kvoOP_Greater, "2.5");
        terms->Add(kvoCJ_None, "PartsSearchData", "Made", kvoCC_Date, kvoOP_Equals, "2003-07-04 13:05:09");
        terms->Add(kvoCJ_And, "Parts", "Big", kvoCC_Numeric, kvoOP_LessOrEqual, "12");
        terms->Add(kvoCJ_And, "PartsSearchData", "Checked", kvoCC_Boolean, kvoOP_IsTrue, "x");
        return terms;
    }

    QStringList keysOf(IniProfile& profile, const QString& section)
    {
        QStringList keys = profile.keys(section);
        keys.sort();
        return keys;
    }

    void writeTerm(IProfile& profile, const QString& section, int n, const QString& table, const QString& field, int op,
                   const QString& compareTo)
    {
        profile.WriteProfileText(section, "Field" + QString::number(n), field);
        profile.WriteProfileText(section, "Table" + QString::number(n), table);
        profile.WriteProfileNumber(section, "Operation" + QString::number(n), op);
        profile.WriteProfileText(section, "CompareTo" + QString::number(n), compareTo);
    }

    TestDatabase m_db{DbKind::SQLite};
    std::shared_ptr<IniProfile> m_profile;
    std::shared_ptr<IniProfile> m_oldProfile;
    std::shared_ptr<CSearchFilter> m_search;
    std::shared_ptr<CFilterColumns> m_columns;
    std::shared_ptr<HeadlessUiServices> m_services;
};

TEST_F(SavedFilter, SavesNumberedKeysPerTermAndReadsThemBack)
{
    const auto saved = fiveTerms();
    CSearchFilter::SaveFilter(saved.get(), *m_columns, m_profile.get(), "7", fltrDBMode_Normal);

    EXPECT_EQ(keysOf(*m_profile, kSection),
              (QStringList{"CompareTo1", "CompareTo2", "CompareTo3", "CompareTo4", "CompareTo5", "Conjunction2", "Conjunction3",
                           "Conjunction5", "Conjunction6", "Field1", "Field2", "Field3", "Field4", "Field5", "Field6",
                           "Operation1", "Operation2", "Operation3", "Operation4", "Operation5", "Operation6", "Table1",
                           "Table2", "Table3", "Table4", "Table5", "Table6"}));
    EXPECT_EQ(m_profile->ReadText(kSection, "Conjunction3", ""), "2");
    EXPECT_EQ(m_profile->ReadText(kSection, "Operation2", ""), "8");
    EXPECT_EQ(m_profile->ReadText(kSection, "CompareTo4", ""), "#7-4-2003 13:5:9#");
    EXPECT_EQ(m_profile->ReadText(kSection, "Table1", ""), "PartsSearchKeywordTag");

    const auto read = CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->Count(), saved->Count());
    for (int n = 1; n <= saved->Count(); ++n) {
        const auto& expected = *saved->Item(n);
        const auto& actual = *read->Item(n);
        EXPECT_EQ(actual.Field(), expected.Field()) << n;
        EXPECT_EQ(actual.Table(), expected.Table()) << n;
        EXPECT_EQ(actual.ComparisonClass(), expected.ComparisonClass()) << n;
        EXPECT_EQ(actual.Operation(), expected.Operation()) << n;
        EXPECT_EQ(actual.Conjunction(), expected.Conjunction()) << n;
        EXPECT_EQ(actual.HasColumn(), expected.HasColumn()) << n;
        EXPECT_EQ(actual.Sequence(), n);
    }
    EXPECT_EQ(read->Item(3)->CompareTo(), "2.5");
    EXPECT_EQ(read->Item(4)->CompareTo(), DateToText(QDateTime(QDate(2003, 7, 4), QTime(13, 5, 9))));
    EXPECT_EQ(read->Item(6)->CompareTo(), QString()) << "booleans keep no compare value";
    EXPECT_EQ(read->SQLString(), saved->SQLString());
}

TEST_F(SavedFilter, TheFirstMissingFieldEndsTheFilter)
{
    writeTerm(*m_profile, kSection, 1, "PartsSearchData", "Maker", kvoOP_Equals, "Acme");
    writeTerm(*m_profile, kSection, 3, "PartsSearchData", "Price", kvoOP_Equals, "3");
    const auto read = CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->Count(), 1);
    EXPECT_EQ(read->Item(1)->CompareTo(), "Acme");
    EXPECT_EQ(read->Item(1)->Conjunction(), kvoCJ_None);
    EXPECT_FALSE(CSearchFilter::GetFilter(m_columns, nullptr, "7", fltrDBMode_Normal)) << "no profile, no filter";
}

TEST_F(SavedFilter, NormalAndArchiveModesAreKeptApart)
{
    EXPECT_EQ(CSearchFilter::_Archive(*m_columns, "7", fltrDBMode_Normal), kSection);
    EXPECT_EQ(CSearchFilter::_Archive(*m_columns, "7", fltrDBMode_Archive), "Parts_7_Archive_Last_Filter");

    CSearchFilter::SaveFilter(fiveTerms().get(), *m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    EXPECT_EQ(CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Archive)->Count(), 0);

    CFilterTerms archived(m_columns);
    archived.Add(kvoCJ_None, "Parts", "Name", kvoCC_Text, kvoOP_Equals, "Bolt");
    CSearchFilter::SaveFilter(&archived, *m_columns, m_profile.get(), "7", fltrDBMode_Archive);
    EXPECT_EQ(CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Archive)->Count(), 1);
    EXPECT_EQ(CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Normal)->Count(), 6);
}

TEST_F(SavedFilter, FieldsThatAreGoneReadWithoutClassOrValue)
{
    writeTerm(*m_profile, kSection, 1, "PartsSearchData", "Gone", kvoOP_Equals, "kept?");
    writeTerm(*m_profile, kSection, 2, "parts", "Big", kvoOP_Greater, "5");
    writeTerm(*m_profile, kSection, 3, "Parts", "Dropped", kvoOP_Equals, "1");
    writeTerm(*m_profile, kSection, 4, "PartsSearchData", "made by", kvoOP_Equals, "Acme");
    const auto read = CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->Count(), 4);
    EXPECT_EQ(read->Item(1)->ComparisonClass(), kvoCC_Unknown);
    EXPECT_EQ(read->Item(1)->CompareTo(), QString());
    EXPECT_EQ(read->Item(2)->ComparisonClass(), kvoCC_Numeric) << "the base table's name ignores case; a 64-bit field is numeric";
    EXPECT_EQ(read->Item(2)->CompareTo(), "5");
    EXPECT_EQ(read->Item(3)->ComparisonClass(), kvoCC_Unknown) << "described, but the table does not have it";
    EXPECT_EQ(read->Item(4)->ComparisonClass(), kvoCC_Text) << "a column is found by its caption too";
}

TEST_F(SavedFilter, AShorterFilterLeavesNoStaleKeys)
{
    CSearchFilter::SaveFilter(fiveTerms().get(), *m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    CFilterTerms shorter(m_columns);
    shorter.Add(kvoCJ_None, "Parts", "Name", kvoCC_Text, kvoOP_Equals, "Bolt");
    shorter.Add(kvoCJ_OR, "Parts", "Name", kvoCC_Text, kvoOP_Equals, "Nut");
    CSearchFilter::SaveFilter(&shorter, *m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    EXPECT_EQ(keysOf(*m_profile, kSection), (QStringList{"CompareTo1", "CompareTo2", "Conjunction2", "Field1", "Field2",
                                                         "Operation1", "Operation2", "Table1", "Table2"}));

    CSearchFilter::SaveFilter(nullptr, *m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    EXPECT_FALSE(m_profile->sections().contains(kSection)) << "saving no terms removes the filter";
}

// A profile is outside input: its names reach the SQL only as the database spells them, and a term
// that names a column in another table than the column's own is no term of that column.
TEST_F(SavedFilter, NamesOfAProfileReachTheSqlOnlyAsTheDatabaseSpellsThem)
{
    ASSERT_TRUE(m_columns->ColumnsSave(nullptr));
    writeTerm(*m_profile, kSection, 1, "partssearchdata", "maker", kvoOP_Equals, "Acme");
    writeTerm(*m_profile, kSection, 2, "PARTS", "name", kvoOP_Equals, "x");
    writeTerm(*m_profile, kSection, 3, "PartsSearchKeywordTag", "Maker", kvoOP_Equals, "Acme");
    writeTerm(*m_profile, kSection, 4, "Elsewhere", "Price", kvoOP_Greater, "1");
    m_profile->WriteProfileNumber(kSection, "Conjunction2", kvoCJ_And);
    m_profile->WriteProfileNumber(kSection, "Conjunction3", kvoCJ_And);
    m_profile->WriteProfileNumber(kSection, "Conjunction4", kvoCJ_And);

    const auto terms = CSearchFilter::GetFilter(m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    ASSERT_TRUE(terms);
    ASSERT_EQ(terms->Count(), 4);
    EXPECT_EQ(terms->Item(1)->Table() + "." + terms->Item(1)->Field(), "PartsSearchData.Maker");
    EXPECT_EQ(terms->Item(2)->Table() + "." + terms->Item(2)->Field(), "Parts.Name");
    EXPECT_EQ(terms->Item(3)->ComparisonClass(), kvoCC_Unknown);
    EXPECT_EQ(terms->Item(4)->ComparisonClass(), kvoCC_Unknown);
    const QString sql = terms->SQLString();
    EXPECT_FALSE(sql.contains("Elsewhere")) << qPrintable(sql);
    EXPECT_FALSE(sql.contains("PartsSearchKeywordTag].[Maker")) << qPrintable(sql);
    QSqlQuery q(m_db.handler()->database());
    EXPECT_TRUE(q.exec("SELECT COUNT(*) FROM Parts LEFT JOIN PartsSearchData ON Parts.PartId = PartsSearchData.PartId WHERE " + sql))
        << qPrintable(q.lastError().text()) << "\n" << qPrintable(sql);
}

TEST_F(SavedFilter, AFilterKeptUnderTheUserNameMovesToTheUserNumberOnce)
{
    writeTerm(*m_profile, "Parts_alice_Last_Filter", 1, "PartsSearchData", "Maker", kvoOP_Equals, "Acme");

    const auto terms = m_search->Filter(m_oldProfile, "alice", nullptr, fltrDBMode_Normal);
    ASSERT_TRUE(terms);
    ASSERT_EQ(terms->Count(), 1);
    EXPECT_EQ(terms->Item(1)->CompareTo(), "Acme");
    EXPECT_EQ(m_services->requests(), QStringList{"filter"});
    EXPECT_FALSE(m_profile->sections().contains("Parts_alice_Last_Filter"));
    EXPECT_EQ(m_profile->ReadText(kSection, "CompareTo1", ""), "Acme");

    // Once moved, a filter under the name is no longer looked at.
    writeTerm(*m_profile, "Parts_alice_Last_Filter", 1, "PartsSearchData", "Maker", kvoOP_Equals, "Other");
    EXPECT_EQ(m_search->Filter(m_oldProfile, "alice", nullptr, fltrDBMode_Normal)->Item(1)->CompareTo(), "Acme");
    EXPECT_TRUE(m_profile->sections().contains("Parts_alice_Last_Filter"));
}

TEST_F(SavedFilter, AFilterInTheOldProfileMovesToThisProfileOnce)
{
    writeTerm(*m_oldProfile, "Parts_alice_Archive_Last_Filter", 1, "PartsSearchData", "Maker", kvoOP_Equals, "Acme");

    const auto terms = m_search->Filter(m_oldProfile, "alice", nullptr, fltrDBMode_Archive);
    ASSERT_TRUE(terms);
    ASSERT_EQ(terms->Count(), 1);
    EXPECT_FALSE(m_oldProfile->sections().contains("Parts_alice_Archive_Last_Filter"));
    EXPECT_EQ(m_profile->ReadText("Parts_7_Archive_Last_Filter", "CompareTo1", ""), "Acme");
    EXPECT_FALSE(m_profile->sections().contains(kSection)) << "the normal mode has no filter";

    writeTerm(*m_oldProfile, "Parts_alice_Archive_Last_Filter", 1, "PartsSearchData", "Maker", kvoOP_Equals, "Other");
    EXPECT_EQ(m_search->Filter(m_oldProfile, "alice", nullptr, fltrDBMode_Archive)->Item(1)->CompareTo(), "Acme");
    EXPECT_TRUE(m_oldProfile->sections().contains("Parts_alice_Archive_Last_Filter"));
}

TEST_F(SavedFilter, WhatTheDialogGivesBackIsKept)
{
    CSearchFilter::SaveFilter(fiveTerms().get(), *m_columns, m_profile.get(), "7", fltrDBMode_Normal);
    auto dialog = std::make_shared<ReplacingServices>();
    UiServices::install(dialog);

    const auto terms = m_search->Filter(nullptr, "alice", nullptr, fltrDBMode_Normal);
    ASSERT_TRUE(dialog->shown);
    EXPECT_EQ(dialog->shown->Count(), 6) << "the dialog starts from the saved filter";
    ASSERT_TRUE(terms);
    EXPECT_EQ(terms->Count(), 1);
    EXPECT_EQ(keysOf(*m_profile, kSection), (QStringList{"CompareTo1", "Field1", "Operation1", "Table1"}));
    EXPECT_FALSE(CSearchFilter().Filter(nullptr, "alice", nullptr, fltrDBMode_Normal)) << "no columns, no filter";
}

TEST(FilterDateToText, ReadsTheProfileFormMonthFirstWhateverTheLocale)
{
    EXPECT_EQ(CSearchFilter::FilterDateToText("#7-4-2003#"), DateToText(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    EXPECT_EQ(CSearchFilter::FilterDateToText("#12-31-1999 23:5:9#"), DateToText(QDateTime(QDate(1999, 12, 31), QTime(23, 5, 9))));
    EXPECT_EQ(CSearchFilter::FilterDateToText("2003-07-04 08:30"), DateToText(QDateTime(QDate(2003, 7, 4), QTime(8, 30))));
    EXPECT_EQ(CSearchFilter::FilterDateToText("#7-4#"), QString());
    EXPECT_EQ(CSearchFilter::FilterDateToText("#7-4-2003"), QString());
    EXPECT_EQ(CSearchFilter::FilterDateToText("#7-4-2003 13:05#"), QString());
    EXPECT_EQ(CSearchFilter::FilterDateToText("#2-30-2003#"), QString());
    EXPECT_EQ(CSearchFilter::FilterDateToText("someday"), QString());
}

TEST_F(SavedFilter, GivesTheHostThePiecesToJoinTheSearchTable)
{
    EXPECT_EQ(m_search->SQLSearchFields(),
              "[PartsSearchData].[Maker] AS [Made by],[PartsSearchData].[Price],[PartsSearchData].[Made],[PartsSearchData].[Checked]");
    EXPECT_EQ(m_search->SQLSearchJoinOn(), "[Parts].[PartId] = [PartsSearchData].[PartId]");
    EXPECT_EQ(m_search->SQLSearchTable(), "[PartsSearchData]");

    for (const QString name : {"Maker", "Price", "Made", "Checked"})
        m_columns->RemoveColumn(name);
    EXPECT_EQ(m_search->SQLSearchFields(), QString());
    EXPECT_EQ(m_search->SQLSearchTable(), QString());

    const CSearchFilter unopened;
    EXPECT_EQ(unopened.SQLSearchFields(), QString());
    EXPECT_EQ(unopened.SQLSearchJoinOn(), QString());
    EXPECT_EQ(unopened.SQLSearchTable(), QString());
}

} // namespace
