/** Files of states: an accepted file has lines, and each value fits its channel. */
#include <algorithm>
#include <cmath>
#include <limits>

#include "FuzzProcess.h"
#include "base/CaseError.h"
#include "states/StateFile.h"
#include "states/StateSignal.h"

namespace {
constexpr qint64 kMaxLines = 2000; // a file may have millions

void play(const states::StatePlan& plan, bool isAligned)
{
    const states::StateLayout layout(plan, isAligned);
    const qint64 lineCount = layout.timeline().lineCount();
    require(lineCount == layout.beginOf(plan.mStates.size()), "the states are all of the lines");
    require(lineCount >= qint64(plan.mStates.size()), "a state has a line at least");
    states::StateSignal signal(plan, layout);
    for (qint64 line = 0; line < std::min(lineCount, kMaxLines); ++line) {
        for (const double value : signal.read(line)) {
            require(std::abs(value) <= double(std::numeric_limits<qint32>::max()) + 1.0,
                    "a value has 32 bits");
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const states::StatePlan plan = states::parseStates(text, "states.toml");
        play(plan, false);
        play(plan, true);
    } catch (const base::CaseError&) {
        return 0;
    }
    return 0;
}
