#include "importing/LeftOutChannels.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

#include "base/Numbers.h"
#include "channels/ChannelKind.h"

namespace importing {

namespace {
using channels::ChannelPhase;
using channels::Quantity;

constexpr size_t kMaxNames = 6;
} // namespace

const char* nameOfDeviceChannel(size_t index)
{
    static constexpr std::array<const char*, kChannelCount> kNames = {
        "voltage A", "voltage B", "voltage C", "neutral voltage",
        "current A", "current B", "current C", "neutral current"};
    return kNames.at(index);
}

LeftOutChannels::LeftOutChannels(const std::vector<waveform::ChannelDescription>& channels,
                                 const ChannelMap& map, const Assignments& assignments)
    : mChannels(channels),
      mMap(map),
      mAssignments(assignments),
      mPhases(channels::phasesOf(channels))
{
}

bool LeftOutChannels::isMissing(size_t index) const
{
    return mMap.mChannels[index].mTerms.empty() && !mAssignments[index];
}

std::string LeftOutChannels::candidatesFor(size_t index) const
{
    return list([&](size_t source) { return reasonAgainst(source, index); });
}

std::string LeftOutChannels::skippedChannels() const
{
    return list([&](size_t source) { return reasonSkipped(source); });
}

/** Lists names by reason: "a, b (reason)". */
std::string LeftOutChannels::list(const Reasons& reasonOf) const
{
    std::vector<std::pair<std::string, std::vector<std::string_view>>> byReason;
    size_t count = 0;
    for (size_t source = 0; source < mChannels.size(); ++source) {
        const std::string reason = reasonOf(source);
        if (reason.empty() || count++ >= kMaxNames) {
            continue;
        }
        auto found = std::find_if(byReason.begin(), byReason.end(),
                                  [&](const auto& group) { return group.first == reason; });
        if (found == byReason.end()) {
            found = byReason.insert(found, {reason, {}});
        }
        found->second.push_back(base::trimmed(mChannels[source].mName));
    }
    std::vector<std::string> texts;
    texts.reserve(byReason.size());
    for (const auto& [reason, names] : byReason) {
        texts.push_back(fmt::format("{} ({})", fmt::join(names, ", "), reason));
    }
    return fmt::format("{}{}", fmt::join(texts, ", "),
                       count > kMaxNames ? fmt::format(" and {} more", count - kMaxNames) : "");
}

bool LeftOutChannels::isUsed(size_t source) const
{
    return std::any_of(mMap.mChannels.begin(), mMap.mChannels.end(), [source](const auto& mapped) {
        return std::any_of(mapped.mTerms.begin(), mapped.mTerms.end(),
                           [source](const auto& term) { return term.mSource == source; });
    });
}

/** Why the source was not taken for the channel; empty if it could not be meant for it at all. */
std::string LeftOutChannels::reasonAgainst(size_t source, size_t index) const
{
    const waveform::ChannelDescription& channel = mChannels[source];
    const Quantity wanted = index < kFirstCurrent ? Quantity::Voltage : Quantity::Current;
    const auto wantedPhase = static_cast<ChannelPhase>(index % kFirstCurrent);
    const ChannelPhase phase = mPhases[source].mPhase;
    const bool isBetween = phase == ChannelPhase::BetweenPhases;
    const bool isByField = phase != wantedPhase &&
                           channels::phaseAtEndOf(channel.mPhase).mPhase == phase &&
                           channels::phaseAtEndOf(channel.mName).mPhase == wantedPhase;
    if (channels::likelyQuantityOf(channel) != wanted || isUsed(source) ||
        (isBetween && wantedPhase == ChannelPhase::Neutral) ||
        (phase <= ChannelPhase::Neutral && phase != wantedPhase && !isByField)) {
        return "";
    }
    if (isBetween) {
        return "between phases";
    }
    if (channels::unitOf(channel).mQuantity == Quantity::Unknown) {
        return "unit " + channel.mUnit;
    }
    if (phase == ChannelPhase::Unknown) {
        return "phase not known";
    }
    return isByField ? fmt::format("phase {} by its field", base::trimmed(channel.mPhase))
                     : "of another set";
}

/** Why the source was passed over; empty if it is used, or is a candidate for a missing channel. */
std::string LeftOutChannels::reasonSkipped(size_t source) const
{
    const Quantity quantity = channels::unitOf(mChannels[source]).mQuantity;
    const auto phase = static_cast<size_t>(mPhases[source].mPhase);
    if (quantity == Quantity::Unknown || phase >= kFirstCurrent) {
        return "";
    }
    for (size_t index = 0; index < kChannelCount; ++index) {
        if (isMissing(index) && !reasonAgainst(source, index).empty()) {
            return "";
        }
    }
    const size_t own = phase + (quantity == Quantity::Voltage ? 0 : kFirstCurrent);
    return mAssignments[own] ? "" : reasonAgainst(source, own);
}

} // namespace importing
