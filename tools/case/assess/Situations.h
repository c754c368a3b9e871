#pragma once

#include <vector>

#include "assess/Limits.h"
#include "assess/ValueTable.h"

namespace assess {

/** Events, steps and states that limits depend on, found in the expected values alone. */
class Situations
{
public:
    explicit Situations(const ValueTable& expected);

    /** Whether a step or an event overlaps that time. */
    bool overlapsEvent(qint64 beginNs, qint64 endNs) const;

    /** Whether a step, or the start or end of an event, is within that distance. */
    bool isNearEdge(qint64 utcNs, qint64 distanceNs) const;

    /** Steady if no phasors are expected. */
    SignalState stateAt(qint64 utcNs) const;

private:
    struct Interval
    {
        qint64 mBeginNs;
        qint64 mEndNs;
    };
    struct StateSpan
    {
        qint64 mBeginNs;
        SignalState mState;
    };

    void addEvents(const ValueTable& expected);
    void addSteps(const ValueTable& expected);
    void join();
    void findStates(const ValueTable& expected);
    Interval windowAround(qint64 utcNs) const;

    std::vector<Interval> mIntervals; ///< apart, in order
    std::vector<Interval> mSteps;     ///< in order; those of several series may overlap
    std::vector<qint64> mEdges;       ///< in order
    std::vector<StateSpan> mStates;   ///< each lasts until the next begins
};

} // namespace assess
