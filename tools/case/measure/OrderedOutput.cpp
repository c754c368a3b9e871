#include "measure/OrderedOutput.h"

#include <algorithm>
#include <limits>
#include <tuple>

#include "waveform/RecordStamp.h"

namespace measure {

namespace {
/** Max time between the outputs of different meters. */
constexpr qint64 kHoldNs = 3 * waveform::kSecondInNs;

bool isBefore(const Measurement& a, const Measurement& b)
{
    const auto key = [](const Measurement& value) {
        return std::tuple(value.mUtcNs, value.mKind.mId, value.mKind.mInterval, value.mChannel,
                          value.mKind.mOrder);
    };
    return key(a) < key(b);
}
} // namespace

void OrderedOutput::add(const Measurement& value)
{
    mFirstUtcNs = mHeld.empty() ? value.mUtcNs : std::min(mFirstUtcNs, value.mUtcNs);
    mLastUtcNs = mHeld.empty() ? value.mUtcNs : std::max(mLastUtcNs, value.mUtcNs);
    mHeld.push_back(value);
    if (mLastUtcNs - mFirstUtcNs > 2 * kHoldNs) {
        passUpTo(mLastUtcNs - kHoldNs);
    }
}

void OrderedOutput::flush()
{
    passUpTo(std::numeric_limits<qint64>::max());
}

void OrderedOutput::passUpTo(qint64 utcNs)
{
    std::stable_sort(mHeld.begin(), mHeld.end(), isBefore);
    const auto end = std::find_if(mHeld.begin(), mHeld.end(),
                                  [=](const auto& value) { return value.mUtcNs > utcNs; });
    std::for_each(mHeld.begin(), end, [this](const auto& value) { mOutput.add(value); });
    mHeld.erase(mHeld.begin(), end);
    mFirstUtcNs = mHeld.empty() ? 0 : mHeld.front().mUtcNs;
}

} // namespace measure
