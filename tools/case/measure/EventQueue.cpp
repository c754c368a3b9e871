#include "measure/EventQueue.h"

#include <algorithm>
#include <tuple>

#include "base/Numbers.h"

namespace measure {

void EventQueue::add(const VoltageEvent& event)
{
    mEvents.push_back(event);
    mSystemCount += event.mChannel == Channel::U ? 1 : 0;
}

void EventQueue::outputUpTo(qint64 utcNs, MeasurementOutput& output)
{
    std::stable_sort(mEvents.begin(), mEvents.end(), [](const auto& a, const auto& b) {
        return std::tie(a.mBeginUtcNs, a.mChannel) < std::tie(b.mBeginUtcNs, b.mChannel);
    });
    const auto end = std::find_if(mEvents.begin(), mEvents.end(),
                                  [=](const auto& event) { return event.mBeginUtcNs > utcNs; });
    std::for_each(mEvents.begin(), end,
                  [&](const VoltageEvent& event) { this->output(event, output); });
    mEvents.erase(mEvents.begin(), end);
}

void EventQueue::output(const VoltageEvent& event, MeasurementOutput& output) const
{
    const auto put = [&](QuantityId id, double value) {
        output.add({event.mBeginUtcNs, value, {id}, event.mChannel});
    };
    put(mRows.mExtreme, event.mExtreme);
    if (mRows.mSteadyChange && event.mSteadyChange) {
        put(*mRows.mSteadyChange, *event.mSteadyChange);
    }
    if (event.mEndUtcNs) {
        const auto durationNs = static_cast<double>(*event.mEndUtcNs - event.mBeginUtcNs);
        put(mRows.mDuration, durationNs * base::kSecondsPerNanosecond);
    }
}

} // namespace measure
