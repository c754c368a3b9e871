#include "generate/MeasuredJson.h"

#include "waveform/DeviceChannels.h"

namespace generate {

namespace {

Json jsonOf(const std::optional<RmsExtreme>& extreme)
{
    if (!extreme) {
        return {};
    }
    Json json = jsonOf(extreme->mPosition);
    json["value"] = extreme->mRms;
    return json;
}

const char* nameOf(EventKind kind)
{
    switch (kind) {
        case EventKind::Dip:
            return "dip";
        case EventKind::Swell:
            return "swell";
        case EventKind::Interruption:
            break;
    }
    return "interruption";
}

/** If the end is not in the file, end and duration are null. */
Json jsonOf(const EventSpan& span)
{
    Json json{{"begin", jsonOf(span.mBegin)}, {"end", nullptr}, {"durationSeconds", nullptr}};
    if (span.mEnd) {
        json["end"] = jsonOf(*span.mEnd);
        json["durationSeconds"] = span.mEnd->mSeconds - span.mBegin.mSeconds;
    }
    return json;
}

Json jsonOf(const VoltageEvent& event, double declaredRms)
{
    Json json{{"kind", nameOf(event.mKind)}, {"channels", channelList(event.mChannels)}};
    json.update(jsonOf(event.mSpan));
    json["residualRms"] = event.mResidualRms;
    json["residualPercent"] = event.mResidualRms / declaredRms * kPercent;
    for (const EventSpan& interruption : event.mInterruptions) {
        json["interruptions"].push_back(jsonOf(interruption));
    }
    return json;
}

Json listOf(const std::vector<VoltageEvent>& events, double declaredRms)
{
    Json list = Json::array();
    for (const VoltageEvent& event : events) {
        list.push_back(jsonOf(event, declaredRms));
    }
    return list;
}
} // namespace

Json jsonOf(const Position& position)
{
    return {{"line", position.mLine}, {"seconds", position.mSeconds}};
}

Json numberOrNull(const std::optional<double>& value)
{
    return value ? Json(*value) : Json();
}

Json channelList(const ChannelSet& channels)
{
    Json list = Json::array();
    for (size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels.test(channel)) {
            list.push_back(channel);
        }
    }
    return list;
}

Json channelHeading(size_t number)
{
    return {{"channel", number}, {"name", waveform::kDeviceChannelNames[number]}};
}

Json jsonOf(const MeasuredValues& values, size_t number)
{
    const MeasuredValues::Channel& channel = values.mChannels[number];
    Json json{
        {"rms", {{"minimum", jsonOf(channel.mMinRms)}, {"maximum", jsonOf(channel.mMaxRms)}}}};
    if (!channel.mEvents.empty()) {
        json["events"] = listOf(channel.mEvents, values.mDeclaredRms);
    }
    return json;
}

Json jsonOf(const MeasuredValues& values)
{
    if (values.mDeclaredRms == 0.0) {
        return {{"events", Json::array()}};
    }
    return {{"declaredRms", values.mDeclaredRms},
            {"thresholds",
             {{"dipPercent", EventThresholds::kDipPercent},
              {"swellPercent", EventThresholds::kSwellPercent},
              {"interruptionPercent", EventThresholds::kInterruptionPercent},
              {"hysteresisPercent", EventThresholds::kHysteresisPercent}}},
            {"events", listOf(values.mEvents, values.mDeclaredRms)}};
}

void write(const Json& truth, base::ResultFile& output)
{
    constexpr int kIndent = 2;
    output.write(truth.dump(kIndent) + "\n");
}

} // namespace generate
