/** Plans of a night: the cases of an accepted plan can be named, counted and selected. */
#include <set>

#include "FuzzProcess.h"
#include "plan/Plan.h"
#include "plan/PlanValues.h"

namespace {
void expectGood(const plan::Plan& plan)
{
    require(!plan.mCases.empty(), "there is something to play");
    require(plan.playCount() >= int(plan.mCases.size()), "each case is played");
    require(plan.mGapNs >= 0, "the gap is a time");
    std::set<std::string> names;
    for (const plan::Case& it : plan.mCases) {
        require(plan::isName(it.mName), "a name can be that of a file");
        require(names.insert(it.mName).second, "a name belongs to one case");
        require(!it.mSource.mText.empty(), "a source can be told from others");
        require(it.mSeconds.value_or(1.0) > 0.0, "a play lasts");
    }
    for (const auto& [group, members] : plan.mGroups) {
        require(plan::selected(plan, {{}, {group}}).mCases.size() == members.size(),
                "a group is cases of the plan");
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        expectGood(plan::parsePlan(text, "night.toml"));
    } catch (const plan::PlanError& error) {
        require(*error.what() != '\0', "a mistake is named");
    }
    return 0;
}
