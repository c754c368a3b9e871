#include "run/PlayJournal.h"

#include "base/CaseError.h"

namespace run {

void PlayJournal::write(journal::Step step)
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

void PlayJournal::beginPlay(int play, quint64 findings)
{
    write(journal::PlayBegin{play});
    mPlay = play;
    forgetFindings(findings);
}

bool PlayJournal::lists(const std::string& kind) const
{
    const auto listed = mListed.find(kind);
    return listed == mListed.end() || listed->second < kMaxListed;
}

void PlayJournal::addFinding(journal::Finding finding)
{
    ++mFindings;
    ++mAllFindings;
    if (!lists(finding.mKind)) {
        return;
    }
    ++mListed[finding.mKind];
    finding.mPlay = mPlay;
    write(std::move(finding));
}

journal::PlayVerdict PlayJournal::endPlay(journal::PlayEnd end)
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

void PlayJournal::forgetFindings(quint64 count)
{
    mFindings = count;
    mListed.clear();
}

} // namespace run
