#include "Run.h"

#include <algorithm>

namespace lux::detail {
namespace {

constexpr std::int64_t reports = 256; ///< of progress in a whole run

} // namespace

void leaveDecode(RunControl & /*control*/)
{
    throw WorkerEnd();
}

void passedOn(RunControl &control, std::int64_t position)
{
    auto &run = static_cast<Run &>(control);
    if (run.leave.load(std::memory_order_relaxed) != 0)
        throw WorkerEnd();
    if (position < run.nextReport || run.progress == nullptr)
        return;
    run.nextReport = position + std::max<std::int64_t>(run.sampleCount / reports, 1);
    run.progress->SetProgress(double(position) / double(std::max<std::int64_t>(run.sampleCount, 1)));
}

} // namespace lux::detail
