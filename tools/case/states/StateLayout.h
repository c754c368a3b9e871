#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "generate/Timeline.h"
#include "states/StatePlan.h"

namespace states {

/** On which lines the states are, and the frequency of each period. */
class StateLayout
{
public:
    /**
     * @param isAligned each state is rounded to whole periods
     * Throws CaseError for states that are too long together or cannot be aligned.
     */
    StateLayout(const StatePlan& plan, bool isAligned);

    /** The first line of a state; of the number of states: the line after the last one. */
    qint64 beginOf(size_t state) const { return mBegins[state]; }

    const generate::Timeline& timeline() const { return mTimeline; }

    /** What does not happen at the line asked for, and how late it is. */
    const std::vector<std::string>& remarks() const { return mRemarks; }

private:
    explicit StateLayout(struct LaidOut laidOut);

    std::vector<qint64> mBegins;
    std::vector<std::string> mRemarks;
    generate::Timeline mTimeline;
};

} // namespace states
