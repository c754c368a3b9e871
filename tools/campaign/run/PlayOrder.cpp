#include "run/PlayOrder.h"

#include <algorithm>

namespace run {

int PlayOrder::repetitionOf(int play) const
{
    const std::vector<int>& order = mNight.mOrder;
    const int index = static_cast<int>(caseIndexOf(play));
    const auto end = order.begin() + play % playsPerRound() + 1;
    const auto inRounds = std::count(order.begin(), order.end(), index) * (play / playsPerRound());
    return static_cast<int>(inRounds + std::count(order.begin(), end, index));
}

namespace {
struct ResumeReader
{
    ResumePoint* mPoint;

    void operator()(const journal::ProgramStarted& step) const { mPoint->mRuns = step.mRun; }

    void operator()(const journal::PlayEnd& step) const
    {
        mPoint->mPlay = step.mPlay + 1;
        mPoint->mFindings = 0;
        mPoint->mHasFailed = mPoint->mHasFailed || step.mVerdict == journal::PlayVerdict::Failed;
    }

    void operator()(const journal::Finding& step) const
    {
        ++mPoint->mAllFindings;
        mPoint->mFindings += step.mPlay == mPoint->mPlay ? 1U : 0U;
    }

    void operator()(const journal::NightEnd& step) const
    {
        mPoint->mIsComplete = step.mReason == journal::NightEnd::Reason::Done ||
                              step.mReason == journal::NightEnd::Reason::FirstFailure;
    }

    template <typename Other>
    void operator()(const Other& /*step*/) const
    {
    }
};
} // namespace

ResumePoint resumePointOf(const std::vector<journal::Entry>& entries)
{
    ResumePoint point;
    for (const journal::Entry& entry : entries) {
        std::visit(ResumeReader{&point}, entry.mStep);
    }
    return point;
}

} // namespace run
