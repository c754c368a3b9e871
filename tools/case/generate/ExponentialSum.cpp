#include "generate/ExponentialSum.h"
#include "base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace generate {

namespace {
using Complex = std::complex<double>;

/** Bessel functions of an order this much above their argument are below 1e-9. */
constexpr int kSideBandsBeyondIndex = 8;
constexpr double kNegligible = 1e-9;

/** What is sin(phase) as the real part of an exponential. */
Complex sineOf(double degrees)
{
    return std::polar(1.0, (std::fmod(degrees, 360.0) - 90.0) * base::kRadiansPerDegree);
}

/** Sum of exp(rate * n) for n from begin up to end. */
Complex geometricSum(Complex rate, qint64 begin, qint64 end)
{
    constexpr double kNothing = 1e-14;
    const auto count = static_cast<double>(end - begin);
    const Complex ratio = std::exp(rate);
    if (std::abs(1.0 - ratio) < kNothing) {
        return count;
    }
    return std::exp(rate * double(begin)) * (1.0 - std::exp(rate * count)) / (1.0 - ratio);
}

/** A whole number of turns in a period, and no decay. */
bool isPeriodic(Complex rate)
{
    constexpr double kTolerance = 1e-9;
    const double turns = rate.imag() * kSamplesPerPeriod / (2.0 * base::kPi);
    return rate.real() == 0.0 && std::abs(turns - std::round(turns)) < kTolerance;
}
} // namespace

ExponentialSum::ExponentialSum(const WaveParameters& parameters, const Timeline& timeline,
                               size_t channel)
    : mParameters(parameters), mTimeline(timeline), mChannel(channel)
{
    std::vector<qint64> steps = StepEnvelope(parameters, timeline).stepsOf(channel);
    for (const Tone& tone : parameters.mTones) {
        if (tone.mChannels.test(channel)) {
            steps.push_back(timeline.lineAt(tone.mStart));
        }
    }
    std::sort(steps.begin(), steps.end());
    steps.erase(std::unique(steps.begin(), steps.end()), steps.end());
    for (size_t i = 0; i + 1 < steps.size(); ++i) {
        mPieces.push_back(pieceOf(steps[i], steps[i + 1]));
    }
}

ExponentialSum::Piece ExponentialSum::pieceOf(qint64 begin, qint64 end) const
{
    Piece piece{begin, end, {}, true};
    const Fundamental fundamental =
        StepEnvelope(mParameters, mTimeline).fundamentalAt(begin, mChannel);
    addWave(fundamental, 1, 1.0, 0.0, piece);
    for (const Harmonic& harmonic : mParameters.mHarmonics) {
        if (harmonic.mChannels.test(mChannel)) {
            addWave(fundamental, harmonic.mOrder, harmonic.mRatio, harmonic.mPhase, piece);
        }
    }
    for (const Tone& tone : mParameters.mTones) {
        if (tone.mChannels.test(mChannel) && mTimeline.lineAt(tone.mStart) <= begin) {
            addTone(tone, piece);
        }
    }
    for (const Exponential& exponential : piece.mExponentials) {
        piece.mIsSteady = piece.mIsSteady && isPeriodic(exponential.mRate);
    }
    return piece;
}

void ExponentialSum::addWave(const Fundamental& fundamental, int order, double ratio, double phase,
                             Piece& piece) const
{
    const double start = double(piece.mBegin % kSamplesPerPeriod) + fundamental.mPhase;
    std::vector<Exponential> wave{{fundamental.mAmplitude * ratio * sineOf(order * start + phase),
                                   Complex(0.0, order * base::kRadiansPerDegree)}};
    for (const Modulation& modulation : mParameters.mModulations) {
        if (modulation.mShape == ModulationShape::Sine && modulation.mChannels.test(mChannel)) {
            wave = modulated(wave, modulation, order, piece.mBegin);
        }
    }
    piece.mExponentials.insert(piece.mExponentials.end(), wave.begin(), wave.end());
}

/** exp(-i x cos a) is the sum of (-i)^|m| J_|m|(x) exp(i m a) over all m. */
std::vector<ExponentialSum::Exponential> ExponentialSum::modulated(
    const std::vector<Exponential>& exponentials, const Modulation& modulation, int order,
    qint64 begin) const
{
    const double rate = 2.0 * base::kPi * modulation.mHertz / mParameters.samplesPerSecond();
    const double index = std::abs(order * modulation.mPhaseDepth);
    const Complex turn(0.0, modulation.mPhaseDepth < 0.0 ? 1.0 : -1.0);
    const int bands = index > 0.0 ? int(index) + kSideBandsBeyondIndex : 0;
    std::vector<Exponential> result;
    for (const Exponential& carrier : exponentials) {
        for (int band = -bands; band <= bands; ++band) {
            const double bessel =
                bands == 0 ? 1.0 : std::cyl_bessel_j(double(std::abs(band)), index);
            const Complex part = carrier.mAmplitude * std::pow(turn, std::abs(band)) * bessel;
            for (const auto& [side, weight] :
                 {std::pair{0, 1.0}, {1, modulation.mDepth / 2.0}, {-1, modulation.mDepth / 2.0}}) {
                const Complex shift(0.0, (band + side) * rate);
                if (std::abs(bessel * weight) > kNegligible) {
                    result.push_back(
                        {part * weight * std::exp(shift * double(begin)), carrier.mRate + shift});
                }
            }
        }
    }
    return result;
}

void ExponentialSum::addTone(const Tone& tone, Piece& piece) const
{
    const double seconds = mTimeline.secondsOf(piece.mBegin) - tone.mStart;
    const double amplitude = mParameters.mChannels[mChannel].mAmplitude * tone.mRatio *
                             std::exp(-seconds / tone.mTimeConstant);
    const Complex rate(-1.0 / tone.mTimeConstant, 2.0 * base::kPi * tone.mHertz);
    piece.mExponentials.push_back({amplitude * sineOf(360.0 * tone.mHertz * seconds + tone.mPhase),
                                   rate / mParameters.samplesPerSecond()});
}

double ExponentialSum::sumOfSquares(qint64 begin, qint64 end) const
{
    double sum = 0.0;
    for (size_t i = indexOf(begin); i < mPieces.size() && mPieces[i].mBegin < end; ++i) {
        const Piece& piece = mPieces[i];
        const qint64 first = std::max(begin, piece.mBegin) - piece.mBegin;
        const qint64 last = std::min(end, piece.mEnd) - piece.mBegin;
        // Re(a) Re(b) = Re(a b + a conj(b)) / 2
        for (const Exponential& a : piece.mExponentials) {
            for (const Exponential& b : piece.mExponentials) {
                const Complex product =
                    a.mAmplitude * b.mAmplitude * geometricSum(a.mRate + b.mRate, first, last);
                const Complex mixed = a.mAmplitude * std::conj(b.mAmplitude) *
                                      geometricSum(a.mRate + std::conj(b.mRate), first, last);
                sum += (product + mixed).real() / 2.0;
            }
        }
    }
    return sum;
}

bool ExponentialSum::isSteady(qint64 begin, qint64 end) const
{
    const Piece& piece = mPieces[indexOf(begin)];
    return piece.mIsSteady && end <= piece.mEnd;
}

size_t ExponentialSum::indexOf(qint64 line) const
{
    const auto behind =
        std::upper_bound(mPieces.begin(), mPieces.end(), line,
                         [](qint64 wanted, const Piece& piece) { return wanted < piece.mBegin; });
    return size_t(behind - mPieces.begin()) - 1;
}

} // namespace generate
