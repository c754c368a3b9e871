#pragma once

#include <vector>

#include "generate/LineSource.h"
#include "states/StateLayout.h"
#include "states/StatePlan.h"

namespace states {

/**
 * The lines of the states of a plan. The phase of a channel advances by one degree per line at any
 * frequency, so it is continuous unless a state sets an angle.
 */
class StateSignal : public generate::LineSource
{
public:
    /** Borrows both. */
    StateSignal(const StatePlan& plan, const StateLayout& layout);

    const generate::Timeline& timeline() const override { return mLayout.timeline(); }
    generate::LineValues read(qint64 line) override;

    /** Counts at the start of its state; 0 if the channel has no offset there. */
    double offsetOf(size_t state, size_t channel) const { return mOffsets[state][channel]; }

private:
    struct Flux
    {
        std::array<double, generate::kPhaseCount> mVoltSeconds;
    };

    double secondsSince(size_t state, qint64 line) const;
    double amplitudeOf(const State& state, size_t channel, double swing) const;
    double valueAt(size_t state, size_t channel, qint64 line) const;
    double waveAt(size_t state, size_t channel, qint64 line) const;
    double offsetAt(size_t state, size_t channel, qint64 line) const;
    double inrushAt(size_t state, size_t channel, qint64 line) const;
    void saturate(const State& state, qint64 line, generate::LineValues& values);

    const StatePlan& mPlan;
    const StateLayout& mLayout;
    std::vector<generate::LineValues> mOffsets; ///< by the state that names them
    size_t mState = 0;                          ///< in which the line is that is read
    Flux mFlux{};                               ///< of the current transformers
};

} // namespace states
