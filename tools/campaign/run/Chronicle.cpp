#include "run/Chronicle.h"

#include "base/CaseError.h"

namespace run {

void Chronicle::write(journal::Step step)
{
    if (!mProblem.empty()) {
        return;
    }
    try {
        mSink.append({mNow.mWallNs, std::move(step)});
    } catch (const base::CaseError& error) {
        mProblem = error.what();
    }
}

void Chronicle::beginPlay(int play, quint64 findings)
{
    write(journal::PlayBegin{play});
    mPlay = play;
    forgetFindings(findings);
}

bool Chronicle::lists(const std::string& kind) const
{
    const auto listed = mListed.find(kind);
    return listed == mListed.end() || listed->second < kMaxListed;
}

void Chronicle::find(journal::FoundWrong found)
{
    ++mFindings;
    ++mAllFindings;
    if (!lists(found.mKind)) {
        return;
    }
    ++mListed[found.mKind];
    found.mPlay = mPlay;
    write(std::move(found));
}

journal::PlayVerdict Chronicle::endPlay(journal::PlayEnd end)
{
    end.mPlay = mPlay.value_or(0);
    end.mFindings = mFindings;
    if (mFindings > 0) {
        end.mVerdict = journal::PlayVerdict::Failed;
    }
    write(end);
    mPlay.reset();
    forgetFindings(0);
    return end.mVerdict;
}

void Chronicle::forgetFindings(quint64 count)
{
    mFindings = count;
    mListed.clear();
}

} // namespace run
