#include "measure/ClosedForm.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "base/Numbers.h"
#include "measure/UtcText.h"

namespace measure {

namespace {
using Json = nlohmann::json;

constexpr double kForever = std::numeric_limits<double>::infinity();

Json parseTruth(const std::string& path)
{
    base::InputFile file(path);
    file.setPart(0, file.size());
    const Json truth = Json::parse(file.peek(file.size()), nullptr, false);
    const bool isWave = truth.is_object() && truth.contains("frequency") &&
                        truth.contains("channels") && truth["channels"].is_array() &&
                        truth["channels"].size() == kChannelCount;
    if (!isWave) {
        throw base::CaseError(path +
                              ": expected a file of vx-case generate --truth, for a signal or "
                              "options (not for states)");
    }
    return truth;
}

std::optional<double> optionalNumber(const Json& object, const char* name)
{
    const auto found = object.find(name);
    return found == object.end() || found->is_null() ? std::nullopt
                                                     : std::optional(found->get<double>());
}
} // namespace

/** Reads the truth of a signal into a closed form. */
class TruthReader
{
public:
    TruthReader(const Json& truth, ClosedForm& closedForm) : mTruth(truth), mForm(closedForm) {}

    void read(std::array<double, 2> scale)
    {
        mForm.mLines = mTruth.at("lines").get<size_t>();
        mForm.mSeconds = mTruth.at("seconds").get<double>();
        mForm.mHertz = optionalNumber(mTruth.at("frequency"), "hertz");
        for (size_t channel = 0; channel < kChannelCount; ++channel) {
            readChannel(mTruth.at("channels").at(channel), scale[channel / (kChannelCount / 2)],
                        mForm.mChannels[channel]);
        }
        if (mTruth.contains("unbalance") && mTruth["unbalance"].is_object()) {
            mForm.mNegativePercent = optionalNumber(mTruth["unbalance"], "negativePercent");
            mForm.mZeroPercent = optionalNumber(mTruth["unbalance"], "zeroPercent");
        }
        mForm.mIsModulated = !mTruth.at("modulations").empty();
        for (const Json& disturbance : mTruth.at("disturbances")) {
            mForm.mDisturbed.push_back({disturbance.at("begin").at("seconds").get<double>(),
                                        disturbance.at("end").at("seconds").get<double>()});
        }
        for (const Json& tone : mTruth.at("tones")) {
            mForm.mDisturbed.push_back({tone.at("begin").at("seconds").get<double>(), kForever});
        }
    }

private:
    static void readChannel(const Json& json, double countsPerUnit, ClosedForm::Channel& channel)
    {
        channel.mHasHarmonics = json.contains("harmonics");
        if (!channel.mHasHarmonics) {
            return;
        }
        const auto fundamental = json.at("fundamentalRms").get<double>();
        double squares = fundamental * fundamental;
        double percents = 0.0; // their squares
        for (const Json& harmonic : json.at("harmonics")) {
            const auto order = harmonic.at("order").get<size_t>();
            const auto rms = harmonic.at("rms").get<double>();
            squares += rms * rms;
            if (order < channel.mPercents.size()) {
                channel.mPercents[order] = optionalNumber(harmonic, "percent");
                const double percent = channel.mPercents[order].value_or(0.0);
                percents += percent * percent;
            }
        }
        // The file has that of all orders, which is another one if some are above 50.
        if (optionalNumber(json, "thdPercent")) {
            channel.mThd = std::sqrt(percents);
        }
        channel.mRms = std::sqrt(squares) / countsPerUnit;
    }

    const Json& mTruth;
    ClosedForm& mForm;
};

ClosedForm::ClosedForm(const std::string& path, std::array<double, 2> scale,
                       const MeterSettings& settings)
    : mSettings(settings)
{
    const Json truth = parseTruth(path);
    try {
        TruthReader(truth, *this).read(scale);
    } catch (const Json::exception& error) {
        throw base::CaseError(path + ": " + error.what());
    }
}

/** Max length of the window of a row in s: 5 % longer than at the frequency of the file. */
double ClosedForm::secondsOf(const RowKind& kind) const
{
    constexpr double kTenMinutes = 600.0;
    constexpr double kThreeSeconds = 3.0;
    constexpr double kWindow = 0.2;
    const double hertz = mHertz.value_or(mSettings.mNominalHz);
    const double longer = 1.05 * mSettings.mNominalHz / hertz;
    if (kind.mInterval == Interval::TenMinutes) {
        return kTenMinutes + kWindow * longer; // its first window may begin earlier
    }
    if (kind.mInterval == Interval::ThreeSeconds) {
        return kThreeSeconds * longer;
    }
    return kind.mId == QuantityId::RmsHalf ? longer / mSettings.mNominalHz : kWindow * longer;
}

bool ClosedForm::isUndisturbed(double begin, double end) const
{
    return std::none_of(mDisturbed.begin(), mDisturbed.end(),
                        [=](const Span& span) { return span.mBegin < end && span.mEnd > begin; });
}

std::optional<double> ClosedForm::valueOf(const Measurement& row) const
{
    if (mIsModulated) {
        return std::nullopt;
    }
    const QuantityId id = row.mKind.mId;
    if (id == QuantityId::Frequency || id == QuantityId::FrequencyTenSeconds) {
        return mHertz;
    }
    const double end =
        static_cast<double>(row.mUtcNs - mSettings.mBeginUtcNs) * base::kSecondsPerNanosecond;
    if (!isUndisturbed(end - secondsOf(row.mKind), end)) {
        return std::nullopt;
    }
    if (id == QuantityId::NegativeVoltageUnbalance) {
        return mNegativePercent;
    }
    if (id == QuantityId::ZeroVoltageUnbalance) {
        return mZeroPercent;
    }
    const auto channel = static_cast<size_t>(row.mChannel);
    return channel < mChannels.size() ? channelValue(mChannels[channel], row.mKind) : std::nullopt;
}

std::optional<double> ClosedForm::channelValue(const Channel& channel, const RowKind& kind) const
{
    if (!channel.mHasHarmonics) {
        return std::nullopt;
    }
    switch (kind.mId) {
        case QuantityId::RmsHalf:
        case QuantityId::Rms:
            return channel.mRms;
        case QuantityId::Thd:
            return channel.mThd;
        case QuantityId::Harmonic:
            return channel.mThd ? channel.mPercents[static_cast<size_t>(kind.mOrder)].value_or(0.0)
                                : channel.mThd;
        default:
            return std::nullopt;
    }
}

void ClosedFormOutput::compare(const Measurement& measured, double known)
{
    constexpr double kSame = 1e-3; // the measuring error is 20 ppm at most
    constexpr double kRounding = 0.01;
    const QuantityId id = measured.mKind.mId;
    const bool isRms = id == QuantityId::Rms || id == QuantityId::RmsHalf;
    if (isRms && mDisagreement.empty() &&
        std::abs(measured.mValue - known) > kSame * known + kRounding) {
        mDisagreement = fmt::format("the {} of {} at {} is {:.7g}, but the file has {:.7g}",
                                    nameOf(measured.mKind), nameOf(measured.mChannel),
                                    UtcText().of(measured.mUtcNs), measured.mValue, known);
    }
}

void ClosedFormOutput::add(const Measurement& value)
{
    Measurement row = value;
    if (const auto known = mClosedForm.valueOf(value)) {
        compare(value, *known);
        row.mValue = *known;
        row.mOrigin = Origin::ClosedForm;
    }
    mOutput.add(row);
}

} // namespace measure
