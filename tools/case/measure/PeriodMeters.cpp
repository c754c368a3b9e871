#include "measure/PeriodMeters.h"

#include <algorithm>

namespace measure {

namespace {
constexpr double kSixtyHertz = 60.0;

size_t periodsOfWindow(double nominalHz)
{
    return nominalHz == kSixtyHertz ? 12 : 10;
}

bool hasSpectrum(const Selection& selection)
{
    return selection.has(QuantityId::Thd) || selection.has(QuantityId::Harmonic) ||
           selection.has(QuantityId::Interharmonic) ||
           selection.has(QuantityId::PositiveSequence) || selection.has(QuantityId::ActivePower);
}
} // namespace

PeriodMeters::PeriodMeters(const Selection& selection, const MeterSettings& settings)
    : mSettings(settings),
      mHasRmsRows(selection.has(QuantityId::RmsHalf)),
      mHasFrequencyRows(selection.has(QuantityId::Frequency)),
      mFrequency(settings.mBeginUtcNs)
{
    const bool doSpectrum = hasSpectrum(selection);
    if (doSpectrum || selection.has(QuantityId::Rms)) {
        mWindows.emplace(
            WindowMeter(periodsOfWindow(settings.mNominalHz), settings.mChannels, doSpectrum),
            WindowRows(selection, settings), settings.mBeginUtcNs);
    }
}

void PeriodMeters::add(const waveform::SignalBlock& block, MeasurementOutput& output)
{
    mGrid.add(block);
    measure(output);
}

void PeriodMeters::measure(MeasurementOutput& output)
{
    SampleHistory& samples = mGrid.samples();
    for (const ClockPeriod& period : mGrid.takePeriods()) {
        if (mHasFrequencyRows) {
            mFrequency.add(period, output);
        }
    }
    takeHalfPeriods(output);
    size_t needed = mHalfPeriods.needed();
    if (mWindows) {
        mWindows->take(samples, output);
        needed = std::min(needed, mWindows->needed());
    }
    samples.dropBefore(needed);
}

void PeriodMeters::takeHalfPeriods(MeasurementOutput& output)
{
    for (const HalfPeriodValues& values :
         mHalfPeriods.take(mGrid.samples(), mSettings.mBeginUtcNs)) {
        if (!mSettings.mChannels.test(static_cast<size_t>(values.mChannel))) {
            continue;
        }
        if (mHasRmsRows) {
            output.add({values.mEndUtcNs, values.mRms, {QuantityId::RmsHalf}, values.mChannel});
        }
        for (HalfPeriodMeter* const meter : mHalfPeriodMeters) {
            meter->add(values, output);
        }
    }
}

void PeriodMeters::finish(MeasurementOutput& output)
{
    mGrid.finish();
    measure(output);
    const SampleHistory& samples = mGrid.samples();
    if (mWindows) {
        mWindows->finish(samples, output);
    }
    if (mHasFrequencyRows && samples.end() >= samples.begin() + 2) {
        mFrequency.finish(samples.secondsAt(static_cast<double>(samples.end())), output);
    }
    for (HalfPeriodMeter* const meter : mHalfPeriodMeters) {
        meter->finish(output);
    }
}

} // namespace measure
