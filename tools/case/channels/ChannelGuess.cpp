#include "channels/ChannelGuess.h"

#include <algorithm>
#include <string>

#include "channels/ChannelKind.h"
#include "channels/ChannelPhase.h"

namespace channels {

namespace {
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

/** The attributes by which the objects of a recording are distinguished. */
struct Grouping
{
    bool mByComponent;
    bool mByStem;
};

/** The strictest first. Some recordings give each phase its own component or a numbered name. */
constexpr Grouping kGroupings[] = {{true, true}, {true, false}, {false, true}, {false, false}};

std::vector<PhaseSet> setsOf(const std::vector<waveform::ChannelDescription>& channels,
                             const std::vector<PhaseInSet>& phases, Quantity quantity,
                             const Grouping& grouping)
{
    std::vector<PhaseSet> sets;
    for (size_t i = 0; i < channels.size(); ++i) {
        const auto phase = static_cast<size_t>(phases[i].mPhase);
        if (phase > kNeutral || unitOf(channels[i]).mQuantity != quantity) {
            continue;
        }
        const std::string component = grouping.mByComponent ? channels[i].mComponent : "";
        const std::string stem = grouping.mByStem ? phases[i].mStem : "";
        const auto found = std::find_if(sets.rbegin(), sets.rend(), [&](const PhaseSet& set) {
            return set.mComponent == component && !set.mChannels[phase] &&
                   (stem.empty() || set.mStem.empty() || set.mStem == stem);
        });
        PhaseSet& set = found != sets.rend() ? *found : sets.emplace_back();
        set.mComponent = component;
        set.mStem = set.mStem.empty() ? stem : set.mStem;
        set.mChannels[phase] = i;
    }
    return sets;
}

/** The first set with the most phases; an empty one if there is none. */
PhaseSet fullestOf(const std::vector<PhaseSet>& sets)
{
    const auto best = std::max_element(
        sets.begin(), sets.end(),
        [](const PhaseSet& a, const PhaseSet& b) { return a.phases() < b.phases(); });
    return best != sets.end() ? *best : PhaseSet();
}

/** "BUS" for stems such as "BUS U" and "BUS_IL". Digits alone before the quantity are no object. */
std::string objectOf(const PhaseSet& set)
{
    if (!set.mComponent.empty()) {
        return set.mComponent;
    }
    const auto lastOf = [](const std::string& text) {
        const size_t last = text.find_last_not_of(" _-.:");
        return last == std::string::npos ? 0 : last;
    };
    const std::string& stem = set.mStem;
    size_t quantity = lastOf(stem);
    quantity -= quantity > 0 && stem[quantity] == 'L' ? 1 : 0; // of L1, L2, L3
    if (stem.find_first_of("UVI", quantity) != quantity) {
        return {};
    }
    const std::string object = stem.substr(0, quantity);
    const bool hasLetter = std::any_of(object.begin(), object.end(),
                                       [](unsigned char c) { return c >= 'A' && c <= 'Z'; });
    return hasLetter ? object.substr(0, lastOf(object) + 1) : "";
}
} // namespace

GuessedSets guessChannels(const std::vector<waveform::ChannelDescription>& channels)
{
    GuessedSets guess;
    GuessedSet* guessed = guess.data();
    const std::vector<PhaseInSet> phases = phasesOf(channels);
    for (const Quantity quantity : {Quantity::Voltage, Quantity::Current}) {
        PhaseSet best = fullestOf(setsOf(channels, phases, quantity, kGroupings[0]));
        for (const Grouping& grouping : kGroupings) {
            const PhaseSet set = fullestOf(setsOf(channels, phases, quantity, grouping));
            if (best.phases() < kPhaseCount && set.phases() == kPhaseCount) {
                best = set;
                guessed->mIsMixed = true;
            }
        }
        guessed->mObject = guessed->mIsMixed ? "" : objectOf(best);
        guessed++->mSources = best.mChannels;
    }
    return guess;
}

} // namespace channels
