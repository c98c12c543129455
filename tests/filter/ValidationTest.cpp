#include "searchdata/AdoTypes.h"
#include "searchdata/CFilterColumn.h"
#include "searchdata/Catalog.h"
#include "searchdata/TableStructure.h"
#include "searchdata/UiServices.h"
#include "searchdata/Validation.h"
#include "support/FakeControls.h"

#include <gtest/gtest.h>

using namespace searchdata;
using namespace searchdata::test;

namespace {

TEST(ValidColumnName, LettersDigitsAndUnderscoreOnlyAndNotTheKeywordTablesOwnField)
{
    const std::pair<QString, bool> cases[] = {
        {"Customer", true},   {"Part_No2", true},   {"_x", true},        {"Größe", true},    {"日本", true},
        {"", false},          {"Two words", false}, {" Lead", false},    {"Tag%1", false},   {"a-b", false},
        {"O'Neil", false},    {"say\"x\"", false},  {"a.b", false},      {"semi;", false},   {"x\ty", false},
        {"KeywordOrder", false}, {"keywordorder", false}, {"KeywordOrders", true},
    };
    for (const auto& [name, valid] : cases)
        EXPECT_EQ(ValidColumnName(name), valid) << qPrintable(name);
}

TEST(FilterComparisonClass, OfSearchColumnsByType)
{
    const std::pair<FilterColumnTypeConstants, FilterComparisonClasses> cases[] = {
        {fcKeyword, kvoCC_Keyword}, {fcText, kvoCC_Text},     {fcNote, kvoCC_Text},     {fcInteger16, kvoCC_Numeric},
        {fcInteger32, kvoCC_Numeric}, {fcSingle, kvoCC_Numeric}, {fcDouble, kvoCC_Numeric}, {fcDateTime, kvoCC_Date},
        {fcBoolean, kvoCC_Boolean}, {fcUndefined, kvoCC_Unknown},
    };
    for (const auto& [type, expected] : cases) {
        CFilterColumn column;
        column.setColumnType(type);
        EXPECT_EQ(ComparisonClassFromColumn(&column), expected) << "type " << type;
    }
    EXPECT_EQ(ComparisonClassFromColumn(static_cast<const CFilterColumn*>(nullptr)), kvoCC_Unknown);
}

TEST(FilterComparisonClass, OfBaseFieldsByTypeCodeWithEveryIntegerWidth)
{
    const std::pair<int, FilterComparisonClasses> cases[] = {
        {adSmallInt, kvoCC_Numeric}, {adInteger, kvoCC_Numeric},  {adSingle, kvoCC_Numeric},  {adDouble, kvoCC_Numeric},
        {adCurrency, kvoCC_Numeric}, {adDecimal, kvoCC_Numeric},  {adTinyInt, kvoCC_Numeric}, {adUnsignedTinyInt, kvoCC_Numeric},
        {18, kvoCC_Numeric},         {19, kvoCC_Numeric},         {adBigInt, kvoCC_Numeric},  {21, kvoCC_Numeric},
        {adNumeric, kvoCC_Numeric},  {adDate, kvoCC_Date},        {adBoolean, kvoCC_Boolean}, {adChar, kvoCC_Text},
        {adVarWChar, kvoCC_Text},    {adGUID, kvoCC_Unknown},     {adLongVarBinary, kvoCC_Unknown}, {adDBTime, kvoCC_Unknown},
    };
    for (const auto& [type, expected] : cases) {
        StructureColumn described;
        described.type = type;
        CatalogColumn actual;
        actual.type = type;
        EXPECT_EQ(ComparisonClassFromColumn(&described), expected) << "type " << type;
        EXPECT_EQ(ComparisonClassFromColumn(&actual), expected) << "type " << type;
    }
    EXPECT_EQ(ComparisonClassFromColumn(static_cast<const StructureColumn*>(nullptr)), kvoCC_Unknown);
}

TEST(FilterComparisonClass, OfBaseFieldsOnlyWhenTheHostLeavesThemUsable)
{
    TableStructure s("Parts");
    ASSERT_TRUE(s.AddColumn("Name", adVarWChar, 40));
    ASSERT_TRUE(s.AddColumn("Cost", adDouble));
    ASSERT_TRUE(s.MarkFilterField("cost", false));
    ASSERT_TRUE(s.MarkFilterField("Name", true, "Part name"));
    EXPECT_FALSE(s.MarkFilterField("Missing", true));

    const auto name = s.ColumnNamed("Name");
    const auto cost = s.ColumnNamed("Cost");
    EXPECT_EQ(ComparisonClassFromColumn(&*name), kvoCC_Text);
    EXPECT_EQ(ComparisonClassFromColumn(&*cost), kvoCC_Unknown);
    EXPECT_EQ(name->displayNameOrName(), "Part name");
    EXPECT_EQ(cost->displayNameOrName(), "Cost") << "the field's own name unless the host gives one";
}

// A text box and a combo box whose selection the test sets.
class SelectingTextBox : public FakeTextBox {
public:
    int SelStart() const override { return start < 0 ? static_cast<int>(text.size()) : start; }
    int SelLength() const override { return length; }
    int start = -1;
    int length = 0;
};

class SelectingComboBox : public FakeComboBox {
public:
    int SelStart() const override { return start; }
    int SelLength() const override { return length; }
    int start = 0;
    int length = 0;
};

class ClipboardServices : public HeadlessUiServices {
public:
    QString ClipboardText() const override { return clipboard; }
    QString clipboard;
};

class FilterKeyPress : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_services = std::make_shared<ClipboardServices>();
        UiServices::install(m_services);
    }
    void TearDown() override { UiServices::install(nullptr); }

    bool press(const QString& text, int start, int length, int key, int maximum)
    {
        box.text = text;
        box.start = start;
        box.length = length;
        return ValidKeyPress(&box, key, maximum);
    }

    std::shared_ptr<ClipboardServices> m_services;
    SelectingTextBox box;
};

TEST_F(FilterKeyPress, CharactersStandWithinTheMaximumLength)
{
    EXPECT_TRUE(press("ab", -1, 0, 'c', 3));
    EXPECT_FALSE(press("abc", -1, 0, 'd', 3));
    EXPECT_TRUE(press("abc", -1, 0, 'd', 0)) << "no maximum";
    EXPECT_TRUE(press("abc", 1, 1, 'X', 3)) << "the selection is replaced";
    EXPECT_TRUE(press("", -1, 0, 0x1F642, 2)) << "a character beyond the basic plane";
}

TEST_F(FilterKeyPress, QuotesAndDoubleBlanksAreRefused)
{
    EXPECT_FALSE(press("ab", -1, 0, '\'', 0));
    EXPECT_FALSE(press("ab", -1, 0, '"', 0));
    EXPECT_TRUE(press("a", -1, 0, ' ', 0));
    EXPECT_FALSE(press("a ", -1, 0, ' ', 0));
    EXPECT_TRUE(press("a b", 1, 0, ' ', 0)) << "two blanks inside the text are allowed";
}

TEST_F(FilterKeyPress, EditingKeysWorkOnTheTextAroundTheCaret)
{
    EXPECT_FALSE(press("a  b", -1, 0, 8, 0)) << "backspace leaves two blanks at the end";
    EXPECT_TRUE(press("a  b", 1, 2, 8, 0)) << "backspace removes only the selection";
    EXPECT_TRUE(press("abcd", 0, 0, 46, 3)) << "delete removes the first character after the caret";
    EXPECT_FALSE(press("abc", -1, 0, 46, 2)) << "nothing after the caret: the text stays too long";
    EXPECT_FALSE(press("a  ", 0, 1, 3, 0)) << "copy changes nothing";
    EXPECT_TRUE(press("ab", 0, 1, 3, 2));
}

TEST_F(FilterKeyPress, PasteInsertsTheClipboardText)
{
    m_services->clipboard = "XY";
    EXPECT_TRUE(press("abcdef", 1, 3, 22, 5));
    EXPECT_FALSE(press("abcdef", 1, 2, 22, 5));
    m_services->clipboard = "it's";
    EXPECT_TRUE(press("", -1, 0, 22, 0)) << "pasted quotes are left to the compare value's quoting";
}

TEST_F(FilterKeyPress, WorksOnComboBoxesOnly)
{
    SelectingComboBox combo;
    combo.text = "red";
    combo.start = 3;
    EXPECT_TRUE(ValidKeyPress(&combo, 's', 4));
    EXPECT_FALSE(ValidKeyPress(&combo, 's', 3));
    FakeCheckBox check;
    EXPECT_FALSE(ValidKeyPress(&check, 'a', 0));
    EXPECT_FALSE(ValidKeyPress(nullptr, 'a', 0));
}

} // namespace
