#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "waveform/SignalSource.h"

namespace comtrade {

/** Begins the heading of each section of a single file. */
inline constexpr std::string_view kSectionMark = "---";

enum class ComtradeRevision
{
    k1991 = 1991,
    k1999 = 1999,
    k2013 = 2013
};

/** The format of values in the data part. */
enum class ComtradeKind
{
    kAscii,
    kBinary,   ///< 16-bit integers
    kBinary32, ///< 32-bit integers
    kFloat32
};

/** A channel of numbers: the value is mFactor times the number in the data part, plus mOffset. */
struct ComtradeAnalog
{
    waveform::ChannelDescription mChannel;
    double mFactor = 1.0;
    double mOffset = 0.0;
    double mSmallest = -32768.0; ///< of the numbers in the data part, as announced
    double mLargest = 32767.0;
};

/**
 * The content of the configuration part of a COMTRADE recording: plain data, for its reader and its
 * writer. Texts are UTF-8 without blanks at their ends.
 */
struct ComtradeHeader
{
    std::string mStation;
    std::string mDevice;
    ComtradeRevision mRevision = ComtradeRevision::k1999;
    std::vector<ComtradeAnalog> mAnalogs;
    std::vector<waveform::StatusChannel> mStatuses; ///< without states
    double mNominalHz = 0.0;                        ///< 0 if the file has none
    /** Empty if there is no rate and time stamps give the time of each sample. */
    std::vector<waveform::SampleRate> mRates;
    size_t mAnnouncedSamples = 0; ///< 0 if no number is announced
    std::string mStartTime;       ///< of the first sample: "2015-11-18 05:33:03.765333"
    std::string mTriggerTime;     ///< likewise
    ComtradeKind mKind = ComtradeKind::kAscii;
    double mStampSeconds = 1e-6; ///< unit of a time stamp, including its factor
};

/** "ASCII", "BINARY", "BINARY32", "FLOAT32". */
const char* nameOf(ComtradeKind kind);

/** Finds the kind with this name in any case; false if there is none. */
bool parseKind(std::string_view name, ComtradeKind* kind);

} // namespace comtrade
