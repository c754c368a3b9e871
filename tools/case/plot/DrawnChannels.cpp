#include "plot/DrawnChannels.h"

#include <algorithm>

#include "SampleRecord.h"
#include "import/ChannelKind.h"

namespace {
using Quantity = ChannelUnit::Quantity;

constexpr double kMilli = 1e-3;

std::string labelOf(const ChannelDescription& channel)
{
    return channel.mName.empty() ? std::to_string(channel.mNumber) : channel.mName;
}

/** In V or A, so that two signals share their axes whatever units they were recorded in. */
DrawnGroup groupOf(Quantity quantity)
{
    const bool isVoltage = quantity == Quantity::Voltage;
    return {isVoltage ? "voltage" : "current", isVoltage ? "V" : "A", {}};
}
} // namespace

bool isOfDevice(const SignalDescription& description)
{
    return description.mChannels.size() == kChannelCount && description.mChannels[0].mNumber == 0;
}

DrawnChannels::DrawnChannels(const SignalDescription& description)
{
    if (isOfDevice(description)) {
        drawDevice();
        return;
    }
    drawByUnit(description.mChannels);
    if (mGroups.empty()) {
        drawFirst(description.mChannels);
    }
}

/** Voltages in mV and currents in mA. */
void DrawnChannels::drawDevice()
{
    const char* const conductors[] = {"L1", "L2", "L3", "N"};
    mGroups = {{"voltage", "V", {}}, {"current", "A", {}}};
    for (size_t i = 0; i < kChannelCount; ++i) {
        const bool isVoltage = i < kMostOfEach;
        const std::string conductor = conductors[i % kMostOfEach];
        mGroups[isVoltage ? 0 : 1].mChannels.push_back(
            {i, (isVoltage ? "U_{" : "I_{") + conductor + "}", kMilli});
    }
}

void DrawnChannels::drawByUnit(const std::vector<ChannelDescription>& channels)
{
    for (const Quantity quantity : {Quantity::Voltage, Quantity::Current}) {
        DrawnGroup group = groupOf(quantity);
        for (size_t i = 0; i < channels.size(); ++i) {
            const ChannelUnit unit = unitOf(channels[i]);
            if (unit.mQuantity != quantity || group.mChannels.size() == kMostOfEach) {
                continue;
            }
            group.mChannels.push_back({i, labelOf(channels[i]), unit.mFactor});
        }
        if (!group.mChannels.empty()) {
            mGroups.push_back(group);
        }
    }
    for (size_t i = 0; i < channels.size(); ++i) {
        const auto holds = [i](const DrawnGroup& group) {
            return std::any_of(group.mChannels.begin(), group.mChannels.end(),
                               [i](const DrawnChannel& drawn) { return drawn.mIndex == i; });
        };
        if (std::none_of(mGroups.begin(), mGroups.end(), holds)) {
            mLeftOut.push_back(labelOf(channels[i]));
        }
    }
}

void DrawnChannels::drawFirst(const std::vector<ChannelDescription>& channels)
{
    mLeftOut.clear();
    if (channels.empty()) {
        return;
    }
    DrawnGroup group{"", channels[0].mUnit, {}};
    for (size_t i = 0; i < channels.size(); ++i) {
        if (i < kMostOfEach) {
            group.mChannels.push_back({i, labelOf(channels[i]), 1.0});
        } else {
            mLeftOut.push_back(labelOf(channels[i]));
        }
    }
    mGroups.push_back(group);
}

size_t DrawnChannels::count() const
{
    size_t count = 0;
    for (const DrawnGroup& group : mGroups) {
        count += group.mChannels.size();
    }
    return count;
}
