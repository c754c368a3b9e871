#include "explain/Findings.h"

#include <fmt/format.h>

#include <algorithm>

#include "waveform/RecordStamp.h"

namespace explain {

const FindingName& nameOf(FindingKind kind)
{
    static constexpr FindingName kNames[] = {
        {"differs", "samples that differ from their file"},
        {"missing", "samples missing"},
        {"twice", "repeated samples"},
        {"foreign", "samples of no file"},
        {"timeJump", "jumps of the time stamps"},
        {"elsewhere", "jumps to other samples"},
        {"notFollowed", "commands not followed"},
        {"notGiven", "changes without a command"},
        {"incomplete", "bytes after the last record"},
        {"otherEvents", "samples more or less than in the events", true},
        {"notSent", "commands not sent", true},
        {"refused", "samples refused at the end", true},
        {"died", "programs that died", true},
        {"silent", "ends of the run without a block", true},
    };
    return kNames[static_cast<size_t>(kind)];
}

bool FindingCounts::add(const Finding& finding)
{
    const auto kind = static_cast<size_t>(finding.mKind);
    mCounts[kind] += finding.mCount;
    return ++mListed[kind] <= mMaxListed;
}

bool FindingCounts::isClean() const
{
    return std::all_of(mListed.begin(), mListed.end(), [](size_t it) { return it == 0; });
}

std::string stampText(qint64 stampNs)
{
    return fmt::format("{}.{:09}", stampNs / waveform::kSecondInNs,
                       stampNs % waveform::kSecondInNs);
}

} // namespace explain
