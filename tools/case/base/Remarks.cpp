#include "base/Remarks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace {
constexpr size_t kMostRemarks = 100;
constexpr size_t kMostChannels = 8;
} // namespace

void Remarks::add(const std::string& text)
{
    if (mTexts.size() < kMostRemarks) {
        mTexts.push_back(text);
    } else if (mTexts.size() == kMostRemarks) {
        mTexts.emplace_back("and more of that");
    }
}

std::vector<std::string> Remarks::take()
{
    for (auto& [text, channels] : mChannels) {
        const size_t all = channels.size();
        channels.resize(std::min(all, kMostChannels));
        add(fmt::format("{} {}{}: {}", all == 1 ? "channel" : "channels", fmt::join(channels, ", "),
                        all > kMostChannels ? fmt::format(" and {} more", all - kMostChannels) : "",
                        text));
    }
    mChannels.clear();
    return std::exchange(mTexts, {});
}
