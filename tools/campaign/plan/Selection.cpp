#include <fmt/format.h>

#include <algorithm>

#include "base/NearestName.h"
#include "plan/Mistakes.h"
#include "plan/Plan.h"

namespace plan {

namespace {
std::string unknownName(const std::string& what, const std::string& name,
                        const std::vector<std::string>& known)
{
    const std::string problem = fmt::format("{}: '{}': the plan has no such ", what, name);
    const std::string kind = what == "--only" ? "case" : "group";
    return problem + kind +
           (known.empty() ? std::string("; it has none")
                          : "; the nearest is " + base::nearestNames(name, known, 1).front());
}

std::vector<std::string> namesOf(const std::vector<Case>& cases)
{
    std::vector<std::string> names;
    names.reserve(cases.size());
    for (const Case& it : cases) {
        names.push_back(it.mName);
    }
    return names;
}

/** The names of all selected cases. */
std::vector<std::string> wantedNames(const Plan& plan, const Selection& selection)
{
    Mistakes mistakes;
    std::vector<std::string> wanted = selection.mCases;
    const std::vector<std::string> known = namesOf(plan.mCases);
    for (const std::string& name : selection.mCases) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            mistakes.add(unknownName("--only", name, known));
        }
    }
    std::vector<std::string> groups;
    for (const auto& [group, members] : plan.mGroups) {
        groups.push_back(group);
    }
    for (const std::string& name : selection.mGroups) {
        const auto group = plan.mGroups.find(name);
        if (group == plan.mGroups.end()) {
            mistakes.add(unknownName("--group", name, groups));
            continue;
        }
        wanted.insert(wanted.end(), group->second.begin(), group->second.end());
    }
    mistakes.throwIfAny();
    return wanted;
}
} // namespace

Plan selected(Plan plan, const Selection& selection)
{
    if (selection.mCases.empty() && selection.mGroups.empty()) {
        return plan;
    }
    const std::vector<std::string> wanted = wantedNames(plan, selection);
    std::vector<Case>& cases = plan.mCases;
    cases.erase(std::remove_if(cases.begin(), cases.end(),
                               [&wanted](const Case& it) {
                                   return std::find(wanted.begin(), wanted.end(), it.mName) ==
                                          wanted.end();
                               }),
                cases.end());
    return plan;
}

} // namespace plan
