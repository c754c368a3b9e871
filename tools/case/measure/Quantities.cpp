#include "measure/Quantities.h"

#include <algorithm>
#include <array>
#include <iterator>

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
    static const Channels kOfDevice{Channel::UA, Channel::UB, Channel::UC, Channel::UN,
                                    Channel::IA, Channel::IB, Channel::IC, Channel::IN};
    return kOfDevice;
}

/** A quantity without orders and without aggregation. */
Quantity single(Id id, const char* name, const char* group, const char* unit,
                const Channels& channels, const char* text)
{
    return {id, name, group, unit, channels, 0, 0, false, text};
}

/** A quantity without orders that is aggregated. */
Quantity aggregated(Id id, const char* name, const char* group, const char* unit,
                    const Channels& channels, const char* text)
{
    return {id, name, group, unit, channels, 0, 0, true, text};
}

std::vector<Quantity> waveformQuantities()
{
    const Channels& all = deviceChannelSet();
    const Channels none{Channel::None};
    const char* const own = kUnitOfChannel;
    return {
        single(Id::RmsHalf, "rms-half", "rms-half", own, all,
               "rms of one period, every half period"),
        aggregated(Id::Rms, "rms", "rms", own, all, "rms of 10/12 periods"),
        aggregated(Id::Thd, "thd", "thd", "%", all,
                   "harmonic subgroups 2 to 50, relative to that of the fundamental"),
        {Id::Harmonic, "harmonic", "harmonics", "%", all, 2, kLastHarmonic, true,
         "harmonic subgroup, relative to that of the fundamental"},
        {Id::Interharmonic, "interharmonic", "interharmonics", "%", all, 1, kLastInterharmonic,
         true, "interharmonic centred subgroup, relative to that of the fundamental"},
        single(Id::Frequency, "frequency", "frequency", "Hz", none, "of one period"),
        single(Id::FrequencyTenSeconds, "frequency-10s", "frequency", "Hz", none,
               "whole periods in 10 s by their duration"),
    };
}

std::vector<Quantity> systemQuantities()
{
    const Channels voltage{Channel::U};
    const Channels current{Channel::I};
    const Channels systems{Channel::U, Channel::I};
    const Channels power{Channel::A, Channel::B, Channel::C, Channel::Total};
    const char* const own = kUnitOfChannel;
    const char* const negative = "negative sequence, relative to the positive one";
    const char* const zero = "zero sequence, relative to the positive one";
    const char* const rms = "rms of the fundamental";
    return {
        aggregated(Id::NegativeVoltageUnbalance, "u2", "unbalance", "%", voltage, negative),
        aggregated(Id::ZeroVoltageUnbalance, "u0", "unbalance", "%", voltage, zero),
        aggregated(Id::NegativeCurrentUnbalance, "i2", "unbalance", "%", current, negative),
        aggregated(Id::ZeroCurrentUnbalance, "i0", "unbalance", "%", current, zero),
        aggregated(Id::PositiveSequence, "sequence-positive", "unbalance", own, systems, rms),
        aggregated(Id::NegativeSequence, "sequence-negative", "unbalance", own, systems, rms),
        aggregated(Id::ZeroSequence, "sequence-zero", "unbalance", own, systems, rms),
        aggregated(Id::ActivePower, "p", "power", "W", power, "active power"),
        aggregated(Id::ReactivePower, "q", "power", "var", power,
                   "reactive power of the fundamental"),
        aggregated(Id::ApparentPower, "s", "power", "VA", power,
                   "product of the rms values; the total is their sum"),
        aggregated(Id::PowerFactor, "power-factor", "power", "", power, "p divided by s"),
    };
}

std::vector<Quantity> eventQuantities()
{
    const Channels phaseVoltages{Channel::UA, Channel::UB, Channel::UC};
    const Channels events{Channel::UA, Channel::UB, Channel::UC, Channel::U};
    return {
        single(Id::InstantaneousFlicker, "pinst", "flicker", "", phaseVoltages,
               "maximum instantaneous flicker sensation of a second"),
        single(Id::ShortFlicker, "pst", "flicker", "", phaseVoltages, "of 10 minutes"),
        single(Id::LongFlicker, "plt", "flicker", "", phaseVoltages, "of 2 hours"),
        single(Id::DipResidual, "dip-residual", "events", "V", events, "lowest rms-half of a dip"),
        single(Id::DipDuration, "dip-duration", "events", "s", events, "of a dip"),
        single(Id::SwellMax, "swell-max", "events", "V", events, "highest rms-half of a swell"),
        single(Id::SwellDuration, "swell-duration", "events", "s", events, "of a swell"),
        single(Id::InterruptionResidual, "interruption-residual", "events", "V", events,
               "lowest rms-half of an interruption"),
        single(Id::InterruptionDuration, "interruption-duration", "events", "s", events,
               "of an interruption"),
        single(Id::RapidChangeMax, "rapid-change-max", "events", "V", events,
               "largest deviation from the steady voltage before"),
        single(Id::RapidChangeSteady, "rapid-change-steady", "events", "V", events,
               "difference of the steady voltages before and after"),
        single(Id::RapidChangeDuration, "rapid-change-duration", "events", "s", events,
               "between the steady voltages"),
        single(Id::EventCount, "event-count", "events", "", {Channel::U},
               "events of the three voltages together; 0 for none"),
    };
}

std::vector<Quantity> phasorQuantities()
{
    const Channels phases{Channel::UA, Channel::UB, Channel::UC,
                          Channel::IA, Channel::IB, Channel::IC};
    const Channels systems{Channel::U, Channel::I};
    const Channels none{Channel::None};
    const char* const own = kUnitOfChannel;
    return {
        single(Id::PhasorMagnitude, "phasor-magnitude", "phasors", own, phases,
               "rms of the synchrophasor"),
        single(Id::PhasorAngle, "phasor-angle", "phasors", "deg", phases,
               "of the synchrophasor, relative to a cosine on UTC"),
        single(Id::PositivePhasorMagnitude, "positive-sequence-magnitude", "phasors", own, systems,
               "rms of the synchrophasor"),
        single(Id::PositivePhasorAngle, "positive-sequence-angle", "phasors", "deg", systems,
               "of the synchrophasor, relative to a cosine on UTC"),
        single(Id::PhasorFrequency, "frequency-pmu", "phasors", "Hz", none,
               "from the positive sequence"),
        single(Id::Rocof, "rocof", "phasors", "Hz/s", none, "rate of change of frequency"),
    };
}

std::vector<Quantity> makeQuantities()
{
    std::vector<Quantity> all = waveformQuantities();
    for (std::vector<Quantity> group :
         {systemQuantities(), eventQuantities(), phasorQuantities()}) {
        std::move(group.begin(), group.end(), std::back_inserter(all));
    }
    return all;
}

const char* suffixOf(Interval interval)
{
    return kIntervalSuffixes.at(static_cast<size_t>(interval));
}

bool endsWith(std::string_view text, std::string_view ending)
{
    return text.size() > ending.size() && text.substr(text.size() - ending.size()) == ending;
}

/** Finds the kind by a name without the suffix of an interval. */
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
