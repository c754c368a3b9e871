#include "importing/ChannelAssignments.h"

#include <fmt/format.h>

#include "base/Numbers.h"
#include "base/Text.h"

namespace importing {

namespace {
bool readTerm(std::string_view text, Assignment& assignment)
{
    const auto parts = base::splitText(text, '*');
    AssignedTerm term{std::string(base::trimmed(parts[0])), 1.0};
    const bool isGood =
        parts.size() == 1 || (parts.size() == 2 && base::parseNumber(parts[1], &term.mFactor));
    if (!isGood || term.mSource.empty()) {
        return false;
    }
    assignment.mTerms.push_back(std::move(term));
    return true;
}

bool readAssignment(std::string_view text, Assignments& assignments)
{
    const auto sides = base::splitText(text, '=');
    int index = 0;
    if (sides.size() != 2 || !base::parseNumber(sides[0], &index) || index < 0 ||
        index >= kChannelCount || assignments[static_cast<size_t>(index)]) {
        return false;
    }
    assignments[static_cast<size_t>(index)] = Assignment{};
    Assignment& assignment = *assignments[static_cast<size_t>(index)];
    assignment.mText = base::trimmed(sides[1]);
    if (assignment.mText == "0") {
        return true;
    }
    for (const std::string_view term : base::splitText(sides[1], '+')) {
        if (!readTerm(term, assignment)) {
            return false;
        }
    }
    return true;
}
} // namespace

std::string readAssignments(const std::string& text, Assignments& assignments)
{
    for (const std::string_view part : base::splitText(text, ',')) {
        if (!readAssignment(part, assignments)) {
            return fmt::format(
                "'{}': expected CHANNEL=SOURCE[*FACTOR][+...] with each channel "
                "from 0 to 7 once, for example 0=UA,1=17,3=0,7=IA+IB*-0.5",
                part);
        }
    }
    return {};
}

} // namespace importing
