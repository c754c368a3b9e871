#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace comtrade {

/** Begins the heading of each section of a single file. */
inline constexpr std::string_view kSectionMark = "---";

/**
 * What the configuration part of a COMTRADE recording says: plain data, for who reads one and who
 * writes one. Texts are UTF-8 without blanks at their ends.
 */
enum class ComtradeRevision
{
    k1991 = 1991,
    k1999 = 1999,
    k2013 = 2013
};

/** How a value stands in the data part. */
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
    int mNumber = 0;
    std::string mName;
    std::string mPhase;
    std::string mComponent; ///< the circuit component that is watched
    std::string mUnit;
    double mFactor = 1.0;
    double mOffset = 0.0;
    double mSkewMicroseconds = 0.0; ///< the value was taken that much after its sample's time
    double mSmallest = -32768.0;    ///< of the numbers in the data part, as announced
    double mLargest = 32767.0;
    double mPrimary = 1.0; ///< of the transformer's ratio; 0 where it is not told
    double mSecondary = 1.0;
    char mSide = ' '; ///< 'P' or 'S' for what the values belong to; ' ' where it is not told
};

/** A channel of states. */
struct ComtradeStatus
{
    int mNumber = 0;
    std::string mName;
    std::string mPhase;
    std::string mComponent;
    int mNormalState = 0;
};

struct ComtradeRate
{
    double mHz = 0.0;
    size_t mLastSample = 0; ///< number of the last sample at this rate, counted from 1
};

struct ComtradeHeader
{
    std::string mStation;
    std::string mDevice;
    ComtradeRevision mRevision = ComtradeRevision::k1999;
    std::vector<ComtradeAnalog> mAnalogs;
    std::vector<ComtradeStatus> mStatuses;
    double mNominalHz = 0.0; ///< 0 where it is not told
    /** Empty where there is no rate and time stamps say when a sample was taken. */
    std::vector<ComtradeRate> mRates;
    size_t mAnnouncedSamples = 0; ///< 0 where no number is told
    std::string mStartTime;       ///< of the first sample: "2015-11-18 05:33:03.765333"
    std::string mTriggerTime;     ///< likewise
    ComtradeKind mKind = ComtradeKind::kAscii;
    double mStampSeconds = 1e-6; ///< what 1 in a time stamp is worth, its factor included
};

/** "ASCII", "BINARY", "BINARY32", "FLOAT32". */
const char* nameOf(ComtradeKind kind);

/** The kind of that name, whatever its case; false when there is none. */
bool parseKind(std::string_view name, ComtradeKind* kind);

} // namespace comtrade
