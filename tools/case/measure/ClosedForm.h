#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "measure/Measurement.h"
#include "measure/Meter.h"

namespace measure {

/**
 * The values in closed form from a truth file of vx-case generate: rms, harmonics, thd, unbalance
 * and frequency, if no disturbance, tone or modulation is in the window.
 */
class ClosedForm
{
public:
    /**
     * @param scale counts per volt and per ampere
     * @throws CaseError for a file that cannot be read, or does not describe such a signal
     */
    ClosedForm(const std::string& path, std::array<double, 2> scale, const MeterSettings& settings);

    /** Number of lines of its signal. */
    size_t lines() const { return mLines; }

    /** The value of a row, if it is known. */
    std::optional<double> valueOf(const Measurement& row) const;

private:
    struct Channel
    {
        double mRms = 0.0; ///< V or A
        std::optional<double> mThd;
        std::array<std::optional<double>, 51> mPercents; ///< of the harmonics, by their order
        bool mHasHarmonics = false;                      ///< they and the rms are known
    };

    /** A time without values in closed form, s from the first line. */
    struct Span
    {
        double mBegin;
        double mEnd;
    };

    bool isUndisturbed(double begin, double end) const;
    double secondsOf(const RowKind& kind) const;
    std::optional<double> channelValue(const Channel& channel, const RowKind& kind) const;

    MeterSettings mSettings;
    size_t mLines = 0;
    double mSeconds = 0.0;
    std::array<Channel, kChannelCount> mChannels;
    std::optional<double> mNegativePercent;
    std::optional<double> mZeroPercent;
    std::optional<double> mHertz; ///< if it is constant
    bool mIsModulated = false;
    std::vector<Span> mDisturbed;

    friend class TruthReader;
};

/** Replaces a measured value by the one in closed form, if there is one. */
class ClosedFormOutput : public MeasurementOutput
{
public:
    /** Borrows both. */
    ClosedFormOutput(const ClosedForm& closedForm, MeasurementOutput& output)
        : mClosedForm(closedForm), mOutput(output)
    {
    }

    void add(const Measurement& value) override;

    /** The first measured rms that differs from closed form, in words; empty if there is none. */
    const std::string& disagreement() const { return mDisagreement; }

private:
    void compare(const Measurement& measured, double known);

    const ClosedForm& mClosedForm;
    MeasurementOutput& mOutput;
    std::string mDisagreement;
};

} // namespace measure
