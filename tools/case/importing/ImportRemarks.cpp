#include "importing/ImportRemarks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

namespace importing {

namespace {
constexpr size_t kMaxStatusChannels = 8;
constexpr size_t kMaxChanges = 4; ///< of a channel

/** As a part of the peak. The error by rounding to counts is smaller. */
constexpr double kMaxPeakDifference = 0.01;

/** The changes of a status channel in a time range. */
struct ChangesInRange
{
    std::string mName;
    std::vector<waveform::StatusChannel::Change> mChanges;
    size_t mMore = 0; ///< not kept while reading
};

ChangesInRange changesOf(const waveform::StatusChannel& status, const TimeRange& range)
{
    ChangesInRange found{status.mName.empty() ? std::to_string(status.mNumber) : status.mName,
                         {},
                         status.mChangeCount - status.mChanges.size()};
    std::copy_if(status.mChanges.begin(), status.mChanges.end(), std::back_inserter(found.mChanges),
                 [&](const auto& change) {
                     return change.mSeconds >= range.mFrom && change.mSeconds <= range.mTo;
                 });
    return found;
}

std::string remarkOn(const ChangesInRange& status)
{
    std::vector<std::string> texts;
    for (size_t i = 0; i < std::min(status.mChanges.size(), kMaxChanges); ++i) {
        const auto& [seconds, state] = status.mChanges[i];
        texts.push_back(fmt::format("{:d}→{:d} at {:.3f} s", !state, state, seconds));
    }
    const size_t more = status.mChanges.size() - texts.size() + status.mMore;
    return fmt::format("status channel {} is not played: {}{}", status.mName,
                       fmt::join(texts, ", "), more > 0 ? fmt::format(" and {} more", more) : "");
}
} // namespace

std::vector<std::string> remarksOnStatus(const waveform::SignalDescription& description,
                                         const TimeRange& range)
{
    std::vector<ChangesInRange> changing;
    for (const waveform::StatusChannel& status : description.mStatusChannels) {
        ChangesInRange changes = changesOf(status, range);
        if (!changes.mChanges.empty()) {
            changing.push_back(std::move(changes));
        }
    }
    std::stable_sort(changing.begin(), changing.end(), [](const auto& a, const auto& b) {
        return a.mChanges[0].mSeconds < b.mChanges[0].mSeconds;
    });
    std::vector<std::string> remarks;
    for (size_t i = 0; i < std::min(changing.size(), kMaxStatusChannels); ++i) {
        remarks.push_back(remarkOn(changing[i]));
    }
    if (changing.size() > kMaxStatusChannels) {
        remarks.push_back(fmt::format("and {} more status channels change, see vx-case info",
                                      changing.size() - kMaxStatusChannels));
    }
    return remarks;
}

std::vector<std::string> remarksOnPeaks(const ImportReport& report)
{
    std::vector<std::string> texts;
    for (size_t i = 0; i < report.mChannels.size(); ++i) {
        const ChannelReport& channel = report.mChannels[i];
        const double difference = channel.mWrittenPeak - channel.mPeak;
        if (std::abs(difference) * channel.mFactor > 1.0 &&
            std::abs(difference) > kMaxPeakDifference * channel.mPeak) {
            texts.push_back(fmt::format("channel {} ({}) by {:+.1f} %", i, channel.mSource,
                                        100.0 * difference / channel.mPeak));
        }
    }
    return texts.empty() ? texts
                         : std::vector{fmt::format("peaks written differ from those recorded: {}",
                                                   fmt::join(texts, ", "))};
}

} // namespace importing
