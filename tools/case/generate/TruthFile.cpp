#include "generate/TruthFile.h"

#include <nlohmann/json.hpp>

#include "generate/ReferenceValues.h"

namespace generate {

namespace {
using Json = nlohmann::ordered_json;

constexpr std::array<const char*, kChannelCount> kChannelNames{"UA", "UB", "UC", "UN",
                                                               "IA", "IB", "IC", "IN"};

Json jsonOf(const Position& position)
{
    return {{"line", position.mLine}, {"seconds", position.mSeconds}};
}

Json jsonOf(const std::optional<double>& value)
{
    return value ? Json(*value) : Json();
}

Json jsonOf(const ChannelSet& channels)
{
    Json list = Json::array();
    for (size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels.test(channel)) {
            list.push_back(channel);
        }
    }
    return list;
}

Json jsonOf(const FrequencyStep& step)
{
    Json json = jsonOf(step.mPosition);
    json["fileHertz"] = step.mFileHertz;
    json["hertz"] = step.mHertz;
    return json;
}

Json jsonOf(const std::optional<RmsExtreme>& extreme)
{
    if (!extreme) {
        return {};
    }
    Json json = jsonOf(extreme->mPosition);
    json["value"] = extreme->mRms;
    return json;
}

Json jsonOf(const HarmonicValues& harmonic)
{
    return {
        {"order", harmonic.mOrder}, {"percent", harmonic.mPercent}, {"degrees", harmonic.mDegrees}};
}

Json jsonOf(const std::optional<UnbalanceValues>& unbalance)
{
    if (!unbalance) {
        return {};
    }
    return {{"negativePercent", unbalance->mNegativePercent},
            {"zeroPercent", unbalance->mZeroPercent}};
}

const char* nameOf(EventKind kind)
{
    switch (kind) {
        case EventKind::Dip:
            return "dip";
        case EventKind::Swell:
            return "swell";
        case EventKind::PhaseJump:
            return "phase jump";
        case EventKind::Step:
            break;
    }
    return "step";
}

Json jsonOf(const EventValues& event)
{
    return {{"kind", nameOf(event.mKind)},
            {"channels", jsonOf(event.mChannels)},
            {"begin", jsonOf(event.mBegin)},
            {"end", jsonOf(event.mEnd)},
            {"durationSeconds", event.mEnd.mSeconds - event.mBegin.mSeconds},
            {"residualPercent", event.mFactor * kPercent},
            {"depthPercent", (1.0 - event.mFactor) * kPercent},
            {"phaseJumpDegrees", event.mPhaseJumpDegrees}};
}

Json jsonOf(const ToneValues& tone)
{
    return {{"channels", jsonOf(tone.mChannels)},
            {"begin", jsonOf(tone.mBegin)},
            {"hertz", tone.mHertz},
            {"percent", tone.mPercent},
            {"degrees", tone.mDegrees},
            {"timeConstantSeconds", jsonOf(tone.mTimeConstantSeconds)}};
}

Json jsonOf(const ModulationValues& modulation)
{
    const bool isSine = modulation.mShape == ModulationShape::Sine;
    return {{"channels", jsonOf(modulation.mChannels)},
            {"shape", isSine ? "sine" : "rectangle"},
            {"hertz", modulation.mHertz},
            {"amplitudePercent", modulation.mAmplitudePercent},
            {"phaseRadians", modulation.mPhaseRadians}};
}

template <typename Values>
Json listOf(const Values& values)
{
    Json list = Json::array();
    for (const auto& value : values) {
        list.push_back(jsonOf(value));
    }
    return list;
}

Json jsonOf(const FrequencyValues& frequency)
{
    Json json;
    if (frequency.mSteps.empty()) {
        json["fileHertz"] = frequency.mFileHertz;
        json["hertz"] = frequency.mHertz;
    }
    json["minimumHertz"] = frequency.mMinHertz;
    json["maximumHertz"] = frequency.mMaxHertz;
    json["largestHertzPerSecond"] = jsonOf(frequency.mMaxHertzPerSecond);
    if (!frequency.mSteps.empty()) {
        json["points"] = listOf(frequency.mSteps);
    }
    return json;
}

Json channelJson(const ReferenceValues& values, size_t number)
{
    const ChannelValues& channel = values.mChannels[number];
    Json json{
        {"channel", number},
        {"name", kChannelNames[number]},
        {"fundamentalRms", channel.mFundamentalRms},
        {"fundamentalDegrees", channel.mFundamentalDegrees},
        {"rms", {{"minimum", jsonOf(channel.mMinRms)}, {"maximum", jsonOf(channel.mMaxRms)}}}};
    if (values.mHasHarmonics) {
        json["thdPercent"] = channel.mThdPercent;
        json["harmonics"] = listOf(channel.mHarmonics);
    }
    return json;
}

void add(const ReferenceValues& values, Json& truth)
{
    truth["lines"] = values.mEnd.mLine;
    truth["seconds"] = values.mEnd.mSeconds;
    truth["frequency"] = jsonOf(values.mFrequency);
    for (size_t number = 0; number < values.mChannels.size(); ++number) {
        truth["channels"].push_back(channelJson(values, number));
    }
    if (values.mHasHarmonics) {
        truth["unbalance"] = jsonOf(values.mUnbalance);
    }
    truth["events"] = listOf(values.mEvents);
    truth["tones"] = listOf(values.mTones);
    truth["modulations"] = listOf(values.mModulations);
}
} // namespace

void writeTruth(const Signal& signal, const WaveParameters& wave, base::ResultFile& output)
{
    Json truth;
    if (!signal.mName.empty()) {
        truth["signal"] = signal.mName;
    }
    if (!signal.mText.empty()) {
        truth["text"] = signal.mText;
    }
    add(referenceValuesOf(wave), truth);
    if (signal.mPst > 0.0) {
        truth["pst"] = signal.mPst;
    }
    constexpr int kIndent = 2;
    output.write(truth.dump(kIndent) + "\n");
}

} // namespace generate
