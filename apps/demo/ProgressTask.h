#pragma once

#include <functional>

namespace searchdata {

class IFormInfo;
class IProgress;

namespace demo {

/// Runs `work` under the progress display of the installed UI services, over `owner` (may be null).
void RunWithProgress(const std::function<void(IProgress&)>& work, const IFormInfo* owner = nullptr);

} // namespace demo
} // namespace searchdata
