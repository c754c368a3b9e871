#pragma once

#include <optional>
#include <vector>

#include "measure/Measurement.h"

namespace measure {

/** An event of one voltage, or of the three together. */
struct VoltageEvent
{
    Channel mChannel;
    qint64 mBeginUtcNs;
    std::optional<qint64> mEndUtcNs;       ///< none if the signal ended first
    double mExtreme;                       ///< V
    std::optional<double> mSteadyChange{}; ///< V; of rapid changes
};

/** The quantities in the rows of one kind of event. */
struct EventRows
{
    QuantityId mExtreme;
    QuantityId mDuration;
    std::optional<QuantityId> mSteadyChange{};
};

/**
 * Outputs the events of one kind in the order of their starts, although each is known only at its
 * end.
 */
class EventQueue
{
public:
    explicit EventQueue(EventRows rows) : mRows(rows) {}

    void add(const VoltageEvent& event);

    /** Number of events of the three voltages together so far. */
    size_t systemCount() const { return mSystemCount; }

    /** Outputs the events that started up to this time. */
    void outputUpTo(qint64 utcNs, MeasurementOutput& output);

    bool isEmpty() const { return mEvents.empty(); }

private:
    void output(const VoltageEvent& event, MeasurementOutput& output) const;

    EventRows mRows;
    std::vector<VoltageEvent> mEvents;
    size_t mSystemCount = 0;
};

} // namespace measure
