#include "measure/SignalCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "SampleRecord.h"
#include "base/Numbers.h"

namespace measure {

namespace {
const std::array<std::complex<double>, kSamplesPerPeriod>& rotations()
{
    static const auto kRotations = [] {
        std::array<std::complex<double>, kSamplesPerPeriod> all;
        for (size_t i = 0; i < all.size(); ++i) {
            all[i] = std::polar(1.0, -base::kTwoPi * static_cast<double>(i) / kSamplesPerPeriod);
        }
        return all;
    }();
    return kRotations;
}

/** Whether the negative sequence clearly dominates, also over a residue of equal phases. */
bool isPhaseOrderReversed(const std::array<std::complex<double>, 3>& phases)
{
    const std::complex<double> third = std::polar(1.0, base::kTwoPi / 3.0);
    const double positive = std::abs(phases[0] + third * phases[1] + std::conj(third) * phases[2]);
    const double negative = std::abs(phases[0] + std::conj(third) * phases[1] + third * phases[2]);
    const double largest =
        std::max({std::abs(phases[0]), std::abs(phases[1]), std::abs(phases[2])});
    constexpr double kClearly = 1.5;
    return negative > kClearly * positive && negative > kClearly * largest;
}
} // namespace

void SignalCheck::add(const waveform::SignalBlock& block)
{
    for (size_t begin = 0; begin < block.size();) {
        const size_t end = std::min(block.size(), begin + kSamplesPerPeriod - mLine);
        addLines(block, begin, end);
        mLine += end - begin;
        begin = end;
        if (mLine == kSamplesPerPeriod) {
            endPeriod();
            mLine = 0;
        }
    }
}

void SignalCheck::addLines(const waveform::SignalBlock& block, size_t begin, size_t end)
{
    const std::complex<double>* const rotation = &rotations()[mLine];
    for (size_t system = 0; system < mSystems.size(); ++system) {
        for (size_t phase = 0; phase < kPhases; ++phase) {
            const double* const values = block.mValues[system * kChannelCount / 2 + phase].data();
            Phase sums = mSystems[system].mPhases[phase];
            for (size_t i = begin; i < end; ++i) {
                sums.mSquares += values[i] * values[i];
                sums.mFundamental += values[i] * rotation[i - begin];
            }
            mSystems[system].mPhases[phase] = sums;
        }
    }
}

void SignalCheck::endPeriod()
{
    for (size_t phase = 0; phase < kPhases; ++phase) {
        const double rms = std::sqrt(mSystems[0].mPhases[phase].mSquares / kSamplesPerPeriod);
        mLevels[phase].add(rms);
    }
    for (System& system : mSystems) {
        const auto& phases = system.mPhases;
        const bool isThere = std::any_of(phases.begin(), phases.end(),
                                         [](const Phase& it) { return it.mSquares > 0.0; });
        system.mPeriods += isThere ? 1 : 0;
        system.mReversed += isPhaseOrderReversed({phases[0].mFundamental, phases[1].mFundamental,
                                                  phases[2].mFundamental})
                                ? 1
                                : 0;
        system.mPhases = {};
    }
}

std::vector<std::string> SignalCheck::remarks() const
{
    std::vector<std::string> remarks;
    if (const auto median = medianFarFrom(mLevels, mNominalVolts)) {
        remarks.push_back(
            fmt::format("the median of its voltages is {:.3g} V, but the nominal voltage is {:g} "
                        "V: events may be missed; see --nominal and --scale",
                        *median, mNominalVolts));
    }
    const std::array<const char*, 2> names{"voltages", "currents"};
    for (size_t system = 0; system < mSystems.size(); ++system) {
        if (2 * mSystems[system].mReversed > mSystems[system].mPeriods) {
            remarks.push_back(fmt::format(
                "the negative sequence of the {} is larger than the positive one: are two phases "
                "swapped?",
                names[system]));
        }
    }
    return remarks;
}

} // namespace measure
