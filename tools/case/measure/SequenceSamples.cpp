#include "measure/SequenceSamples.h"

#include <cmath>
#include <complex>

#include "SampleRecord.h"
#include "base/RaisedCosine.h"
#include "base/Sums.h"

namespace measure {

namespace {
constexpr size_t kFirstCurrentChannel = kChannelCount / 2;

double squareSum(const double* window, const double* values, size_t count)
{
    double sum = 0.0;
    for (size_t i = 0; i < count; ++i) {
        sum += window[i] * values[i] * values[i];
    }
    return sum;
}

void dropFront(std::vector<double>& values, size_t count)
{
    values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
}
} // namespace

void SequenceSamples::append(const waveform::SignalBlock& block)
{
    const double sine = std::sin(base::kTwoPi / 3.0);
    for (size_t system = 0; system < mSequences.size(); ++system) {
        Sequence& sequence = mSequences[system];
        const size_t first = system * kFirstCurrentChannel;
        const std::vector<double>& a = block.mValues[first];
        const std::vector<double>& b = block.mValues[first + 1];
        const std::vector<double>& c = block.mValues[first + 2];
        for (size_t i = 0; i < block.size(); ++i) {
            sequence.mReal.push_back(a[i] - 0.5 * (b[i] + c[i]));
            sequence.mImaginary.push_back(sine * (b[i] - c[i]));
        }
    }
}

void SequenceSamples::dropBefore(size_t line)
{
    constexpr size_t kWorthIt = 8192;
    if (line < mFirst + kWorthIt) {
        return;
    }
    for (Sequence& sequence : mSequences) {
        dropFront(sequence.mReal, line - mFirst);
        dropFront(sequence.mImaginary, line - mFirst);
    }
    mFirst = line;
}

bool SequenceSamples::covers(size_t middle, double cyclesPerLine) const
{
    const auto half = static_cast<size_t>(1.0 / cyclesPerLine);
    return middle >= mFirst + half && middle + half < end();
}

/** The window extends over one period on either side. */
void SequenceSamples::prepareWeights(double cyclesPerLine)
{
    if (cyclesPerLine == mCyclesPerLine) {
        return;
    }
    mCyclesPerLine = cyclesPerLine;
    const auto half = static_cast<int>(1.0 / cyclesPerLine);
    mWindowLength = 2 * static_cast<size_t>(half) + 1;
    mWindow.clear();
    mCos.clear();
    mSin.clear();
    mWindowSum = 0.0;
    const std::complex<double> step = std::polar(1.0, base::kTwoPi * cyclesPerLine);
    std::complex<double> rotation = std::polar(1.0, -base::kTwoPi * cyclesPerLine * half);
    for (int i = -half; i <= half; ++i) {
        const double window = base::raisedCosine(i * cyclesPerLine);
        mWindow.push_back(window);
        mCos.push_back(window * rotation.real());
        mSin.push_back(window * rotation.imag());
        mWindowSum += window;
        rotation *= step;
    }
}

SequenceSamples::Phasor SequenceSamples::measure(PhaseReference reference, size_t middle,
                                                 double cyclesPerLine)
{
    prepareWeights(cyclesPerLine);
    const bool isCurrent =
        reference == PhaseReference::Currents || reference == PhaseReference::ReversedCurrents;
    const bool isReversed = reference == PhaseReference::ReversedVoltages ||
                            reference == PhaseReference::ReversedCurrents;
    const Sequence& sequence = mSequences[isCurrent ? 1 : 0];
    const size_t begin = middle - mFirst - mWindowLength / 2;
    const double* const real = sequence.mReal.data() + begin;
    const double* const imaginary = sequence.mImaginary.data() + begin;
    const double sign = isReversed ? -1.0 : 1.0;
    const size_t count = mWindowLength;
    const std::complex<double> sum(base::dotProduct(real, mCos.data(), count) +
                                       sign * base::dotProduct(imaginary, mSin.data(), count),
                                   sign * base::dotProduct(imaginary, mCos.data(), count) -
                                       base::dotProduct(real, mSin.data(), count));
    const std::complex<double> phasor = sum / mWindowSum;
    const double power =
        (squareSum(mWindow.data(), real, count) + squareSum(mWindow.data(), imaginary, count)) /
        mWindowSum;
    return {std::abs(phasor), std::arg(phasor) / base::kTwoPi,
            power > 0.0 ? std::norm(phasor) / power : 0.0};
}

} // namespace measure
