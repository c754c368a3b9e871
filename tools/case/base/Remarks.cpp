#include "base/Remarks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <utility>

namespace base {

namespace {
constexpr size_t kMaxRemarks = 100;
constexpr size_t kMaxChannels = 8;
} // namespace

void Remarks::add(const std::string& text)
{
    if (mTexts.size() < kMaxRemarks) {
        mTexts.push_back(text);
    } else if (mTexts.size() == kMaxRemarks) {
        mTexts.emplace_back("and more like this");
    }
}

std::vector<std::string> Remarks::take()
{
    for (auto& [text, channels] : mChannels) {
        const size_t all = channels.size();
        channels.resize(std::min(all, kMaxChannels));
        add(fmt::format("{} {}{}: {}", all == 1 ? "channel" : "channels", fmt::join(channels, ", "),
                        all > kMaxChannels ? fmt::format(" and {} more", all - kMaxChannels) : "",
                        text));
    }
    mChannels.clear();
    return std::exchange(mTexts, {});
}

} // namespace base
