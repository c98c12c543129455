// The wrappers through which the host's libraries see the library's windows and controls.

#include "searchdata/widgets/CControlWrapper.h"
#include "searchdata/widgets/CFormUpdatable.h"
#include "support/WidgetTestSupport.h"

#include <QFrame>
#include <QGroupBox>
#include <QMainWindow>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

TEST(FormWrappers, NoWindowGivesNoWrapperAndAGoneWindowGivesEmptyValues)
{
    EXPECT_EQ(MakeFormInfo(nullptr), nullptr);
    EXPECT_EQ(MakeFormUpdatable(nullptr), nullptr);

    auto* window = new QWidget;
    window->setObjectName("frmGone");
    const std::unique_ptr<CFormUpdatable> wrapper = MakeFormUpdatable(window);
    ASSERT_TRUE(wrapper->IsValid());
    delete window;
    EXPECT_FALSE(wrapper->IsValid());
    EXPECT_EQ(wrapper->Name(), QString());
    EXPECT_EQ(wrapper->Root(), nullptr);
    wrapper->Move(1, 2, 3, 4); // nothing to move, and no failure
}

TEST(FormWrappers, ATopLevelWindowIsItsOwnRootAndMovesWithMissingValuesKept)
{
    QWidget window;
    window.setObjectName("frmMain");
    window.setWindowTitle("Main");
    window.setGeometry(40, 50, 400, 300);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    CFormUpdatable wrapper(&window);
    const QRect frame = window.frameGeometry();
    EXPECT_EQ(QRectF(wrapper.Left(), wrapper.Top(), wrapper.Width(), wrapper.Height()), QRectF(frame));
    EXPECT_FALSE(wrapper.MDIChild());
    EXPECT_EQ(wrapper.Root(), &wrapper);

    wrapper.Move(100, std::nullopt, 500);
    EXPECT_EQ(window.frameGeometry(), QRect(100, frame.y(), 500, frame.height()));
    wrapper.setHeight(250);
    wrapper.setTop(70);
    EXPECT_EQ(window.frameGeometry(), QRect(100, 70, 500, 250));

    wrapper.setMousePointer(11);
    EXPECT_EQ(window.cursor().shape(), Qt::WaitCursor);
    wrapper.setMousePointer(0);
    EXPECT_EQ(wrapper.MousePointer(), 0);
}

TEST(FormWrappers, AWindowInASubWindowIsAnMdiChildThatMoveLeavesAlone)
{
    QMainWindow main;
    main.setObjectName("frmMdi");
    auto* area = new QMdiArea(&main);
    main.setCentralWidget(area);
    main.resize(800, 600);
    auto* child = new QWidget;
    child->setObjectName("frmChild");
    QMdiSubWindow* sub = area->addSubWindow(child);
    sub->setGeometry(30, 40, 300, 200);
    main.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&main));

    CFormUpdatable wrapper(child);
    EXPECT_TRUE(wrapper.MDIChild());
    ASSERT_NE(wrapper.Root(), nullptr);
    EXPECT_EQ(wrapper.Root()->Name(), "frmMdi");
    EXPECT_FALSE(wrapper.Root()->MDIChild());
    EXPECT_EQ(QRectF(wrapper.Left(), wrapper.Top(), wrapper.Width(), wrapper.Height()), QRectF(sub->geometry()));

    const QRect before = sub->geometry();
    wrapper.Move(0, 0, 100, 100);
    EXPECT_EQ(sub->geometry(), before);
    wrapper.setWindowState(2);
    EXPECT_TRUE(sub->isMaximized());
    EXPECT_EQ(wrapper.WindowState(), 2);
}

TEST(FormWrappers, AControlIsReachedByTheNamesOfItsMembers)
{
    QWidget form;
    auto* button = new QPushButton("Apply", &form);
    button->setObjectName("cmdApply");
    auto* group = new QGroupBox("Options", &form);
    auto* member = new QFrame(&form);
    member->setObjectName("picField_3");
    member->setProperty("buttons", 2);

    CControlWrapper wrapped(button);
    wrapped.setCaption("Save");
    EXPECT_EQ(button->text(), "Save");
    EXPECT_FALSE(wrapped.Buttons().isValid()) << "a button has no buttons";
    EXPECT_FALSE(wrapped.Index().isValid());
    EXPECT_EQ(CControlWrapper(group).Caption(), "Options");

    CControlWrapper frame(member);
    EXPECT_EQ(frame.Index().toInt(), 3);
    EXPECT_EQ(frame.Buttons().toInt(), 2);
    frame.setCaption("none");
    EXPECT_FALSE(member->property("text").isValid()) << "a member the control lacks is not made up";
    form.show();
    frame.setVisible(false);
    EXPECT_FALSE(member->isVisible());
}

} // namespace
