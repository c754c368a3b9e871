#include "states/StateLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "base/CaseError.h"

namespace states {

struct LaidOut
{
    std::vector<qint64> mBegins;
    std::vector<float> mFrequencies; ///< of the periods
    std::vector<std::string> mRemarks;
};

namespace {
constexpr qint64 kMaxLines = std::numeric_limits<qint32>::max();

/** A frequency that goes to its target and stays there. */
struct Ramp
{
    double mBegin; ///< seconds
    double mFrom;
    double mTo;
    double mRate; ///< 0: a step

    double at(double seconds) const
    {
        const double hertz = mFrom + mRate * (seconds - mBegin);
        if (mRate > 0.0) {
            return std::min(hertz, mTo);
        }
        return mRate < 0.0 ? std::max(hertz, mTo) : mTo;
    }
};

/** Goes through the states, each step up to the end of a period. */
class Walk
{
public:
    Walk(const StatePlan& plan, bool isAligned)
        : mPlan(plan), mIsAligned(isAligned), mRamp{0.0, plan.mHertz, plan.mHertz, 0.0}
    {
    }

    LaidOut run();

private:
    void waitFor(const PointOnWave& at, const State& last);
    void begin(const State& state);
    void pass(const State& state);
    void expectLines(const State& state) const;
    void goTo(qint64 line);
    double hertz() const;

    const StatePlan& mPlan;
    bool mIsAligned;
    Ramp mRamp;
    qint64 mLine = 0;
    double mSeconds = 0.0;
    LaidOut mResult;
};

LaidOut Walk::run()
{
    for (size_t i = 0; i < mPlan.mStates.size(); ++i) {
        const State& state = mPlan.mStates[i];
        if (state.mAt) {
            if (mIsAligned) {
                throw base::CaseError(mPlan.messagePrefix(state.mLocation) + "state '" +
                                      state.mName +
                                      "' has 'at', which cannot be combined with --align");
            }
            waitFor(*state.mAt, mPlan.mStates[i - 1]);
        }
        mResult.mBegins.push_back(mLine);
        begin(state);
        pass(state);
    }
    mResult.mBegins.push_back(mLine);
    if (mLine % kSamplesPerPeriod != 0) {
        mResult.mRemarks.push_back(fmt::format(
            "the file ends {} lines into a period, so it has a jump when it is repeated; --align "
            "rounds the states to whole periods",
            mLine % kSamplesPerPeriod));
    }
    return std::move(mResult);
}

/** Extends the state before until its voltage reaches the angle. */
void Walk::waitFor(const PointOnWave& at, const State& last)
{
    const double angle = double(mLine % kSamplesPerPeriod) + last.mChannels[at.mChannel].mDegrees;
    const double missing = std::fmod(at.mDegrees - angle, double(kSamplesPerPeriod));
    constexpr double kSame = 1e-9; // of a line
    goTo(mLine +
         qint64(std::ceil((missing < 0.0 ? missing + kSamplesPerPeriod : missing) - kSame)));
}

void Walk::begin(const State& state)
{
    if (!state.mFrequency) {
        return;
    }
    const FrequencyTarget& target = *state.mFrequency;
    const double from = mRamp.at(mSeconds);
    if ((target.mHertz - from) * target.mRate < 0.0) {
        throw base::CaseError(
            fmt::format("{}frequency: from {:g} Hz, a rate of {:g} Hz/s never reaches {:g} Hz",
                        mPlan.messagePrefix(target.mLocation), from, target.mRate, target.mHertz));
    }
    mRamp = {mSeconds, from, target.mHertz, target.mRate};
    const qint64 rest = (kSamplesPerPeriod - mLine % kSamplesPerPeriod) % kSamplesPerPeriod;
    if (rest > 0) {
        mResult.mRemarks.push_back(fmt::format(
            "state '{}' begins {} lines into a period: its frequency begins {} lines ({:.3f} ms) "
            "later, with the next period; --align rounds the states to whole periods",
            state.mName, mLine % kSamplesPerPeriod, rest,
            double(rest) / (double(mResult.mFrequencies.back()) * kSamplesPerPeriod) * 1e3));
    }
}

void Walk::expectLines(const State& state) const
{
    const double periods = state.mPeriods ? *state.mPeriods : *state.mSeconds * hertz();
    if (std::round(periods * kSamplesPerPeriod) < 1.0) {
        throw base::CaseError(fmt::format("{}state '{}' lasts {:g} lines: expected one or more",
                                          mPlan.messagePrefix(state.mDuration), state.mName,
                                          periods * kSamplesPerPeriod));
    }
}

void Walk::pass(const State& state)
{
    expectLines(state);
    if (state.mPeriods) {
        const double lines = mIsAligned
                                 ? std::max(1.0, std::round(*state.mPeriods)) * kSamplesPerPeriod
                                 : std::round(*state.mPeriods * kSamplesPerPeriod);
        goTo(mLine + qint64(lines));
        return;
    }
    const qint64 first = mLine;
    const double end = mSeconds + *state.mSeconds;
    for (;;) {
        const qint64 rest = kSamplesPerPeriod - mLine % kSamplesPerPeriod;
        const auto lines =
            qint64(std::llround(std::min((end - mSeconds) * hertz(), 1.0) * kSamplesPerPeriod));
        if (mIsAligned) {
            const bool isEmpty = mLine == first; // a state has at least one period
            if (lines < kSamplesPerPeriod / 2 && !isEmpty) {
                return;
            }
            goTo(mLine + kSamplesPerPeriod);
        } else {
            goTo(mLine + std::clamp<qint64>(lines, 0, rest));
            if (lines < rest) {
                return;
            }
        }
    }
}

/** The frequency of the current period. A period that begins has the frequency of its middle. */
double Walk::hertz() const
{
    if (mLine % kSamplesPerPeriod != 0) {
        return double(mResult.mFrequencies.back());
    }
    return double(float(mRamp.at(mSeconds + 0.5 / mRamp.at(mSeconds))));
}

void Walk::goTo(qint64 line)
{
    if (line > kMaxLines) {
        throw base::CaseError(fmt::format("{}: the states have more than {} lines in total",
                                          mPlan.mFileName, kMaxLines));
    }
    while (mLine < line) {
        const double frequency = hertz();
        if (mLine % kSamplesPerPeriod == 0) {
            mResult.mFrequencies.push_back(float(frequency));
        }
        const qint64 step = std::min(line - mLine, kSamplesPerPeriod - mLine % kSamplesPerPeriod);
        mLine += step;
        mSeconds += double(step) / (frequency * kSamplesPerPeriod);
    }
}
} // namespace

StateLayout::StateLayout(const StatePlan& plan, bool isAligned)
    : StateLayout(Walk(plan, isAligned).run())
{
}

StateLayout::StateLayout(LaidOut laidOut)
    : mBegins(std::move(laidOut.mBegins)),
      mRemarks(std::move(laidOut.mRemarks)),
      mTimeline(laidOut.mFrequencies, mBegins.back())
{
}

} // namespace states
