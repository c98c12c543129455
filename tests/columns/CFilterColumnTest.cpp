#include "searchdata/CFilterColumn.h"
#include "searchdata/DatabaseHandler.h"
#include "support/FakeControls.h"
#include "support/LocaleScope.h"

#include <QSqlDatabase>
#include <gtest/gtest.h>

using namespace searchdata;
using namespace searchdata::test;

namespace {

// A handler that only lends its dialect: the PostgreSQL driver, never opened.
std::shared_ptr<DatabaseHandler> postgresDialectHandler()
{
    static const QString name = [] {
        QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), QStringLiteral("dialect-only-pg"));
        return QStringLiteral("dialect-only-pg");
    }();
    return std::make_shared<DatabaseHandler>(name);
}

std::unique_ptr<CFilterColumn> makeColumn(FilterColumnTypeConstants type, const QString& name = "Col")
{
    auto c = std::make_unique<CFilterColumn>();
    c->setName(name);
    c->setColumnType(type);
    c->setTextLengthInUI(20);
    return c;
}

const QDateTime kNow(QDate(2026, 11, 22), QTime(10, 30, 0));

TEST(CFilterColumn, CaptionOrNameKeepsABlankCaption)
{
    auto c = makeColumn(fcText, "Customer");
    EXPECT_EQ(c->CaptionOrName(), "Customer");
    c->setCaption(" ");
    EXPECT_EQ(c->CaptionOrName(), " ");
    EXPECT_EQ(c->TextLengthInDB(), 255);
}

TEST(CFilterColumn, ValueConvertsWhatWasTypedAndNeverFails)
{
    FakeTextBox box;
    auto small = makeColumn(fcInteger16);
    small->setMyControl(&box);
    box.text = "99999";
    EXPECT_EQ(small->value(), Value(qint16(0)));
    box.text = " 12 ";
    EXPECT_EQ(small->value(), Value(qint16(12)));

    auto text = makeColumn(fcText);
    text->setMyControl(&box);
    box.text = "  padded  ";
    EXPECT_EQ(text->value(), Value("padded"));

    auto date = makeColumn(fcDateTime);
    date->setMyControl(&box);
    // A date column that holds no date holds NULL, never day zero.
    for (const QString text : {"not a date", "", "  "}) {
        box.text = text;
        EXPECT_TRUE(date->value().isNull()) << qPrintable(text);
    }
    box.text = "2003-07-04";
    EXPECT_EQ(date->value(), Value(QDateTime(QDate(2003, 7, 4), QTime(0, 0))));

    FakeCheckBox check;
    auto flag = makeColumn(fcBoolean);
    flag->setMyControl(&check);
    EXPECT_EQ(flag->value(), Value(false));
    check.value = 1;
    EXPECT_EQ(flag->value(), Value(true));

    FakeComboBox combo;
    combo.items = {"a", "b"};
    auto keyword = makeColumn(fcKeyword);
    keyword->setMyControl(&combo);
    EXPECT_TRUE(keyword->value().isNull());

    auto picklist = makeColumn(fcInteger32);
    picklist->setIsPicklist(true);
    picklist->setMyControl(&combo);
    combo.text = " 7 ";
    EXPECT_EQ(picklist->value(), Value(" 7 "));
}

TEST(CFilterColumn, DefaultValuesByTypeAndPicklist)
{
    auto number = makeColumn(fcInteger32);
    EXPECT_EQ(number->DefaultValue(kNow), Value(qint16(0)));
    number->setIsPicklist(true);
    number->setPicklistDefault("12abc");
    EXPECT_EQ(number->DefaultValue(kNow), Value(qint32(12)));

    auto flag = makeColumn(fcBoolean);
    EXPECT_EQ(flag->DefaultValue(kNow), Value(qint16(0)));

    auto note = makeColumn(fcNote);
    note->setPicklistDefault("Add description here!");
    EXPECT_EQ(note->DefaultValue(kNow), Value("Add description here!"));

    auto date = makeColumn(fcDateTime);
    EXPECT_TRUE(date->DefaultValue(kNow).isNull());
    date->setDateTimeDefaultValue(Value(QDateTime(QDate(2000, 1, 2), QTime(0, 0))));
    EXPECT_EQ(date->DefaultValue(kNow), Value(QDateTime(QDate(2000, 1, 2), QTime(0, 0))));
    date->setDateTimeDefaultMode(fcDTDM_Now);
    EXPECT_EQ(date->DefaultValue(kNow), Value(kNow));
}

TEST(CFilterColumn, SqlDefaultsAreValidLiteralsOnBothDatabases)
{
    auto text = makeColumn(fcText);
    text->setIsPicklist(true);
    text->setPicklistDefault("O'Neil");
    EXPECT_EQ(text->SQLDefaultValue(kNow), "'O''Neil'");

    auto date = makeColumn(fcDateTime);
    EXPECT_EQ(date->SQLDefaultValue(kNow), "NULL");
    date->setDateTimeDefaultMode(fcDTDM_Now);
    EXPECT_EQ(date->SQLDefaultValue(kNow), "'2026-11-22 10:30:00'");

    auto flag = makeColumn(fcBoolean);
    EXPECT_EQ(flag->SQLDefaultValue(kNow), "0");
    flag->SetupContext(nullptr, "FilesSearchData", postgresDialectHandler(), "FilesSearchData", "Files");
    EXPECT_EQ(flag->SQLDefaultValue(kNow), "FALSE");

    auto ratio = makeColumn(fcDouble);
    ratio->setIsPicklist(true);
    ratio->setPicklistDefault("2.5");
    const LocaleScope german(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(ratio->SQLDefaultValue(kNow), "2.5");
}

TEST(CFilterColumn, PicklistValuesAsSql)
{
    auto number = makeColumn(fcInteger32);
    EXPECT_TRUE(number->SQLFormatPicklistValue("abc").isEmpty());
    EXPECT_EQ(number->SQLFormatPicklistValue(" 7 "), Value(qint32(7)));
    number->SetupContext(nullptr, "T", postgresDialectHandler(), "T", "B");
    EXPECT_TRUE(number->SQLFormatPicklistValue("abc").isEmpty());
    EXPECT_EQ(number->SQLFormatPicklistValue("7"), Value("CAST(7 AS INTEGER)"));

    auto text = makeColumn(fcText);
    EXPECT_EQ(text->SQLFormatPicklistValue("  it's  "), Value("'it''s'"));
    auto date = makeColumn(fcDateTime);
    EXPECT_EQ(date->SQLFormatPicklistValue("2003-07-04"), Value("'2003-07-04 00:00:00'"));
    EXPECT_TRUE(date->SQLFormatPicklistValue("someday").isEmpty());
    EXPECT_TRUE(makeColumn(fcBoolean)->SQLFormatPicklistValue("True").isEmpty());
}

TEST(CFilterColumn, ResetDataShowsTheSavedValueInEachKindOfControl)
{
    FakeTextBox box;
    auto text = makeColumn(fcText);
    text->setTextLengthInUI(100);
    text->setMyControl(&box);
    text->setSavedValue(Value(QString(300, QLatin1Char('x'))));
    text->ResetData();
    EXPECT_EQ(box.maxLength, 300);
    EXPECT_EQ(box.text.size(), 300);

    auto date = makeColumn(fcDateTime);
    date->setMyControl(&box);
    date->setSavedValue(Value(qint16(0)));
    date->ResetData();
    EXPECT_EQ(box.text, "");

    FakeLabel label;
    auto flag = makeColumn(fcBoolean, "Done");
    flag->setMyControl(&label);
    flag->setSavedValue(Value(true));
    flag->ResetData();
    EXPECT_EQ(label.caption, "Done = True");

    FakeComboBox combo;
    auto keyword = makeColumn(fcKeyword);
    keyword->setMyControl(&combo);
    keyword->SavedKeys() = {"red", "green"};
    keyword->ResetData();
    EXPECT_EQ(combo.items, QStringList({"red", "green"}));
    EXPECT_EQ(combo.index, 0);

    auto picklist = makeColumn(fcText);
    picklist->setIsPicklist(true);
    picklist->setMyControl(&combo);
    picklist->SavedKeys() = {"Acme", "Jones", "ACME"};
    picklist->setSavedValue(Value("acme"));
    picklist->ResetData();
    EXPECT_EQ(combo.index, 2); // the last match wins
}

TEST(CFilterColumn, CopyTemplateUsesTemplateEntriesOnlyForKeywords)
{
    FakeComboBox combo;
    auto keyword = makeColumn(fcKeyword);
    keyword->setMyControl(&combo);
    keyword->SavedKeys() = {"saved"};
    keyword->TemplateKeys() = {"t1", "t2"};
    keyword->CopyTemplate();
    EXPECT_EQ(combo.items, QStringList({"t1", "t2"}));

    auto picklist = makeColumn(fcText);
    picklist->setIsPicklist(true);
    picklist->setMyControl(&combo);
    picklist->SavedKeys() = {"Drill", "Mill"};
    picklist->setTemplateValue(Value("mill"));
    picklist->CopyTemplate();
    EXPECT_EQ(combo.items, QStringList({"Drill", "Mill"}));
    EXPECT_EQ(combo.index, 1);

    FakeTextBox box;
    box.maxLength = 5;
    auto text = makeColumn(fcText);
    text->setMyControl(&box);
    text->setTemplateValue(Value("longer than five"));
    text->CopyTemplate();
    EXPECT_EQ(box.text, "longer than five");
    EXPECT_EQ(box.maxLength, 5);
}

TEST(CFilterColumn, ClearValueGoesBackToThePicklistDefault)
{
    FakeComboBox combo;
    combo.items = {"5", "7.0", "9"};
    auto number = makeColumn(fcInteger32);
    number->setIsPicklist(true);
    number->setPicklistDefault("7");
    number->setMyControl(&combo);
    number->ClearValue();
    EXPECT_EQ(combo.index, 1);

    number->setPicklistDefault("8");
    combo.index = 2;
    number->ClearValue();
    EXPECT_EQ(combo.index, 2); // no match leaves the selection

    auto keyword = makeColumn(fcKeyword);
    keyword->setMyControl(&combo);
    keyword->ClearValue();
    EXPECT_EQ(combo.ListCount(), 0);

    FakeCheckBox check;
    check.value = 1;
    auto flag = makeColumn(fcBoolean);
    flag->setMyControl(&check);
    flag->ClearValue();
    EXPECT_EQ(check.value, 0);
}

TEST(CFilterColumn, BlankAndValidByKindOfControl)
{
    auto c = makeColumn(fcInteger16);
    EXPECT_TRUE(c->IsBlank());
    c->Validate();
    EXPECT_TRUE(c->IsValid());

    FakeTextBox box;
    c->setMyControl(&box);
    box.text = "  ";
    EXPECT_TRUE(c->IsBlank());
    c->Validate();
    EXPECT_TRUE(c->IsValid());
    box.text = "40000";
    EXPECT_FALSE(c->IsBlank());
    c->Validate();
    EXPECT_FALSE(c->IsValid());

    FakeCheckBox check;
    c->setMyControl(&check);
    EXPECT_TRUE(c->IsBlank()); // unchecked counts as blank

    FakeComboBox combo;
    combo.text = "typed";
    c->setMyControl(&combo);
    EXPECT_TRUE(c->IsBlank()); // a combo is blank while its list is empty
    combo.items = {"x"};
    EXPECT_FALSE(c->IsBlank());
}

TEST(CFilterColumn, KeywordComboAddsRemovesAndEnablesItsButtons)
{
    FakeComboBox combo;
    FakeButton add, remove;
    auto keyword = makeColumn(fcKeyword);
    keyword->setMyControl(&combo);
    keyword->setMyAddButton(&add);
    keyword->setMyRemoveButton(&remove);

    combo.SetText("  red ");
    keyword->UpdateListButtons();
    EXPECT_TRUE(add.enabled);
    EXPECT_FALSE(remove.enabled);
    EXPECT_TRUE(keyword->AddComboText());
    EXPECT_EQ(combo.items, QStringList{"red"});
    EXPECT_EQ(combo.index, 0);
    keyword->UpdateListButtons();
    EXPECT_FALSE(add.enabled);
    EXPECT_TRUE(remove.enabled);

    combo.SetText("red"); // already there: selected, not added again
    EXPECT_FALSE(keyword->AddComboText());
    EXPECT_EQ(combo.items.size(), 1);
    EXPECT_EQ(combo.index, 0);
    combo.SetText("Red"); // case matters here
    EXPECT_TRUE(keyword->AddComboText());
    EXPECT_EQ(combo.items, QStringList({"red", "Red"}));

    combo.index = 1;
    EXPECT_TRUE(keyword->RemoveComboEntry());
    EXPECT_EQ(combo.index, 0);
    EXPECT_TRUE(keyword->RemoveComboEntry());
    EXPECT_EQ(combo.ListCount(), 0);
    EXPECT_FALSE(remove.enabled);
    EXPECT_FALSE(keyword->RemoveComboEntry());
}

} // namespace
