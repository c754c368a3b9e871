#include "import/ChannelGuess.h"

#include <algorithm>
#include <string>

#include "import/ChannelKind.h"

namespace {
using Quantity = ChannelUnit::Quantity;
constexpr size_t kNeutral = static_cast<size_t>(ChannelPhase::Neutral);

/** The channels of one object that measure the same quantity. */
struct PhaseSet
{
    std::string mComponent;
    std::string mStem; ///< of the names, without their phase
    std::array<std::optional<size_t>, kPhaseCount + 1> mChannels;

    size_t phases() const
    {
        return static_cast<size_t>(
            std::count_if(mChannels.begin(), mChannels.begin() + kPhaseCount,
                          [](const auto& channel) { return channel.has_value(); }));
    }
};

/** Names that end with their phase and differ before it belong to different objects. */
bool isSameObject(const PhaseSet& set, const ChannelDescription& channel, const std::string& stem)
{
    return set.mComponent == channel.mComponent &&
           (stem.empty() || set.mStem.empty() || set.mStem == stem);
}

std::vector<PhaseSet> setsOf(const std::vector<ChannelDescription>& channels, Quantity quantity)
{
    std::vector<PhaseSet> sets;
    for (size_t i = 0; i < channels.size(); ++i) {
        const auto phase = static_cast<size_t>(phaseOf(channels[i]));
        if (unitOf(channels[i]).mQuantity != quantity || phase > kNeutral) {
            continue;
        }
        const PhaseEnding ending = phaseAtEndOf(channels[i].mName);
        const bool hasStem = static_cast<size_t>(ending.mPhase) < kNeutral;
        const std::string stem = hasStem ? ending.mStem : std::string();
        const auto found = std::find_if(sets.rbegin(), sets.rend(), [&](const PhaseSet& set) {
            return isSameObject(set, channels[i], stem) && !set.mChannels[phase];
        });
        PhaseSet& set = found != sets.rend() ? *found : sets.emplace_back();
        set.mComponent = channels[i].mComponent;
        set.mStem = set.mStem.empty() ? stem : set.mStem;
        set.mChannels[phase] = i;
    }
    return sets;
}
} // namespace

GuessedChannels guessChannels(const std::vector<ChannelDescription>& channels)
{
    GuessedChannels guess;
    auto place = guess.begin();
    for (const Quantity quantity : {Quantity::Voltage, Quantity::Current}) {
        const std::vector<PhaseSet> sets = setsOf(channels, quantity);
        const auto best = std::max_element(
            sets.begin(), sets.end(),
            [](const PhaseSet& a, const PhaseSet& b) { return a.phases() < b.phases(); });
        if (best != sets.end()) {
            std::copy(best->mChannels.begin(), best->mChannels.end(), place);
        }
        place += kPhaseCount + 1;
    }
    return guess;
}
