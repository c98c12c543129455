#include "EntryControlFixture.h"

#include "searchdata/CSearchFilter.h"

#include <QLabel>
#include <QLineEdit>

using namespace searchdata;
using namespace searchdata::test;

namespace {

class UKVOSearchStateTest : public EntryControlTest {};

TEST_P(UKVOSearchStateTest, AClosedControlIgnoresDisplayAndAnswersBlank)
{
    UKVOSearch closed;
    Entry e;
    closed.Display(nullptr, &e, kseModeExamine);
    EXPECT_EQ(closed.EditMode(), kseModeEdit);
    EXPECT_FALSE(closed.IsEditing());
    EXPECT_FALSE(closed.Exists());
    EXPECT_EQ(closed.MyFilter(), nullptr);
    EXPECT_TRUE(closed.SQLSearchFields().isEmpty());
    EXPECT_TRUE(closed.SQLSearchJoinOn().isEmpty());
    EXPECT_TRUE(closed.SQLSearchTable().isEmpty());
    EXPECT_TRUE(named<QLabel>(&closed, "lblField_0")->isHidden());

    // A failed open leaves it closed.
    EXPECT_FALSE(closed.OpenSearch(nullptr, testDb().handler(), files, catalog, profile, 0, baseStructureOf("Files", {"FileId"})));
    EXPECT_FALSE(closed.Exists());
}

TEST_P(UKVOSearchStateTest, EachStateShowsItsButtons)
{
    const QStringList editing{"cmdOk", "cmdApply", "cmdReset", "cmdClear", "cmdCancel", "cmdTemplateCopy", "cmdTemplatePaste"};
    struct Case {
        const char* state;
        KVOSearchEditExamineModes mode;
        bool edit;
        bool showOk;
        bool showCancel;
        QStringList expected;
    };
    const Case cases[] = {
        {"examining", kseModeExamine, false, true, true, {"cmdCancel"}},
        {"examining without cancel", kseModeExamine, false, true, false, {}},
        {"viewing", kseModeEdit, false, true, true, {"cmdEdit", "cmdCancel"}},
        {"viewing without cancel", kseModeEdit, false, true, false, {"cmdEdit"}},
        // A session shows Cancel whatever the host chose.
        {"editing", kseModeEdit, true, true, false, editing},
        {"editing without OK", kseModeEdit, true, false, true, editing.mid(1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.state);
        openControl();
        EXPECT_TRUE(visibleButtons().isEmpty()) << "opened, before a record";
        control->SetShowOKButton(c.showOk);
        control->SetShowCancelButton(c.showCancel);
        acceptEditing();
        display(3, c.mode);
        if (c.edit)
            startEditing();
        EXPECT_EQ(visibleButtons(), c.expected);
        EXPECT_EQ(control->IsEditing(), c.edit);
        EXPECT_TRUE(control->Exists());
    }
}

TEST_P(UKVOSearchStateTest, EventsComeInTheOrderOfEachAction)
{
    struct Case {
        const char* action;
        bool accept;
        bool editFirst;
        std::function<void()> act;
        QStringList expected;
    };
    const auto typeAndPress = [this](const char* press) {
        return [this, press] {
            type(child<QWidget>("txtTextField_1"), "new");
            settle();
            click(button(press));
        };
    };
    const auto press = [this](const char* name) { return [this, name] { click(button(name)); }; };
    const Case cases[] = {
        {"edit accepted", true, false, press("cmdEdit"), {"Start", "Changed"}},
        {"edit refused", false, false, press("cmdEdit"), {"Start"}},
        {"apply", true, true, typeAndPress("cmdApply"), {"Apply", "Complete", "Changed"}},
        {"OK", true, true, typeAndPress("cmdOk"), {"OK", "Complete", "Changed"}},
        {"cancel while editing", true, true, press("cmdCancel"), {"Cancel", "Complete", "Changed"}},
        {"cancel while not editing", true, false, press("cmdCancel"), {"Cancel"}},
        {"open during a session", true, true,
         [this] {
             EXPECT_TRUE(control->OpenSearch(container, testDb().handler(), files, catalog, profile, 0, baseStructureOf("Files", {"FileId"})));
         },
         {"Cancel", "Complete", "Changed"}},
        {"a record to examine during a session", true, true, [this] { display(4, kseModeExamine); }, {"Cancel", "Complete", "Changed"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.action);
        openControl();
        acceptEditing(c.accept);
        display(3);
        if (c.editFirst)
            startEditing();
        events.clear();
        recordEvents();
        c.act();
        settle();
        EXPECT_EQ(events, c.expected);
    }
}

TEST_P(UKVOSearchStateTest, ARefusedSessionChangesNothingAndAnEndedOneHidesCancel)
{
    openControl();
    acceptEditing(false);
    display(3);
    const QStringList before = visibleButtons();
    startEditing();
    EXPECT_FALSE(control->IsEditing());
    EXPECT_EQ(visibleButtons(), before);
    EXPECT_TRUE(child<QWidget>("txtTextField_1")->property("readOnly").toBool());

    // The host wanted Cancel; the end of a session takes it away.
    openControl();
    acceptEditing();
    control->SetShowCancelButton(true);
    display(3);
    startEditing();
    click(button("cmdCancel"));
    settle();
    EXPECT_FALSE(control->ShowCancelButton());
    EXPECT_EQ(visibleButtons(), QStringList{"cmdEdit"});
}

TEST_P(UKVOSearchStateTest, DisplayInEditModeKeepsTheSessionAndDropsWhatWasTyped)
{
    openControl();
    acceptEditing();
    display(3);
    startEditing();
    recordEvents();
    auto* customer = child<QLineEdit>("txtTextField_1");
    type(customer, "typed");
    ASSERT_TRUE(control->IsDirty());
    display(3);
    EXPECT_TRUE(control->IsEditing());
    EXPECT_FALSE(control->IsDirty());
    EXPECT_TRUE(customer->text().isEmpty());
    EXPECT_TRUE(events.isEmpty());
}

SD_INSTANTIATE_SQLITE_SUITE(UKVOSearchStateTest);

} // namespace
