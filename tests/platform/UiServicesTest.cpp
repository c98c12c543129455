#include "searchdata/LockedMessage.h"
#include "searchdata/Resources.h"
#include "searchdata/UiServices.h"

#include <gtest/gtest.h>
#include <thread>

using namespace searchdata;

namespace {

class CountingHandler : public IProgressHandler {
public:
    std::any IProgressHandler_ProcessRequest(int request, IProgress& progress, const std::any& arguments) override
    {
        progress.SetStatus("working");
        return request * std::any_cast<int>(arguments);
    }
};

class RecordingProgress : public IProgress {
public:
    void SetStatus(const QString& text) override { lines << text; }
    QStringList lines;
};

TEST(HeadlessUiServices, RecordsRequestsAndGivesTheCallersDefault)
{
    HeadlessUiServices ui;
    ui.ShowMessage(MessageKind::Warning, "Title", "Text");
    EXPECT_EQ(ui.AskYesNoCancel("Q", "Go on?", Answer::No), Answer::No);
    EXPECT_EQ(ui.AskYesNoCancel("Q", "Go on?", Answer::Cancel), Answer::Cancel);
    EXPECT_EQ(ui.AskOkCancel("Q", "Drop it?", Answer::Ok), Answer::Ok);
    ui.Beep();
    EXPECT_EQ(ui.requests(), QStringList({"message warning: Title: Text", "question: Q: Go on?", "question: Q: Go on?",
                                          "question: Q: Drop it?", "beep"}));
}

TEST(HeadlessUiServices, BoundsTheWaitForALock)
{
    HeadlessUiServices ui(std::chrono::milliseconds(300));
    EXPECT_TRUE(ui.KeepWaitingForLock(std::chrono::milliseconds(0)));
    EXPECT_TRUE(ui.KeepWaitingForLock(std::chrono::milliseconds(299)));
    EXPECT_FALSE(ui.KeepWaitingForLock(std::chrono::milliseconds(300)));
}

TEST(HeadlessUiServices, RunsProgressRequestsOnTheGivenProgress)
{
    HeadlessUiServices ui;
    auto progress = std::make_shared<RecordingProgress>();
    ui.setProgress(progress);
    CountingHandler handler;
    const std::any result = ui.RunProgress(handler, 3, 5, nullptr);
    EXPECT_EQ(std::any_cast<int>(result), 15);
    EXPECT_EQ(progress->lines, QStringList{"working"});
}

TEST(UiServices, InstalledServicesArePerThread)
{
    auto mine = std::make_shared<HeadlessUiServices>();
    UiServices::install(mine);
    EXPECT_EQ(&UiServices::current(), mine.get());
    UiServices* other = nullptr;
    std::thread([&] { other = &UiServices::current(); }).join();
    EXPECT_NE(other, mine.get());
    UiServices::install(nullptr);
    EXPECT_NE(&UiServices::current(), mine.get());
}

TEST(LockedMessage, BlankTextsTakeTheStandardOnesAndOthersAreTrimmed)
{
    const CDebugLockedMessage blank = MakeLockedMessage("  ", "");
    EXPECT_EQ(blank.Message(), GetResourceText(9129));
    EXPECT_EQ(blank.Title(), GetResourceText(9128));
    EXPECT_FALSE(blank.Message().isEmpty());
    const CDebugLockedMessage own = MakeLockedMessage("  saving Customer ", " Definitions ");
    EXPECT_EQ(own.Message(), "saving Customer");
    EXPECT_EQ(own.Title(), "Definitions");
}

} // namespace
