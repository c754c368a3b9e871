#include "generate/TruthFile.h"

#include "generate/MeasuredJson.h"

namespace generate {

namespace {
Json jsonOf(const FrequencyStep& step)
{
    Json json = jsonOf(step.mPosition);
    json["fileHertz"] = step.mFileHertz;
    json["hertz"] = step.mHertz;
    return json;
}

Json jsonOf(const HarmonicValues& harmonic)
{
    return {{"order", harmonic.mOrder},
            {"rms", harmonic.mRms},
            {"percent", numberOrNull(harmonic.mPercent)},
            {"degrees", numberOrNull(harmonic.mDegrees)},
            {"firstLineDegrees", harmonic.mFirstLineDegrees}};
}

Json jsonOf(const std::optional<UnbalanceValues>& unbalance)
{
    if (!unbalance) {
        return {};
    }
    return {{"negativePercent", unbalance->mNegativePercent},
            {"zeroPercent", unbalance->mZeroPercent}};
}

Json jsonOf(const DisturbanceValues& disturbance)
{
    return {{"channels", channelList(disturbance.mChannels)},
            {"begin", jsonOf(disturbance.mBegin)},
            {"end", jsonOf(disturbance.mEnd)},
            {"durationSeconds", disturbance.mEnd.mSeconds - disturbance.mBegin.mSeconds},
            {"remainingPercent", disturbance.mFactor * kPercent},
            {"phaseJumpDegrees", disturbance.mPhaseJumpDegrees}};
}

Json jsonOf(const ToneValues& tone)
{
    return {{"channels", channelList(tone.mChannels)},
            {"begin", jsonOf(tone.mBegin)},
            {"hertz", tone.mHertz},
            {"percent", tone.mPercent},
            {"degrees", tone.mDegrees},
            {"timeConstantSeconds", numberOrNull(tone.mTimeConstantSeconds)}};
}

Json jsonOf(const ModulationValues& modulation)
{
    const bool isSine = modulation.mShape == ModulationShape::Sine;
    return {{"channels", channelList(modulation.mChannels)},
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
    json["largestHertzPerSecond"] = numberOrNull(frequency.mMaxHertzPerSecond);
    if (!frequency.mSteps.empty()) {
        json["points"] = listOf(frequency.mSteps);
    }
    return json;
}

Json channelJson(const ReferenceValues& values, const MeasuredValues& measured, size_t number)
{
    const ChannelValues& channel = values.mChannels[number];
    Json json = channelHeading(number);
    json["fundamentalRms"] = channel.mFundamentalRms;
    json["fundamentalDegrees"] = channel.mFundamentalDegrees;
    json.update(jsonOf(measured, number));
    if (values.mHasHarmonics) {
        json["thdPercent"] = numberOrNull(channel.mThdPercent);
        json["harmonics"] = listOf(channel.mHarmonics);
    }
    return json;
}

Json anglesJson()
{
    return {{"fundamentalDegrees", "of a sine, at the first line"},
            {"harmonics[].degrees", "where the channel's own fundamental rises through 0"},
            {"harmonics[].firstLineDegrees", "of a sine, at the first line"},
            {"tones[].degrees", "of a sine, at the tone's first line"}};
}

void add(const ReferenceValues& values, const MeasuredValues& measured, Json& truth)
{
    truth["lines"] = values.mEnd.mLine;
    truth["seconds"] = values.mEnd.mSeconds;
    truth["angles"] = anglesJson();
    truth["frequency"] = jsonOf(values.mFrequency);
    for (size_t number = 0; number < values.mChannels.size(); ++number) {
        truth["channels"].push_back(channelJson(values, measured, number));
    }
    if (values.mHasHarmonics) {
        truth["unbalance"] = jsonOf(values.mUnbalance);
    }
    truth.update(jsonOf(measured));
    truth["disturbances"] = listOf(values.mDisturbances);
    truth["tones"] = listOf(values.mTones);
    truth["modulations"] = listOf(values.mModulations);
}
} // namespace

void writeTruth(const Signal& signal, const ReferenceValues& values, const MeasuredValues& measured,
                base::ResultFile& output)
{
    Json truth;
    if (!signal.mName.empty()) {
        truth["signal"] = signal.mName;
    }
    if (!signal.mText.empty()) {
        truth["text"] = signal.mText;
    }
    add(values, measured, truth);
    if (signal.mPst > 0.0) {
        truth["pst"] = signal.mPst;
    }
    write(truth, output);
}

} // namespace generate
