#include "Faults.h"

#include <algorithm>

namespace sandbox {

const Fault* FaultPlan::countWrite(DriverFile file, std::optional<std::int64_t> elapsedNs)
{
    const auto met = std::find_if(mFaults.begin(), mFaults.end(), [&](const Fault& fault) {
        return fault.mFile == file && isDue(fault, elapsedNs);
    });
    ++mWrites[static_cast<std::size_t>(file)];
    if (met == mFaults.end()) {
        return nullptr;
    }
    --met->mLeft;
    met->mWasMet = true;
    return &*met;
}

bool FaultPlan::isVanished(DriverFile file, std::optional<std::int64_t> elapsedNs) const
{
    return std::any_of(mFaults.begin(), mFaults.end(), [&](const Fault& fault) {
        return fault.mKind == FaultKind::Vanish && fault.mFile == file && isDue(fault, elapsedNs);
    });
}

std::vector<std::string> FaultPlan::unmet() const
{
    std::vector<std::string> texts;
    for (const Fault& fault : mFaults) {
        if (!fault.mWasMet) {
            texts.push_back(fault.mText);
        }
    }
    return texts;
}

/** Whether the next write to the fault's file triggers it. */
bool FaultPlan::isDue(const Fault& fault, std::optional<std::int64_t> elapsedNs) const
{
    if (fault.mLeft == 0) {
        return false;
    }
    if (fault.mWrite > 0) {
        return mWrites[static_cast<std::size_t>(fault.mFile)] + 1 >= fault.mWrite;
    }
    return elapsedNs && *elapsedNs >= fault.mDelayNs;
}

} // namespace sandbox
