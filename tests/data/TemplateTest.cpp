#include "searchdata/CFilterColumns.h"
#include "support/FakeControls.h"
#include "support/LocaleScope.h"
#include "support/SearchFixture.h"

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// The INI profile, counting its reads.
class CountingProfile : public IniProfile {
public:
    using IniProfile::IniProfile;
    QString ReadText(const QString& section, const QString& key, const QString& defaultValue) override
    {
        ++reads;
        return IniProfile::ReadText(section, key, defaultValue);
    }
    int reads = 0;
};

class TemplateTest : public SearchTest {
protected:
    void SetUp() override
    {
        SearchTest::SetUp();
        if (HasFatalFailure())
            return;
        counting = std::make_shared<CountingProfile>(testDb().tempDir().filePath("template.ini"));
        profile = counting;
        auto cols = columns();
        cols->Add("Customer", "", "", fcText, 40, false, false);
        cols->Add("Qty", "", "", fcInteger32, 0, false, false);
        cols->Add("Due", "", "", fcDateTime, 0, false, false);
        cols->Add("Done", "", "", fcBoolean, 0, false, false);
        cols->Add("Tags", "", "", fcKeyword, 30, false, false);
        cols->Add("Colors", "", "", fcKeyword, 30, false, false);
        ASSERT_TRUE(cols->ColumnsSave(nullptr));
        search = columns();
    }
    std::shared_ptr<CountingProfile> counting;
    std::shared_ptr<CFilterColumns> search;
};

TEST_P(TemplateTest, TheStoredValuesBecomeTheTemplateAndPasteIntoTheControls)
{
    search->Item("Customer")->setSavedValue(Value("Acme"));
    search->Item("Qty")->setSavedValue(Value(qint32(12)));
    search->Item("Due")->setSavedValue(Value(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    search->Item("Done")->setSavedValue(Value(true));
    search->Item("Tags")->SavedKeys() = {"red", "blue"};
    search->SaveTemplate();
    EXPECT_EQ(counting->ReadText("Files_Template", "Tags_2", ""), "blue");
    EXPECT_EQ(counting->ReadText("Files_Template", "Due", ""), "#7-4-2003#");

    FakeTextBox customer, qty, due;
    FakeCheckBox done;
    FakeComboBox tags;
    search->Item("Customer")->setMyControl(&customer);
    search->Item("Qty")->setMyControl(&qty);
    search->Item("Due")->setMyControl(&due);
    search->Item("Done")->setMyControl(&done);
    search->Item("Tags")->setMyControl(&tags);
    search->CopyTemplate();
    EXPECT_EQ(customer.text, "Acme");
    EXPECT_EQ(qty.text, "12");
    EXPECT_EQ(due.text, DateToText(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));
    EXPECT_EQ(done.value, 1);
    EXPECT_EQ(tags.items, QStringList({"red", "blue"}));
}

TEST_P(TemplateTest, NumbersComeBackTheSameAndInTheFormOfTheLocale)
{
    auto cols = columns();
    cols->Add("Ratio", "", "", fcDouble, 0, false, false);
    cols->Add("Grade", "", "", fcSingle, 0, false, false);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    for (const QLocale& locale : {QLocale(QLocale::German, QLocale::Germany), QLocale::c()}) {
        SCOPED_TRACE(locale.name().toStdString());
        const LocaleScope scope(locale);
        search = columns(); // a new collection reads the template anew
        search->Item("Ratio")->setSavedValue(Value(1.125));
        search->Item("Grade")->setSavedValue(Value(1.1f));
        search->SaveTemplate();
        EXPECT_EQ(counting->ReadText("Files_Template", "Ratio", ""), "1.125");
        EXPECT_EQ(counting->ReadText("Files_Template", "Grade", ""), "1.1");

        FakeTextBox ratio, grade;
        search->Item("Ratio")->setMyControl(&ratio);
        search->Item("Grade")->setMyControl(&grade);
        search->CopyTemplate();
        EXPECT_EQ(ratio.text, locale.toString(1.125));
        EXPECT_EQ(grade.text, locale.toString(1.1));
        EXPECT_EQ(Value(ratio.text).toDouble().value(), 1.125);
        EXPECT_EQ(Value(grade.text).toSingle().value(), 1.1f);
    }
}

TEST_P(TemplateTest, TwoPastesReadTheProfileOnce)
{
    search->Item("Customer")->setSavedValue(Value("Acme"));
    search->SaveTemplate();
    counting->reads = 0;
    search->CopyTemplate();
    const int firstReads = counting->reads;
    EXPECT_GT(firstReads, 1);
    search->CopyTemplate();
    EXPECT_EQ(counting->reads, firstReads + 1); // the time stamp alone
}

TEST_P(TemplateTest, MissingKeysReadAsTheirTypesZero)
{
    search->SaveTemplate(); // nothing but the time stamp
    EXPECT_EQ(counting->keys("Files_Template"), QStringList{"TimeStamp"});
    ASSERT_TRUE(search->FetchTemplateValues());
    EXPECT_EQ(search->Item("Qty")->TemplateValue(), Value("0"));
    EXPECT_EQ(search->Item("Done")->TemplateValue(), Value(false));
    EXPECT_EQ(search->Item("Customer")->TemplateValue(), Value(""));
    counting->WriteText("Files_Template", "Due", "someday");
    counting->WriteTimestamp("Files_Template", "TimeStamp", QDateTime::currentDateTime().addDays(1));
    ASSERT_TRUE(search->FetchTemplateValues());
    EXPECT_EQ(search->Item("Due")->TemplateValue(), Value("someday"));
}

TEST_P(TemplateTest, KeywordColumnsShareOneCounterWhenRead)
{
    // Written by a program that numbered the second column on from the first.
    counting->WriteTimestamp("Files_Template", "TimeStamp", QDateTime::currentDateTime());
    counting->WriteText("Files_Template", "Tags_1", "red");
    counting->WriteText("Files_Template", "Tags_2", "blue");
    counting->WriteText("Files_Template", "Colors_4", "green");
    ASSERT_TRUE(search->FetchTemplateValues());
    EXPECT_EQ(search->Item("Tags")->TemplateKeys(), QStringList({"red", "blue"}));
    EXPECT_EQ(search->Item("Colors")->TemplateKeys(), QStringList{"green"});
}

TEST_P(TemplateTest, AnEmptyStampLeavesTheTemplateAsItWasAndNoProfileIsSilent)
{
    search->Item("Tags")->TemplateKeys() = {"kept"};
    ASSERT_TRUE(search->FetchTemplateValues());
    EXPECT_EQ(search->Item("Tags")->TemplateKeys(), QStringList{"kept"});

    CFilterColumns noProfile;
    EXPECT_FALSE(noProfile.FetchTemplateValues());
    noProfile.SaveTemplate();
    noProfile.CopyTemplate();
}

SD_INSTANTIATE_DATABASE_SUITE(TemplateTest);

} // namespace
