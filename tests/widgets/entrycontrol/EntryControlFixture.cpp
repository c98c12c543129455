#include "EntryControlFixture.h"

#include "searchdata/CFilterColumns.h"
#include "searchdata/CScPicklist.h"

#include <QApplication>
#include <QTest>

namespace searchdata::test {

void EntryControlTest::SetUp()
{
    SearchTest::SetUp();
    if (HasFatalFailure())
        return;
    ui = std::make_shared<ScriptedUiServices>(std::chrono::milliseconds(3000));
    servicesGuard = std::make_unique<ServicesGuard>(ui);
    auto cols = columns();
    ASSERT_NE(cols, nullptr);
    defineColumns(*cols);
    ASSERT_TRUE(cols->ColumnsSave(nullptr));
    if (auto grade = cols->Item("Grade")) {
        ASSERT_TRUE(grade->PickList()->SaveAdditions({"A", "C"}));
    }
}

void EntryControlTest::TearDown()
{
    control.reset();
    servicesGuard.reset();
    SearchTest::TearDown();
}

void EntryControlTest::defineColumns(CFilterColumns& cols)
{
    cols.Add("Tags", "", "", fcKeyword, 20, false, false);
    cols.Add("Customer", "Customer", "Who ordered it", fcText, 20, false, false);
    cols.Add("Qty", "Quantity", "", fcInteger16, 0, false, false);
    cols.Add("Count", "", "", fcInteger32, 0, false, false);
    cols.Add("Weight", "", "", fcSingle, 0, false, false);
    cols.Add("Price", "", "", fcDouble, 0, false, false);
    cols.Add("Due", "Due date", "", fcDateTime, 0, false, false);
    cols.Add("Done", "", "", fcBoolean, 0, false, false);
    cols.Add("Notes", "", "", fcNote, 100, false, false);
    cols.Add("Stamp", "", "", fcDateTime, 0, false, false, {}, fcDTDM_Now, Value::null(), true);
    cols.Add("Grade", "", "", fcText, 10, true, false, "B");
}

void EntryControlTest::openControl(QSize size)
{
    control = std::make_unique<UKVOSearch>();
    container = std::make_shared<FreeContainer>(control.get());
    control->resize(size);
    control->show();
    QApplication::setActiveWindow(control.get());
    ASSERT_TRUE(QTest::qWaitForWindowActive(control.get()));
    catalog->Refresh();
    ASSERT_TRUE(control->OpenSearch(container, testDb().handler(), files, catalog, profile, 0, baseStructureOf("Files", {"FileId"})));
}

void EntryControlTest::display(int id, KVOSearchEditExamineModes mode)
{
    entry.id = id;
    control->Display(nullptr, &entry, mode);
    settle();
}

void EntryControlTest::acceptEditing(bool accept)
{
    QObject::connect(control.get(), &UKVOSearch::OnStartEditing, control.get(), [accept](ISearchBaseEntry*, bool* accepted) {
        *accepted = accept;
    });
}

void EntryControlTest::startEditing()
{
    click(button("cmdEdit"));
    settle();
}

void EntryControlTest::settle()
{
    auto* timer = surface()->findChild<QTimer*>(QStringLiteral("tmrUpdate"));
    ASSERT_NE(timer, nullptr);
    ASSERT_TRUE(waitFor([timer] { return !timer->isActive(); }));
}

void EntryControlTest::recordEvents()
{
    UKVOSearch* c = control.get();
    QObject::connect(c, &UKVOSearch::ApplyButtonClick, c, [this] { events << "Apply"; });
    QObject::connect(c, &UKVOSearch::Changed, c, [this] { events << "Changed"; });
    QObject::connect(c, &UKVOSearch::CancelButtonClick, c, [this] { events << "Cancel"; });
    QObject::connect(c, &UKVOSearch::OkButtonClick, c, [this] { events << "OK"; });
    QObject::connect(c, &UKVOSearch::OnStartEditing, c, [this](ISearchBaseEntry*, bool*) { events << "Start"; });
    QObject::connect(c, &UKVOSearch::OnCompleteEditing, c, [this](ISearchBaseEntry*) { events << "Complete"; });
}

QString EntryControlTest::stored(const QString& column, int id)
{
    return testDb().scalar("SELECT " + q(column) + " FROM " + q("FilesSearchData") + " WHERE " + q("FileId") + " = " + QString::number(id)).toString();
}

QStringList EntryControlTest::visibleButtons() const
{
    QStringList shown;
    for (const char* name : {"cmdOk", "cmdEdit", "cmdApply", "cmdReset", "cmdClear", "cmdCancel", "cmdTemplateCopy", "cmdTemplatePaste"})
        if (const QPushButton* b = named<QPushButton>(surface(), QString::fromLatin1(name)); b && b->isVisible())
            shown << QString::fromLatin1(name);
    return shown;
}

void EntryControlTest::focus(QWidget* widget)
{
    ASSERT_NE(widget, nullptr);
    widget->setFocus(Qt::MouseFocusReason);
    ASSERT_TRUE(waitFor([widget] { return widget->hasFocus(); }));
}

void EntryControlTest::click(QWidget* widget)
{
    ASSERT_NE(widget, nullptr);
    QTest::mouseClick(widget, Qt::LeftButton);
}

void EntryControlTest::type(QWidget* widget, const QString& text)
{
    focus(widget);
    QTest::keyClicks(widget, text);
}

} // namespace searchdata::test
