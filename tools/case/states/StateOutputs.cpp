#include "states/StateOutputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <complex>

#include "base/Numbers.h"
#include "base/TextTable.h"
#include "generate/MeasuredJson.h"
#include "generate/ReferenceValues.h"

namespace states {

namespace {
using generate::Json;

/** The phasors of a state in counts; the neutral by its rule. */
std::array<std::complex<double>, kChannelCount> phasorsOf(const StatePlan& plan, const State& state)
{
    std::array<std::complex<double>, kChannelCount> phasors;
    for (size_t channel = 0; channel < phasors.size(); ++channel) {
        const ChannelWave& wave = state.mChannels[channel];
        const double scale = isCurrent(channel) ? plan.mCountsPerAmpere : plan.mCountsPerVolt;
        phasors[channel] = std::polar(wave.mRms * scale,
                                      std::fmod(wave.mDegrees, 360.0) * base::kRadiansPerDegree);
    }
    plan.mNeutral.applyTo(phasors);
    return phasors;
}

Json jsonOf(const std::vector<StateHarmonic>& harmonics)
{
    Json list = Json::array();
    for (const StateHarmonic& harmonic : harmonics) {
        list.push_back({{"order", harmonic.mOrder},
                        {"percent", harmonic.mRatio * generate::kPercent},
                        {"degrees", harmonic.mDegrees}});
    }
    return list;
}

Json channelsOf(const StatePlan& plan, const StateSignal& signal, size_t number)
{
    const State& state = plan.mStates[number];
    const auto phasors = phasorsOf(plan, state);
    Json channels = Json::array();
    for (size_t channel = 0; channel < phasors.size(); ++channel) {
        const std::complex<double> phasor = phasors[channel];
        Json json{{"channel", channel},
                  {"fundamentalRms", generate::isNegligible(phasor) ? 0.0 : std::abs(phasor)},
                  {"fundamentalDegrees", generate::degreesOf(phasor)}};
        const ChannelWave& wave = state.mChannels[channel];
        if (wave.mOffset && wave.mSince == number) {
            json["offset"] = signal.offsetOf(number, channel);
            json["timeConstantSeconds"] = wave.mOffset->mTau;
        }
        channels.push_back(json);
    }
    return channels;
}

Json stateJson(const StatePlan& plan, const StateLayout& layout, const StateSignal& signal,
               size_t number)
{
    const State& state = plan.mStates[number];
    const generate::Timeline& timeline = layout.timeline();
    const qint64 begin = layout.beginOf(number);
    const qint64 end = layout.beginOf(number + 1);
    return {{"name", state.mName},
            {"begin", generate::jsonOf(timeline.positionOf(begin))},
            {"end", generate::jsonOf(timeline.positionOf(end))},
            {"periods", double(end - begin) / kSamplesPerPeriod},
            {"beginHertz", generate::playedHertz(timeline.frequencyOf(begin))},
            {"endHertz", generate::playedHertz(timeline.frequencyOf(end - 1))},
            {"channels", channelsOf(plan, signal, number)},
            {"voltageHarmonics", jsonOf(state.mVoltageHarmonics)},
            {"currentHarmonics", jsonOf(state.mCurrentHarmonics)}};
}

Json frequencyOf(const generate::Timeline& timeline)
{
    double min = generate::playedHertz(timeline.frequencyOf(0));
    double max = min;
    for (qint64 line = 0; line < timeline.lineCount(); line += kSamplesPerPeriod) {
        min = std::min(min, generate::playedHertz(timeline.frequencyOf(line)));
        max = std::max(max, generate::playedHertz(timeline.frequencyOf(line)));
    }
    return {{"minimumHertz", min}, {"maximumHertz", max}};
}

std::string phasorText(const ChannelWave& wave)
{
    return fmt::format("{:g}@{:g}", wave.mRms, wave.mDegrees);
}
} // namespace

std::string tableOf(const StatePlan& plan, const StateLayout& layout)
{
    base::TextTable table({">state", "name", ">line", ">s", ">periods", ">Hz", ">UA", ">UB", ">UC",
                           ">IA", ">IB", ">IC"});
    const generate::Timeline& timeline = layout.timeline();
    for (size_t i = 0; i < plan.mStates.size(); ++i) {
        const State& state = plan.mStates[i];
        const qint64 begin = layout.beginOf(i);
        std::vector<std::string> row{
            std::to_string(i + 1),
            state.mName,
            std::to_string(begin),
            fmt::format("{:.6f}", timeline.secondsOf(begin)),
            fmt::format("{:.6g}", double(layout.beginOf(i + 1) - begin) / kSamplesPerPeriod),
            fmt::format("{:g}", timeline.frequencyOf(begin))};
        for (const size_t first : {generate::kFirstVoltage, generate::kFirstCurrent}) {
            for (size_t phase = 0; phase < generate::kPhaseCount; ++phase) {
                row.push_back(phasorText(state.mChannels[first + phase]));
            }
        }
        table.add(std::move(row));
    }
    return table.text();
}

generate::SampleMeter sampleMeterFor(const StatePlan& plan)
{
    std::array<double, kChannelCount> degrees{};
    const auto phasors = phasorsOf(plan, plan.mStates.front());
    std::transform(phasors.begin(), phasors.end(), degrees.begin(), generate::degreesOf);
    double declared = 0.0;
    for (const State& state : plan.mStates) {
        if (declared == 0.0) {
            declared = state.mChannels[generate::kFirstVoltage].mRms * plan.mCountsPerVolt;
        }
    }
    return {degrees, declared};
}

void writeTruth(const StatePlan& plan, const StateLayout& layout, const StateSignal& signal,
                const generate::MeasuredValues& measured, base::ResultFile& output)
{
    const generate::Timeline& timeline = layout.timeline();
    Json truth{{"lines", timeline.lineCount()},
               {"seconds", timeline.positionOf(timeline.lineCount()).mSeconds},
               {"angles",
                {{"fundamentalDegrees", "ahead of the reference, which is 0 at the first line"},
                 {"harmonics", "where the channel's own fundamental rises through 0"}}},
               {"frequency", frequencyOf(timeline)},
               {"states", Json::array()},
               {"channels", Json::array()}};
    for (size_t i = 0; i < plan.mStates.size(); ++i) {
        truth["states"].push_back(stateJson(plan, layout, signal, i));
    }
    for (size_t i = 0; i < kChannelCount; ++i) {
        Json channel = generate::channelHeading(i);
        channel.update(generate::jsonOf(measured, i));
        truth["channels"].push_back(channel);
    }
    truth.update(generate::jsonOf(measured));
    generate::write(truth, output);
}

} // namespace states
