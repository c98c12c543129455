#include "ProgressTask.h"

#include "searchdata/Progress.h"
#include "searchdata/UiServices.h"

namespace searchdata::demo {

namespace {

/// One piece of work as the progress runner drives it.
class Task : public IProgressHandler {
public:
    explicit Task(const std::function<void(IProgress&)>& work) : m_work(work) {}
    std::any IProgressHandler_ProcessRequest(int, IProgress& progress, const std::any&) override
    {
        m_work(progress);
        return {};
    }

private:
    const std::function<void(IProgress&)>& m_work;
};

} // namespace

void RunWithProgress(const std::function<void(IProgress&)>& work, const IFormInfo* owner)
{
    Task task(work);
    UiServices::current().RunProgress(task, 1, {}, owner);
}

} // namespace searchdata::demo
