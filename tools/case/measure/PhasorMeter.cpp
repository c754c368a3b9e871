#include "measure/PhasorMeter.h"

#include <algorithm>
#include <cmath>

#include "base/Numbers.h"
#include "waveform/RecordStamp.h"

namespace measure {

namespace {
/** Min magnitude with an angle, as a part of the nominal value. */
constexpr double kMinWithAngle = 1e-4;
constexpr double kMinWithFrequency = 0.05;

constexpr std::array<Channel, kPhasorCount> kPhasorChannels{Channel::UA, Channel::UB, Channel::UC,
                                                            Channel::IA, Channel::IB, Channel::IC};

bool isVoltage(Channel channel)
{
    return channel <= Channel::UN || channel == Channel::U;
}

/** Outputs the rows of one frame. */
class FrameRows
{
public:
    FrameRows(qint64 utcNs, const MeterSettings& settings, MeasurementOutput& output)
        : mUtcNs(utcNs), mSettings(settings), mOutput(output)
    {
    }

    void add(QuantityId id, Channel channel, double value)
    {
        mOutput.add({mUtcNs, value, {id}, channel});
    }

    void add(QuantityId magnitude, QuantityId angle, Channel channel, std::complex<double> phasor)
    {
        const double nominal =
            isVoltage(channel) ? mSettings.mNominalVolts : mSettings.mNominalAmperes;
        add(magnitude, channel, std::abs(phasor));
        if (std::abs(phasor) > kMinWithAngle * nominal) {
            add(angle, channel, std::arg(phasor) / base::kRadiansPerDegree);
        }
    }

private:
    qint64 mUtcNs;
    const MeterSettings& mSettings;
    MeasurementOutput& mOutput;
};
} // namespace

PhasorMeter::PhasorMeter(const MeterSettings& settings, PhasorClass phasorClass,
                         int framesPerSecond)
    : mSettings(settings),
      mRate(framesPerSecond),
      mDemodulator(settings.mBeginUtcNs, settings.mNominalHz),
      mEstimator({phasorClass, framesPerSecond, settings.mNominalHz}, settings.mNominalHz,
                 {kMinWithFrequency * settings.mNominalVolts,
                  kMinWithFrequency * settings.mNominalAmperes}),
      mNextFrame(firstFrameFrom(mEstimator.reach()))
{
}

void PhasorMeter::add(const waveform::SignalBlock& block, MeasurementOutput& output)
{
    mDemodulator.add(block);
    const auto& groups = mDemodulator.groups();
    if (groups.empty()) {
        return;
    }
    const double reach = mEstimator.reach();
    mNextFrame = std::max(mNextFrame, firstFrameFrom(mDemodulator.coveredFrom() + reach));
    for (; secondsOf(mNextFrame) + reach <= groups.back().mSeconds; ++mNextFrame) {
        const PhasorFrame frame = mEstimator.frameAt(groups, secondsOf(mNextFrame));
        this->output(stampOf(mNextFrame), frame, output);
    }
    mDemodulator.dropBefore(secondsOf(mNextFrame) - reach);
}

void PhasorMeter::finish(MeasurementOutput& /*output*/) {}

/** Time of a frame since the first sample. */
double PhasorMeter::secondsOf(qint64 frame) const
{
    const qint64 wholeNs = frame / mRate * waveform::kSecondInNs - mSettings.mBeginUtcNs;
    return static_cast<double>(wholeNs) * base::kSecondsPerNanosecond +
           static_cast<double>(frame % mRate) / static_cast<double>(mRate);
}

qint64 PhasorMeter::stampOf(qint64 frame) const
{
    const qint64 part = (frame % mRate * waveform::kSecondInNs + mRate / 2) / mRate;
    return frame / mRate * waveform::kSecondInNs + part;
}

qint64 PhasorMeter::firstFrameFrom(double seconds) const
{
    const qint64 second = mSettings.mBeginUtcNs / waveform::kSecondInNs;
    const double fromSecond =
        seconds + static_cast<double>(mSettings.mBeginUtcNs % waveform::kSecondInNs) *
                      base::kSecondsPerNanosecond;
    return second * mRate + static_cast<qint64>(std::ceil(fromSecond * static_cast<double>(mRate)));
}

void PhasorMeter::output(qint64 utcNs, const PhasorFrame& frame, MeasurementOutput& output) const
{
    FrameRows rows(utcNs, mSettings, output);
    for (size_t i = 0; i < kPhasorCount; ++i) {
        if (!mSettings.mChannels.test(static_cast<size_t>(kPhasorChannels[i]))) {
            continue;
        }
        rows.add(QuantityId::PhasorMagnitude, QuantityId::PhasorAngle, kPhasorChannels[i],
                 frame.mPhases[i]);
    }
    const auto addSystem = [&](Channel system, Channel first, std::complex<double> phasor) {
        const auto channel = static_cast<size_t>(first);
        if (mSettings.mChannels.test(channel) && mSettings.mChannels.test(channel + 1) &&
            mSettings.mChannels.test(channel + 2)) {
            rows.add(QuantityId::PositivePhasorMagnitude, QuantityId::PositivePhasorAngle, system,
                     phasor);
        }
    };
    addSystem(Channel::U, Channel::UA, frame.mPositiveVoltage);
    addSystem(Channel::I, Channel::IA, frame.mPositiveCurrent);
    if (frame.mHz) {
        rows.add(QuantityId::PhasorFrequency, Channel::None, *frame.mHz);
        rows.add(QuantityId::Rocof, Channel::None, *frame.mHzPerSecond);
    }
}

} // namespace measure
