#include "plan/Mistakes.h"

#include <fmt/format.h>

#include <algorithm>

#include "plan/Plan.h"

namespace plan {

namespace {
/** Further mistakes are only counted. */
constexpr size_t kMaxTexts = 100;
} // namespace

void Mistakes::throwIfAny() const
{
    if (mTexts.empty()) {
        return;
    }
    const auto end = mTexts.begin() + std::ptrdiff_t(std::min(mTexts.size(), kMaxTexts));
    std::string text = fmt::format("{}", fmt::join(mTexts.begin(), end, "\n"));
    if (mTexts.size() > kMaxTexts) {
        text += fmt::format("\nand {} more", mTexts.size() - kMaxTexts);
    }
    throw PlanError(text);
}

} // namespace plan
