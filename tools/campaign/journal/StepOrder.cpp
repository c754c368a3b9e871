#include "journal/StepOrder.h"

#include <fmt/format.h>

#include "base/CaseError.h"

namespace journal {

void StepOrder::add(const Step& step)
{
    if (mIsOver && !std::holds_alternative<Resumed>(step)) {
        throw base::CaseError("step: expected no step after the end of the night");
    }
    std::visit([this](const auto& it) { take(it); }, step);
}

void StepOrder::take(const NightBegin& step)
{
    mIsObserved = step.mIsObserved;
    mIsEndless = step.mUntilFailure;
    for (const int index : step.mOrder) {
        if (static_cast<size_t>(index) >= step.mCases.size()) {
            throw base::CaseError(fmt::format("order: expected indices of the {} cases, found {}",
                                              step.mCases.size(), index));
        }
        mSamples.push_back(step.mCases[static_cast<size_t>(index)].mSamples);
    }
}

void StepOrder::take(const Resumed& /*step*/)
{
    mIsPlaying = false;
    mIsOver = false;
}

void StepOrder::take(const ProgramStarted& step)
{
    if (step.mRun != ++mRun) {
        throw base::CaseError(fmt::format("run: expected {}, found {}", mRun, step.mRun));
    }
}

void StepOrder::take(const PlayBegin& step)
{
    const bool isInPlan =
        !mSamples.empty() && (mIsEndless || static_cast<size_t>(step.mPlay) < mSamples.size());
    if (step.mPlay != mNext || mIsPlaying || !isInPlan) {
        throw base::CaseError(
            fmt::format("play: {} begins, but it is not the next play of the plan", step.mPlay));
    }
    mIsPlaying = true;
}

void StepOrder::take(const CommandSent& step)
{
    expectCurrent(step.mPlay);
}

void StepOrder::take(const Finding& step)
{
    if (step.mPlay) {
        expectCurrent(*step.mPlay);
        mHasFindings = true;
    }
}

void StepOrder::take(const PlayEnd& step)
{
    expectCurrent(step.mPlay);
    expectVerdict(step);
    ++mNext;
    mIsPlaying = false;
    mHasFindings = false;
}

void StepOrder::take(const ProgramEnded& step)
{
    if (step.mRun != mRun) {
        throw base::CaseError(fmt::format("run: expected {}, found {}", mRun, step.mRun));
    }
}

void StepOrder::take(const NightEnd& step)
{
    const bool isDone = step.mReason == NightEnd::Reason::Done;
    if (isDone && static_cast<size_t>(mNext) < mSamples.size()) {
        throw base::CaseError("reason: done, but not every play has ended");
    }
    mIsOver = true;
}

void StepOrder::expectCurrent(int play) const
{
    if (!mIsPlaying || play != mNext) {
        throw base::CaseError(fmt::format("play: {} has not begun", play));
    }
}

void StepOrder::expectVerdict(const PlayEnd& step) const
{
    if (step.mVerdict == PlayVerdict::Failed) {
        return;
    }
    if (mHasFindings || step.mFindings > 0) {
        throw base::CaseError(
            fmt::format("verdict: {}, but the play has findings", nameOf(step.mVerdict)));
    }
    const bool isObserved = step.mVerdict == PlayVerdict::Passed;
    if (isObserved != mIsObserved) {
        throw base::CaseError(fmt::format("verdict: {}, but the night is {}observed",
                                          nameOf(step.mVerdict), mIsObserved ? "" : "not "));
    }
    const quint64 wanted = mSamples[static_cast<size_t>(mNext) % mSamples.size()];
    if (isObserved && step.mSamples != wanted) {
        throw base::CaseError(
            fmt::format("samples: {} of {}, but the play passed", step.mSamples, wanted));
    }
}

} // namespace journal
