#include "plan/Plan.h"

#include <fmt/format.h>

#include "base/InputFile.h"
#include "plan/Draft.h"
#include "plan/Hashes.h"
#include "plan/PlanReader.h"

namespace plan {

namespace {
constexpr size_t kMaxPlanBytes = size_t{1} << 22U;
} // namespace

int Plan::playCount() const
{
    int count = 0;
    for (const Case& it : mCases) {
        count += it.mTimes;
    }
    return count;
}

Draft draftPlan(const std::string& text, const std::string& path)
{
    Draft draft;
    draft.mPlan.mFileName = path;
    draft.mPlan.mText = text;
    draft.mPlan.mHash = textHash(text);
    draft.mMistakes.collect(
        [&] { PlanReader(draft.mPlan, draft.mMistakes).read(states::parseTables(text, path)); });
    return draft;
}

std::string planText(const std::string& path)
{
    try {
        base::InputFile file(path);
        if (file.size() > kMaxPlanBytes) {
            throw PlanError(
                fmt::format("{}: {} bytes: expected at most {}", path, file.size(), kMaxPlanBytes));
        }
        return std::string(file.peek(file.size()));
    } catch (const base::CaseError& error) {
        throw PlanError(error.what());
    }
}

Plan parsePlan(const std::string& text, const std::string& path)
{
    Draft draft = draftPlan(text, path);
    draft.mMistakes.throwIfAny();
    return std::move(draft.mPlan);
}

Plan readPlan(const std::string& path)
{
    return parsePlan(planText(path), path);
}

} // namespace plan
