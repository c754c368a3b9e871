#include "PmeSimulation.h"

#include <array>
#include <cmath>
#include <type_traits>

#include "FixedPaths.h"
#include "TrackLog.h"

namespace {
constexpr quint32 kPmeMark = 2;
constexpr quint32 kMarkOffsetNanoseconds = 12345678;

constexpr int kPeriods = 100;
constexpr int kPointsPerPeriod = 120;
constexpr int kDegreesPerPoint = 3;
constexpr double kDegreesPerHalfTurn = 180.0;
constexpr double kPi = 3.14159265358979323846;
constexpr double kSquareRootOfHalf = 0.7071067811865476;
constexpr int kFirstAmplitude = 101;

/** The frame in the device's format, little-endian. Unused fields are 0. */
struct PmeFrame
{
    std::array<quint8, 8476> mHeader;
    struct Row
    {
        std::array<float, kPointsPerPeriod> mPoints;
        float mUnused;
    };
    std::array<Row, kPeriods> mRows;
};
static_assert(sizeof(PmeFrame) == 56876, "the device takes frames of 56876 bytes");
static_assert(std::is_trivially_copyable_v<PmeFrame>, "frames are written as bytes");

using SineTable = std::array<float, kPointsPerPeriod>;

/** One period of a sine in steps of 3 degrees. */
SineTable makeSineTable()
{
    SineTable table{};
    for (int point = 0; point < kPointsPerPeriod; ++point) {
        const double angle = kDegreesPerPoint * point * kPi / kDegreesPerHalfTurn;
        table[static_cast<size_t>(point)] = static_cast<float>(std::sin(angle));
    }
    return table;
}

void fillFrame(PmeFrame* frame)
{
    static const SineTable kSine = makeSineTable();
    *frame = {};
    int amplitudeFactor = kFirstAmplitude;
    for (PmeFrame::Row& row : frame->mRows) {
        const auto amplitude = static_cast<float>(amplitudeFactor++ * kSquareRootOfHalf);
        for (size_t point = 0; point < kSine.size(); ++point) {
            row.mPoints[point] = amplitude * kSine[point];
        }
    }
}
} // namespace

PmeSimulation::PmeSimulation()
    : mDeviceName(QString::fromLatin1(kPmeDevicePath)), mMarkOffset(kMarkOffsetNanoseconds)
{
    initTrack("Configuration");
    mDevice.reset(new QFile(deviceName()));
    if (!QFile::exists(deviceName())) { // the member function does not check the target of a link
        mDevice.reset();
        logInfo(mLogger, LOG4CXX_LOCATION, [this] {
            return "Pme-Device:" + local8Bit(deviceName()) + " not found, no Pme-Simulation";
        });
        return;
    }
    // Unbuffered: the device sees one write per frame, and a failure shows at once.
    if (!mDevice->open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        logError(mLogger, LOG4CXX_LOCATION,
                 [this] { return "coud not open Device:" + local8Bit(deviceName()); });
    }
}

PmeSimulation::~PmeSimulation() = default;

bool PmeSimulation::markRecords(SampleRecord* records, qint32 count)
{
    bool marked = false;
    for (qint32 index = 0; index < count; ++index) {
        SampleRecord& record = records[index];
        record.mFlags &= ~kPmeMark;
        if (isMarkPoint(record)) {
            record.mFlags |= kPmeMark;
            marked = true;
        }
    }
    return marked;
}

/** Steps the state machine by one record; true if this record is to be marked. */
bool PmeSimulation::isMarkPoint(const SampleRecord& record)
{
    if (mMarkState == MarkState::WaitingForNewSecond) {
        if (record.mSeconds > mLastSecond) {
            mLastSecond = record.mSeconds;
            mMarkState = MarkState::WaitingForMarkPoint;
        }
        return false;
    }
    if (record.mNanoseconds <= mMarkOffset) {
        return false;
    }
    mMarkState = MarkState::WaitingForNewSecond;
    return true;
}

qint32 PmeSimulation::processRecords(SampleRecord* records, qint32 count)
{
    if (!markRecords(records, count) || !mDevice) {
        return 0;
    }
    PmeFrame frame;
    fillFrame(&frame);
    return static_cast<qint32>(
        mDevice->write(reinterpret_cast<const char*>(&frame), sizeof(frame)));
}
