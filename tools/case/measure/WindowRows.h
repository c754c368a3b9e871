#pragma once

#include <array>
#include <bitset>
#include <vector>

#include "measure/Meter.h"
#include "measure/Selection.h"
#include "measure/WindowValues.h"

namespace measure {

/**
 * Makes rows from the values of a window. A percentage gets no row if what it refers to is nothing:
 * below 0.001 % of the nominal value or of the largest channel.
 */
class WindowRows
{
public:
    WindowRows(const Selection& selection, const MeterSettings& settings);

    /**
     * @param hertz of the fundamental
     * @return valid until the next call
     */
    const std::vector<Measurement>& rowsOf(const WindowValues& values, qint64 utcNs, double hertz);

private:
    void writeChannel(const ChannelSquares& squares, Channel channel, double voltage);
    void writeOrders(QuantityId id, const double* squares, double fundamental, Channel channel);
    void writeSequences(const WindowValues& values, size_t number);
    void writePower(const WindowValues& values);
    void writePower(const PhasePower& power, Channel channel);
    bool isInBand(QuantityId id, size_t order) const;
    void put(QuantityId id, Channel channel, double value, int order = 0);

    bool mHasRms;
    bool mHasThd;
    bool mHasHarmonics;
    bool mHasInterharmonics;
    bool mHasUnbalance;
    bool mHasPower;
    std::bitset<kChannelCount> mChannels;
    std::array<double, 2> mNominalSquares; ///< of voltage and current
    double mMaxHertz;
    Measurement mRow; ///< the next one, with the fields that all rows of a window share
    double mHertz = 0.0;
    std::vector<Measurement> mRows;
};

} // namespace measure
