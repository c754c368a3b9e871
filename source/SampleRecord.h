#pragma once

#include <QtGlobal>
#include <type_traits>

/** ADC channels of one sample set. */
inline constexpr int kChannelCount = 8;

/** Samples of one signal period, one per degree of phase; also the maximum of records in one block.
 */
inline constexpr int kSamplesPerPeriod = 360;

/**
 * One sample set as the sample buffer takes it: twelve little-endian 32-bit words, 48 bytes, no
 * padding. This is the only description of these bytes: an InputValueItem is a record with what
 * the simulator must know beside it, and the sample writer, the PME simulation and the stand-in
 * driver work on records.
 */
struct SampleRecord
{
    quint32 mSeconds;              ///< time stamp on the simulated clock, whole seconds
    quint32 mNanoseconds;          ///< time stamp, nanoseconds within the second, 0 to 999,999,999
    quint32 mAuxWord;              ///< carried unchanged from the input
    quint32 mFlags;                ///< flag bits from the input; bit 1 (value 2) is the PME mark
    qint32 mValues[kChannelCount]; ///< one value per ADC channel
};

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "records go to the driver as they lie in memory");
static_assert(sizeof(SampleRecord) == 48, "the driver takes records of 48 bytes");
static_assert(std::is_standard_layout_v<SampleRecord> && std::is_trivially_copyable_v<SampleRecord>,
              "records are copied as bytes");
