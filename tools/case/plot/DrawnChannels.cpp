#include "plot/DrawnChannels.h"

#include <algorithm>

#include "SampleRecord.h"
#include "base/Numbers.h"
#include "channels/ChannelGuess.h"
#include "channels/ChannelKind.h"
#include "channels/ChannelPhase.h"
#include "plot/LabelText.h"

namespace plot {

namespace {
using channels::Quantity;

constexpr double kMilli = 1e-3;
constexpr double kLongNumber = 1e4;
constexpr size_t kMaxLabelLetters = 20;

std::string nameOf(const waveform::ChannelDescription& channel)
{
    return channel.mName.empty() ? std::to_string(channel.mNumber) : channel.mName;
}

std::string labelOf(const waveform::ChannelDescription& channel)
{
    return shortened(nameOf(channel), kMaxLabelLetters);
}

/** In V or A, so that two signals share their axes, whatever their units are. */
DrawnGroup groupOf(Quantity quantity)
{
    const bool isVoltage = quantity == Quantity::Voltage;
    return {isVoltage ? "voltage" : "current", isVoltage ? "V" : "A", {}};
}

/** The channel that a text of --channels names by number or name; no value for a sum. */
std::optional<size_t> findSource(const std::vector<waveform::ChannelDescription>& channels,
                                 const std::string& source)
{
    int number = 0;
    const std::string_view name =
        base::trimmed(std::string_view(source).substr(0, source.find('*')));
    const bool isNumber = base::parseNumber(name, &number);
    const auto found = std::find_if(channels.begin(), channels.end(), [&](const auto& channel) {
        return isNumber ? channel.mNumber == number : base::trimmed(channel.mName) == name;
    });
    return name.empty() || found == channels.end()
               ? std::nullopt
               : std::optional(static_cast<size_t>(found - channels.begin()));
}

/** The source channel of each channel of the device. */
using Order = std::array<std::optional<size_t>, kChannelCount>;

Order orderOf(const std::vector<waveform::ChannelDescription>& channels,
              const std::vector<std::string>& sources)
{
    Order order;
    auto* next = order.begin();
    for (const channels::GuessedSet& set : channels::guessChannels(channels)) {
        next = std::copy(set.mSources.begin(), set.mSources.end(), next);
    }
    for (size_t i = 0; i < std::min(order.size(), sources.size()); ++i) {
        if (!order[i] || base::trimmed(channels[*order[i]].mName) != sources[i]) {
            order[i] = findSource(channels, sources[i]);
        }
    }
    return order;
}

std::vector<size_t> withoutPhase(const std::vector<waveform::ChannelDescription>& channels,
                                 Quantity quantity)
{
    std::vector<size_t> found;
    for (size_t i = 0; i < channels.size(); ++i) {
        if (channels::unitOf(channels[i]).mQuantity == quantity &&
            channels::phaseOf(channels[i]) > channels::ChannelPhase::Neutral) {
            found.push_back(i);
        }
    }
    return found;
}
} // namespace

bool isOfDevice(const waveform::SignalDescription& description)
{
    return description.mChannels.size() == kChannelCount && description.mChannels[0].mNumber == 0;
}

DrawnChannels::DrawnChannels(const waveform::SignalDescription& description,
                             const std::vector<std::string>& sources)
{
    if (isOfDevice(description)) {
        drawDevice();
    } else {
        drawByUnit(description.mChannels, sources);
    }
    if (mGroups.empty()) {
        drawFirst(description.mChannels);
    }
    size_t curve = 0;
    for (DrawnGroup& group : mGroups) {
        for (DrawnChannel& channel : group.mChannels) {
            channel.mCurve = curve++;
        }
    }
}

/** Voltages in mV and currents in mA. */
void DrawnChannels::drawDevice()
{
    const char* const conductors[] = {"L1", "L2", "L3", "N"};
    mGroups = {{"voltage", "V", {}}, {"current", "A", {}}};
    for (size_t i = 0; i < kChannelCount; ++i) {
        const bool isVoltage = i < kMaxOfEach;
        const std::string conductor = conductors[i % kMaxOfEach];
        mGroups[isVoltage ? 0 : 1].mChannels.push_back(
            {i % kMaxOfEach, i, (isVoltage ? "U_{" : "I_{") + conductor + "}", kMilli});
    }
}

void DrawnChannels::drawByUnit(const std::vector<waveform::ChannelDescription>& channels,
                               const std::vector<std::string>& sources)
{
    const Order order = orderOf(channels, sources);
    size_t next = 0;
    for (const Quantity quantity : {Quantity::Voltage, Quantity::Current}) {
        DrawnGroup group = groupOf(quantity);
        const std::vector<size_t> others = withoutPhase(channels, quantity);
        auto other = sources.empty() ? others.begin() : others.end();
        for (size_t conductor = 0; conductor < kMaxOfEach; ++conductor) {
            const std::optional<size_t>& phase = order[next++];
            const bool isVacant = !phase && other != others.end();
            const std::optional<size_t> index = isVacant ? std::optional(*other++) : phase;
            if (index && channels::unitOf(channels[*index]).mQuantity == quantity) {
                group.mChannels.push_back({isVacant ? kMaxOfEach + conductor : conductor, *index,
                                           labelOf(channels[*index]),
                                           channels::unitOf(channels[*index]).mFactor});
            }
        }
        if (!group.mChannels.empty()) {
            mGroups.push_back(group);
        }
    }
    leaveOutOthers(channels);
}

void DrawnChannels::leaveOutOthers(const std::vector<waveform::ChannelDescription>& channels)
{
    for (size_t i = 0; i < channels.size(); ++i) {
        const auto holds = [i](const DrawnGroup& group) {
            return std::any_of(group.mChannels.begin(), group.mChannels.end(),
                               [i](const DrawnChannel& drawn) { return drawn.mIndex == i; });
        };
        if (std::none_of(mGroups.begin(), mGroups.end(), holds)) {
            mLeftOut.push_back(nameOf(channels[i]));
        }
    }
}

void DrawnChannels::drawFirst(const std::vector<waveform::ChannelDescription>& channels)
{
    if (channels.empty()) {
        return;
    }
    DrawnGroup group{"", channels[0].mUnit, {}};
    for (size_t i = 0; i < std::min(channels.size(), kMaxOfEach); ++i) {
        group.mChannels.push_back({i, i, labelOf(channels[i]), 1.0});
    }
    mGroups.push_back(group);
    mLeftOut.clear();
    leaveOutOthers(channels);
}

ShownUnit shownUnit(const DrawnGroup& group, double largest)
{
    const bool isLong = !group.mQuantity.empty() && largest >= kLongNumber;
    return {isLong ? kMilli : 1.0, (isLong ? "k" : "") + group.mUnit};
}

const DrawnGroup* DrawnChannels::groupLike(const DrawnGroup& group) const
{
    const auto found = std::find_if(mGroups.begin(), mGroups.end(), [&](const DrawnGroup& it) {
        return it.mQuantity == group.mQuantity && it.mUnit == group.mUnit;
    });
    return found == mGroups.end() ? nullptr : &*found;
}

size_t DrawnChannels::count() const
{
    size_t count = 0;
    for (const DrawnGroup& group : mGroups) {
        count += group.mChannels.size();
    }
    return count;
}

} // namespace plot
