#include "measure/Quantities.h"

#include <algorithm>
#include <array>

#include "base/Numbers.h"

namespace measure {

namespace {
using Id = QuantityId;
using Channels = std::vector<Channel>;

constexpr int kLastHarmonic = 50;
constexpr int kLastInterharmonic = 49;

constexpr std::array<const char*, 15> kChannelNames{
    "UA", "UB", "UC", "UN", "IA", "IB", "IC", "IN", "U", "I", "A", "B", "C", "total", ""};
constexpr std::array<const char*, 3> kIntervalSuffixes{"", "-3s", "-10min"};

const Channels& deviceChannelSet()
{
    static const Channels kChannels{Channel::UA, Channel::UB, Channel::UC, Channel::UN,
                                    Channel::IA, Channel::IB, Channel::IC, Channel::IN};
    return kChannels;
}

std::vector<Quantity> makeQuantities()
{
    const Channels& all = deviceChannelSet();
    const Channels phaseVoltages{Channel::UA, Channel::UB, Channel::UC};
    const Channels phases{Channel::UA, Channel::UB, Channel::UC,
                          Channel::IA, Channel::IB, Channel::IC};
    const Channels events{Channel::UA, Channel::UB, Channel::UC, Channel::U};
    const Channels systems{Channel::U, Channel::I};
    const Channels power{Channel::A, Channel::B, Channel::C, Channel::Total};
    const Channels none{Channel::None};
    const char* const own = kUnitOfChannel;
    return {
        {Id::RmsHalf, "rms-half", "rms-half", own, all, 0, 0, false,
         "rms of one period, every half period"},
        {Id::Rms, "rms", "rms", own, all, 0, 0, true, "rms of 10/12 periods"},
        {Id::Thd, "thd", "thd", "%", all, 0, 0, true,
         "harmonic subgroups 2 to 50, of the subgroup of the fundamental"},
        {Id::Harmonic, "harmonic", "harmonics", "%", all, 2, kLastHarmonic, true,
         "harmonic subgroup, of the subgroup of the fundamental"},
        {Id::Interharmonic, "interharmonic", "interharmonics", "%", all, 1, kLastInterharmonic,
         true, "centred interharmonic subgroup, of the subgroup of the fundamental"},
        {Id::Frequency, "frequency", "frequency", "Hz", none, 0, 0, false, "of one period"},
        {Id::FrequencyTenSeconds, "frequency-10s", "frequency", "Hz", none, 0, 0, false,
         "whole periods in 10 s by their duration"},
        {Id::NegativeVoltageUnbalance,
         "u2",
         "unbalance",
         "%",
         {Channel::U},
         0,
         0,
         true,
         "negative sequence, of the positive one"},
        {Id::ZeroVoltageUnbalance,
         "u0",
         "unbalance",
         "%",
         {Channel::U},
         0,
         0,
         true,
         "zero sequence, of the positive one"},
        {Id::NegativeCurrentUnbalance,
         "i2",
         "unbalance",
         "%",
         {Channel::I},
         0,
         0,
         true,
         "negative sequence, of the positive one"},
        {Id::ZeroCurrentUnbalance,
         "i0",
         "unbalance",
         "%",
         {Channel::I},
         0,
         0,
         true,
         "zero sequence, of the positive one"},
        {Id::PositiveSequence, "sequence-positive", "unbalance", own, systems, 0, 0, true,
         "rms of the fundamental"},
        {Id::NegativeSequence, "sequence-negative", "unbalance", own, systems, 0, 0, true,
         "rms of the fundamental"},
        {Id::ZeroSequence, "sequence-zero", "unbalance", own, systems, 0, 0, true,
         "rms of the fundamental"},
        {Id::ActivePower, "p", "power", "W", power, 0, 0, true, "active power"},
        {Id::ReactivePower, "q", "power", "var", power, 0, 0, true,
         "reactive power of the fundamental"},
        {Id::ApparentPower, "s", "power", "VA", power, 0, 0, true,
         "product of the rms values; the total is their sum"},
        {Id::PowerFactor, "power-factor", "power", "", power, 0, 0, true, "p by s"},
        {Id::InstantaneousFlicker, "pinst", "flicker", "", phaseVoltages, 0, 0, false,
         "largest instantaneous flicker sensation of a second"},
        {Id::ShortFlicker, "pst", "flicker", "", phaseVoltages, 0, 0, false, "of 10 minutes"},
        {Id::LongFlicker, "plt", "flicker", "", phaseVoltages, 0, 0, false, "of 2 hours"},
        {Id::DipResidual, "dip-residual", "events", "V", events, 0, 0, false,
         "lowest rms-half of a dip"},
        {Id::DipDuration, "dip-duration", "events", "s", events, 0, 0, false, "of a dip"},
        {Id::SwellMax, "swell-max", "events", "V", events, 0, 0, false,
         "highest rms-half of a swell"},
        {Id::SwellDuration, "swell-duration", "events", "s", events, 0, 0, false, "of a swell"},
        {Id::InterruptionResidual, "interruption-residual", "events", "V", events, 0, 0, false,
         "lowest rms-half of an interruption"},
        {Id::InterruptionDuration, "interruption-duration", "events", "s", events, 0, 0, false,
         "of an interruption"},
        {Id::RapidChangeMax, "rapid-change-max", "events", "V", events, 0, 0, false,
         "largest deviation from the steady voltage before"},
        {Id::RapidChangeSteady, "rapid-change-steady", "events", "V", events, 0, 0, false,
         "difference of the steady voltages before and after"},
        {Id::RapidChangeDuration, "rapid-change-duration", "events", "s", events, 0, 0, false,
         "between the steady voltages"},
        {Id::EventCount,
         "event-count",
         "events",
         "",
         {Channel::U},
         0,
         0,
         false,
         "events of the three voltages together; 0 for none"},
        {Id::PhasorMagnitude, "phasor-magnitude", "phasors", own, phases, 0, 0, false,
         "rms of the synchrophasor"},
        {Id::PhasorAngle, "phasor-angle", "phasors", "deg", phases, 0, 0, false,
         "of the synchrophasor, to a cosine on UTC"},
        {Id::PositivePhasorMagnitude, "positive-sequence-magnitude", "phasors", own, systems, 0, 0,
         false, "rms of the synchrophasor"},
        {Id::PositivePhasorAngle, "positive-sequence-angle", "phasors", "deg", systems, 0, 0, false,
         "of the synchrophasor, to a cosine on UTC"},
        {Id::PhasorFrequency, "frequency-pmu", "phasors", "Hz", none, 0, 0, false,
         "from the positive sequence"},
        {Id::Rocof, "rocof", "phasors", "Hz/s", none, 0, 0, false, "rate of change of frequency"},
    };
}

const char* suffixOf(Interval interval)
{
    return kIntervalSuffixes.at(static_cast<size_t>(interval));
}

bool endsWith(std::string_view text, std::string_view ending)
{
    return text.size() > ending.size() && text.substr(text.size() - ending.size()) == ending;
}

/** Of a name without the suffix of its interval. */
std::optional<RowKind> findBasicKind(std::string_view name)
{
    for (const Quantity& quantity : quantities()) {
        const std::string_view own = quantity.mName;
        if (name == own && quantity.mFirstOrder == 0) {
            return RowKind{quantity.mId, 0, Interval::Basic};
        }
        int order = 0;
        const bool hasOrder = quantity.mFirstOrder > 0 && name.size() > own.size() + 1 &&
                              name.substr(0, own.size()) == own && name[own.size()] == '-' &&
                              base::parseNumber(name.substr(own.size() + 1), &order);
        if (hasOrder && order >= quantity.mFirstOrder && order <= quantity.mLastOrder) {
            return RowKind{quantity.mId, order, Interval::Basic};
        }
    }
    return std::nullopt;
}
} // namespace

const char* nameOf(Channel channel)
{
    return kChannelNames.at(static_cast<size_t>(channel));
}

const std::vector<Quantity>& quantities()
{
    static const std::vector<Quantity> kQuantities = makeQuantities();
    return kQuantities;
}

const Quantity& quantityOf(QuantityId id)
{
    return quantities()[static_cast<size_t>(id)];
}

const char* unitOf(QuantityId id, Channel channel)
{
    const char* const unit = quantityOf(id).mUnit;
    if (unit != kUnitOfChannel) {
        return unit;
    }
    return channel == Channel::I || (channel >= Channel::IA && channel <= Channel::IN) ? "A" : "V";
}

std::string nameOf(const RowKind& kind)
{
    std::string name = quantityOf(kind.mId).mName;
    if (kind.mOrder > 0) {
        name += '-' + std::to_string(kind.mOrder);
    }
    return name + suffixOf(kind.mInterval);
}

std::optional<RowKind> findRowKind(std::string_view name)
{
    if (const auto kind = findBasicKind(name)) {
        return kind;
    }
    for (const Interval interval : {Interval::ThreeSeconds, Interval::TenMinutes}) {
        const std::string_view suffix = suffixOf(interval);
        if (!endsWith(name, suffix)) {
            continue;
        }
        auto kind = findBasicKind(name.substr(0, name.size() - suffix.size()));
        if (kind && quantityOf(kind->mId).mHasIntervals) {
            kind->mInterval = interval;
            return kind;
        }
    }
    return std::nullopt;
}

std::optional<Channel> findChannel(std::string_view name)
{
    const auto* const found = std::find(kChannelNames.begin(), kChannelNames.end(), name);
    return found == kChannelNames.end()
               ? std::nullopt
               : std::optional(static_cast<Channel>(found - kChannelNames.begin()));
}

std::vector<std::string> quantityGroups()
{
    std::vector<std::string> groups;
    for (const Quantity& quantity : quantities()) {
        if (std::find(groups.begin(), groups.end(), quantity.mGroup) == groups.end()) {
            groups.emplace_back(quantity.mGroup);
        }
    }
    return groups;
}

} // namespace measure
