#include "measure/WindowRows.h"

#include <algorithm>
#include <cmath>

namespace measure {

namespace {
constexpr double kPercent = 100.0;

/**
 * A fundamental whose square is below this part of the square of the nominal value or of the
 * largest channel is noise.
 */
constexpr double kNoiseShare = 1e-10;

/** How far the last line of a subgroup is above its order; the larger one of 10 and 12 periods. */
constexpr double kHarmonicReach = 0.1;
constexpr double kInterharmonicReach = 10.0 / 12.0;

double percentOf(double square, double whole)
{
    return kPercent * std::sqrt(square / whole);
}

bool hasAllPhases(const std::bitset<kChannelCount>& channels, size_t first)
{
    return channels.test(first) && channels.test(first + 1) && channels.test(first + 2);
}
} // namespace

WindowRows::WindowRows(const Selection& selection, const MeterSettings& settings)
    : mHasRms(selection.has(QuantityId::Rms)),
      mHasThd(selection.has(QuantityId::Thd)),
      mHasHarmonics(selection.has(QuantityId::Harmonic)),
      mHasInterharmonics(selection.has(QuantityId::Interharmonic)),
      mHasUnbalance(selection.has(QuantityId::PositiveSequence)),
      mHasPower(selection.has(QuantityId::ActivePower)),
      mChannels(settings.mChannels),
      mNominalSquares{settings.mNominalVolts * settings.mNominalVolts,
                      settings.mNominalAmperes * settings.mNominalAmperes},
      mMaxHertz(settings.mMaxHertz)
{
}

void WindowRows::put(QuantityId id, Channel channel, double value, int order)
{
    mRow.mKind.mId = id;
    mRow.mKind.mOrder = order;
    mRow.mChannel = channel;
    mRow.mValue = value;
    mRows.push_back(mRow);
}

const std::vector<Measurement>& WindowRows::rowsOf(const WindowValues& values, qint64 utcNs,
                                                   double hertz)
{
    mRows.clear();
    mRow.mUtcNs = utcNs;
    mHertz = hertz;
    std::array<double, 2> largest = mNominalSquares;
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        double& ofSystem = largest[channel / (kChannelCount / 2)];
        ofSystem = std::max(ofSystem, values.mChannels[channel].mHarmonics[1]);
    }
    for (size_t channel = 0; channel < kChannelCount; ++channel) {
        if (mChannels.test(channel)) {
            writeChannel(values.mChannels[channel], deviceChannel(channel),
                         largest[channel / (kChannelCount / 2)]);
        }
    }
    if (mHasUnbalance && hasAllPhases(mChannels, 0)) {
        writeSequences(values, 0);
    }
    if (mHasUnbalance && hasAllPhases(mChannels, kChannelCount / 2)) {
        writeSequences(values, 1);
    }
    if (mHasPower) {
        writePower(values);
    }
    return mRows;
}

void WindowRows::writeChannel(const ChannelSquares& squares, Channel channel, double largest)
{
    if (mHasRms) {
        put(QuantityId::Rms, channel, std::sqrt(squares.mRms));
    }
    const double fundamental = squares.mHarmonics[1];
    if (!(fundamental > kNoiseShare * largest)) {
        return;
    }
    if (mHasThd) {
        double sum = 0.0;
        for (size_t order = 2; order <= kLastOrder && isInBand(QuantityId::Harmonic, order);
             ++order) {
            sum += squares.mHarmonics[order];
        }
        put(QuantityId::Thd, channel, percentOf(sum, fundamental));
    }
    if (mHasHarmonics) {
        writeOrders(QuantityId::Harmonic, squares.mHarmonics.data(), fundamental, channel);
    }
    if (mHasInterharmonics) {
        writeOrders(QuantityId::Interharmonic, squares.mInterharmonics.data(), fundamental,
                    channel);
    }
}

/** Whether the subgroup, including its last line, is within the bandwidth of the signal. */
bool WindowRows::isInBand(QuantityId id, size_t order) const
{
    const double aboveOrder = id == QuantityId::Harmonic ? kHarmonicReach : kInterharmonicReach;
    return (static_cast<double>(order) + aboveOrder) * mHertz < mMaxHertz;
}

void WindowRows::writeOrders(QuantityId id, const double* squares, double fundamental,
                             Channel channel)
{
    const Quantity& quantity = quantityOf(id);
    for (int order = quantity.mFirstOrder; order <= quantity.mLastOrder; ++order) {
        if (isInBand(id, static_cast<size_t>(order))) {
            put(id, channel, percentOf(squares[order], fundamental), order);
        }
    }
}

/** @param number 0: of the voltages, 1: of the currents */
void WindowRows::writeSequences(const WindowValues& values, size_t number)
{
    const SequenceSquares& squares = values.mSequences[number];
    const bool isVoltage = number == 0;
    const Channel system = isVoltage ? Channel::U : Channel::I;
    const double largest = std::max({squares.mNegative, squares.mZero, mNominalSquares[number]});
    if (squares.mPositive > kNoiseShare * largest) {
        put(isVoltage ? QuantityId::NegativeVoltageUnbalance : QuantityId::NegativeCurrentUnbalance,
            system, percentOf(squares.mNegative, squares.mPositive));
        put(isVoltage ? QuantityId::ZeroVoltageUnbalance : QuantityId::ZeroCurrentUnbalance, system,
            percentOf(squares.mZero, squares.mPositive));
    }
    put(QuantityId::PositiveSequence, system, std::sqrt(squares.mPositive));
    put(QuantityId::NegativeSequence, system, std::sqrt(squares.mNegative));
    put(QuantityId::ZeroSequence, system, std::sqrt(squares.mZero));
}

void WindowRows::writePower(const WindowValues& values)
{
    PhasePower total;
    bool hasAll = true;
    for (size_t phase = 0; phase < kPhases; ++phase) {
        const PhasePower& power = values.mPower[phase];
        if (!mChannels.test(phase) || !mChannels.test(kChannelCount / 2 + phase)) {
            hasAll = false;
            continue;
        }
        writePower(power, static_cast<Channel>(static_cast<size_t>(Channel::A) + phase));
        total.mActive += power.mActive;
        total.mReactive += power.mReactive;
        total.mApparent += power.mApparent;
    }
    if (hasAll) {
        writePower(total, Channel::Total);
    }
}

void WindowRows::writePower(const PhasePower& power, Channel channel)
{
    put(QuantityId::ActivePower, channel, power.mActive);
    put(QuantityId::ReactivePower, channel, power.mReactive);
    put(QuantityId::ApparentPower, channel, power.mApparent);
    if (power.mApparent > 0.0) {
        put(QuantityId::PowerFactor, channel, power.mActive / power.mApparent);
    }
}

} // namespace measure
