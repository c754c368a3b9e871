#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "generate/Timeline.h"
#include "states/StatePlan.h"

namespace states {

/** The lines of the states, and the frequency of each period. */
class StateLayout
{
public:
    /**
     * @param isAligned each state is rounded to whole periods
     * Throws CaseError if the states are too long in total or cannot be aligned.
     */
    StateLayout(const StatePlan& plan, bool isAligned);

    /** The first line of a state; for the number of states, the line after the last one. */
    qint64 beginOf(size_t state) const { return mBegins[state]; }

    const generate::Timeline& timeline() const { return mTimeline; }

    /** Changes that are later than requested, with their delays. */
    const std::vector<std::string>& remarks() const { return mRemarks; }

private:
    explicit StateLayout(struct LaidOut laidOut);

    std::vector<qint64> mBegins;
    std::vector<std::string> mRemarks;
    generate::Timeline mTimeline;
};

} // namespace states
