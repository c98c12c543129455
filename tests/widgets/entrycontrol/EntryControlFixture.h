#pragma once

#include "searchdata/ISearchBaseEntry.h"
#include "searchdata/widgets/UKVOSearch.h"
#include "searchdata/widgets/UKVOSearchContainer.h"
#include "support/SearchFixture.h"
#include "support/WidgetTestSupport.h"

#include <QPushButton>
#include <QStringList>
#include <QTimer>

namespace searchdata::test {

struct Entry : ISearchBaseEntry {
    qint32 id = 1;
    qint32 Id() const override { return id; }
};

/// The control's geometry as a host in a layout gives it, but without making the control's
/// minimum its minimum size, so that a test may make the control as small as it likes.
class FreeContainer : public UKVOSearchContainer {
public:
    using UKVOSearchContainer::UKVOSearchContainer;
    void SizeMin() override { ++sizeMinCalls; }
    int sizeMinCalls = 0;
};

/// A base table "Files" with search columns of every type, and an entry control shown as a window
/// of its own and opened on it, under scripted UI services.
class EntryControlTest : public SearchTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// The columns of the table: by default one of each type, in the order of the type numbers.
    virtual void defineColumns(CFilterColumns& columns);
    /// Shows a fresh control of `size`, opened on Files.
    void openControl(QSize size = QSize(640, 520));
    /// Shows record `id` and waits for the buttons to be updated.
    void display(int id, KVOSearchEditExamineModes mode = kseModeEdit);
    /// Lets the host accept (or refuse) every request to edit.
    void acceptEditing(bool accept = true);
    /// Presses Edit as a user would and waits for the buttons.
    void startEditing();
    /// Waits until the pending update of the buttons has run.
    void settle();
    /// Records the control's signals, by name, in `events`.
    void recordEvents();
    /// The value of `column` that the search table holds for record `id`, as text.
    QString stored(const QString& column, int id);

    /// The window whose controls the helpers below find and wait for: the control itself here.
    virtual QWidget* surface() const { return control.get(); }

    template <typename T>
    T* child(const QString& name) const
    {
        T* found = named<T>(surface(), name);
        EXPECT_NE(found, nullptr) << "no control named " << qPrintable(name);
        return found;
    }
    QPushButton* button(const char* name) const { return child<QPushButton>(QString::fromLatin1(name)); }
    /// Names of the buttons of the edit column that show, in the order of the column.
    QStringList visibleButtons() const;
    /// Clicks `widget` after giving it the focus, as the mouse would.
    void click(QWidget* widget);
    /// Types into `widget` after giving it the focus.
    void type(QWidget* widget, const QString& text);
    void focus(QWidget* widget);

    std::shared_ptr<ScriptedUiServices> ui;
    std::unique_ptr<ServicesGuard> servicesGuard;
    std::unique_ptr<UKVOSearch> control;
    std::shared_ptr<FreeContainer> container;
    Entry entry;
    QStringList events;
};

} // namespace searchdata::test

/// A suite that saves nothing runs on SQLite alone.
#define SD_INSTANTIATE_SQLITE_SUITE(Suite) \
    INSTANTIATE_TEST_SUITE_P(Db, Suite, ::testing::Values(::searchdata::test::DbKind::SQLite), ::searchdata::test::dbKindName)
