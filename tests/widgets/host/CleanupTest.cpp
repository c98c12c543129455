// The clean-up of the library's windows, closing them, and the object monitor.

#include "host/LibraryForms.h"
#include "searchdata/CCommon.h"
#include "searchdata/widgets/CCleanupFormManager.h"
#include "searchdata/widgets/ObjectMonitor.h"
#include "searchdata/widgets/WidgetUiServices.h"
#include "support/WidgetTestSupport.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLoggingCategory>
#include <QPointer>
#include <QTest>

using namespace searchdata;
using namespace searchdata::test;

namespace {

/// A window of the library that notes its hiding and its end, and may call back while it goes.
class NotedForm : public QWidget {
public:
    NotedForm(QString name, QStringList& log, std::function<void()> whileGoing = {})
        : m_log(log), m_whileGoing(std::move(whileGoing))
    {
        setObjectName(std::move(name));
        RegisterLibraryForm(this);
    }
    ~NotedForm() override
    {
        m_log << "destroyed " + objectName();
        if (m_whileGoing)
            m_whileGoing();
    }

protected:
    void hideEvent(QHideEvent* event) override
    {
        m_log << "hidden " + objectName();
        if (m_whileGoing)
            m_whileGoing();
        QWidget::hideEvent(event);
    }

private:
    QStringList& m_log;
    std::function<void()> m_whileGoing;
};

class CleanupTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        // Nothing of one test stays for the next.
        CCleanupFormManager::instance().CleanupForms();
        EXPECT_TRUE(LibraryForms().isEmpty());
    }
    QStringList log;
};

TEST_F(CleanupTest, WindowsGoFromTheLastOpenedToTheFirstExceptTheOneKept)
{
    auto* first = new NotedForm("first", log);
    auto* second = new NotedForm("second", log);
    auto* third = new NotedForm("third", log);
    EXPECT_EQ(LibraryForms(), (QList<QWidget*>{first, second, third}));
    for (QWidget* form : {third, second, first})
        form->show(); // the order of opening counts, not the order on screen

    CCleanupFormManager::instance().CleanupForms(second);
    EXPECT_EQ(log, QStringList({"destroyed third", "destroyed first"}));
    EXPECT_EQ(LibraryForms(), QList<QWidget*>{second});
}

TEST_F(CleanupTest, ACleanUpCalledWhileOneRunsReturnsAtOnce)
{
    QStringList seenByNestedCall;
    auto again = [&] {
        CCleanupFormManager::instance().CleanupForms();
        seenByNestedCall = log;
    };
    new NotedForm("first", log);
    new NotedForm("second", log, again);
    new NotedForm("third", log);
    CCleanupFormManager::instance().CleanupForms();
    EXPECT_EQ(seenByNestedCall, QStringList({"destroyed third", "destroyed second"})) << "the inner call destroyed nothing";
    EXPECT_EQ(log, QStringList({"destroyed third", "destroyed second", "destroyed first"}));
}

TEST_F(CleanupTest, ClosingHidesTheShownWindowsNewestFirstAndKeepsThem)
{
    int nestedCalls = 0;
    bool firstShownAfterNestedCall = false;
    QList<QPointer<NotedForm>> forms;
    auto again = [&] {
        ++nestedCalls;
        CloseGrupruForms();
        firstShownAfterNestedCall = forms.first() && forms.first()->isVisible();
    };
    for (const char* name : {"list", "edit", "question"}) {
        forms << new NotedForm(name, log, QString(name) == "edit" ? std::function<void()>(again) : std::function<void()>());
        forms.last()->show();
    }
    auto* hidden = new NotedForm("never shown", log);
    log.clear();

    CloseGrupruForms();
    EXPECT_EQ(log, QStringList({"hidden question", "hidden edit", "hidden list"}));
    EXPECT_EQ(nestedCalls, 1);
    EXPECT_TRUE(firstShownAfterNestedCall) << "the inner call hid nothing";
    for (const auto& form : forms) {
        ASSERT_FALSE(form.isNull());
        EXPECT_FALSE(form->isVisible());
    }
    EXPECT_EQ(LibraryForms().size(), 4) << "closing is not destroying";
    EXPECT_FALSE(hidden->isVisible());
    CCleanupFormManager::instance().CleanupForms(); // while what the callbacks use still exists
}

TEST_F(CleanupTest, TheManagerIsKnownByTheProgramAndCleansUpForTheHostThatAsks)
{
    auto services = std::make_shared<WidgetUiServices>();
    QList<ICleanupFormManager*> handed;
    services->setCleanupService([&](ICleanupFormManager& manager) { handed << &manager; });
    const ServicesGuard guard(services);

    const int before = ObjectMonitor::instance().Count("CCommon");
    {
        const CCommon first;
        const CCommon second(first);
        EXPECT_EQ(ObjectMonitor::instance().Count("CCommon"), before + 2);
    }
    EXPECT_EQ(ObjectMonitor::instance().Count("CCommon"), before);
    ASSERT_EQ(handed.size(), 2);
    EXPECT_EQ(handed[0], handed[1]);
    EXPECT_EQ(handed[0]->Key(), QCoreApplication::applicationFilePath());

    new NotedForm("open at the end", log);
    handed[0]->CleanupForms();
    EXPECT_EQ(log, QStringList({"destroyed open at the end"}));
}

TEST_F(CleanupTest, TheMonitorCountsPerTypeAndLogsEachObject)
{
    static QStringList lines;
    lines.clear();
    QLoggingCategory::setFilterRules("searchdata.objects.info=true");
    const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext& context, const QString& text) {
        if (QByteArray(context.category) == "searchdata.objects")
            lines << text;
    });
    ObjectMonitor& monitor = ObjectMonitor::instance();
    const int a = 1, b = 2;
    monitor.Created("TypeA", &a);
    monitor.Created("TypeA", &b);
    monitor.Created("TypeB", &b);
    monitor.Destroyed("TypeA", &a);
    qInstallMessageHandler(previous);
    QLoggingCategory::setFilterRules({});

    EXPECT_EQ(monitor.Count("TypeA"), 1);
    EXPECT_EQ(monitor.Count("TypeB"), 1);
    EXPECT_EQ(monitor.Count("TypeNeverSeen"), 0);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[3], "destroyed " + ObjectMonitor::ObjectLine("TypeA", &a) + " 1");
    EXPECT_EQ(ObjectMonitor::ObjectLine("TypeA", &a).split('\t').value(1).toULongLong(nullptr, 16), quintptr(&a));

    // A library window counts under its class while it lives.
    const int forms = monitor.Count("QWidget");
    auto* form = new QWidget;
    RegisterLibraryForm(form);
    EXPECT_EQ(monitor.Count("QWidget"), forms + 1);
    delete form;
    EXPECT_EQ(monitor.Count("QWidget"), forms);
}

} // namespace
