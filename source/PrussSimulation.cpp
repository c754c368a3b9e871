#include "PrussSimulation.h"

#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "DriverFile.h"
#include "FixedPaths.h"
#include "SampleStep.h"
#include "TimeUtils.h"
#include "TrackLog.h"

namespace {
constexpr long kNanosecondsPerSecond = 1'000'000'000;
constexpr long kNanosecondsPerMicrosecond = 1000;
constexpr qint64 kMicrosecondsPerSecond = 1'000'000;

constexpr int kBlocksBetweenPacing = 10;

constexpr qint64 kShortestSleepMicroseconds = 2000;
constexpr qint64 kLargestDriftSeconds = 60;
constexpr time_t kMarkIntervalSeconds = 10;

/** Periods are computed in single precision, like steps. */
constexpr float kPeriodUnitsPerSecondF = 1e8F;

constexpr qint32 kR2hFirstChannels = 94578709;
constexpr qint32 kR2hLastChannels = 188918007;

quint32 periodOf(float frequency)
{
    return saturatingToUInt(kPeriodUnitsPerSecondF / frequency);
}

bool isBefore(const timespec& a, const timespec& b)
{
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

/** Time from `earlier` to `later` in whole µs, rounded down; 0 if `later` is not later. */
qint64 microsecondsBetween(const timespec& earlier, const timespec& later)
{
    if (!isBefore(earlier, later)) {
        return 0;
    }
    qint64 seconds = static_cast<qint64>(later.tv_sec) - earlier.tv_sec;
    long nanoseconds = later.tv_nsec - earlier.tv_nsec;
    if (nanoseconds < 0) {
        --seconds;
        nanoseconds += kNanosecondsPerSecond;
    }
    return seconds * kMicrosecondsPerSecond + nanoseconds / kNanosecondsPerMicrosecond;
}

/** On a 32-bit target one call can sleep for about 71 minutes at most. */
void sleepMicroseconds(qint64 microseconds)
{
    constexpr quint64 kLongestCall = std::numeric_limits<unsigned long>::max();
    auto left = static_cast<quint64>(microseconds);
    while (left > 0) {
        const quint64 now = std::min(left, kLongestCall);
        QThread::usleep(static_cast<unsigned long>(now));
        left -= now;
    }
}

QFile* newFile(const char* path)
{
    return new DriverFile(QString::fromLatin1(path));
}

SampleRecord initialR2hRecord()
{
    SampleRecord record{};
    std::fill_n(record.mValues, kChannelCount / 2, kR2hFirstChannels);
    std::fill_n(record.mValues + kChannelCount / 2, kChannelCount / 2, kR2hLastChannels);
    return record;
}
} // namespace

int PrussSimulation::sPacingCountdown = 0;
timespec PrussSimulation::sLastMark = {0, 0};

PrussSimulation::PrussSimulation()
    : mSampleBuffer(newFile(kSampleBufferPath)),
      mH2pFile(newFile(kH2pPath)),
      mF2hFile(newFile(kF2hPath)),
      mD2hFile(newFile(kD2hPath)),
      mR2hFile(newFile(kR2hPath)),
      mF2hRecord{},
      mR2hRecord(initialR2hRecord()),
      mSimTime{},
      mBlock{}
{
    initTrack("PrussSimulation");
    mSimTime = TimeUtils::currentTime();
    logInfo(mLogger, LOG4CXX_LOCATION,
            [this] { return "start time" + std::to_string(mSimTime.tv_sec); });
}

PrussSimulation::~PrussSimulation() = default;

bool PrussSimulation::init()
{
    mSimTime = TimeUtils::currentTime();
    const bool ok =
        openFile(mSampleBuffer, QIODevice::WriteOnly) && openFile(mH2pFile, QIODevice::ReadOnly) &&
        openFile(mF2hFile, QIODevice::WriteOnly) && openFile(mD2hFile, QIODevice::WriteOnly) &&
        openFile(mR2hFile, QIODevice::WriteOnly);
    if (ok) {
        mSimTime = TimeUtils::currentTime();
        mPacedTo = mSimTime;
    }
    return ok;
}

bool PrussSimulation::openFile(QScopedPointer<QFile>& file, QIODevice::OpenMode mode)
{
    // The static QFile::exists() follows links. Opening a dangling link would create a file.
    if (!QFile::exists(file->fileName())) {
        logFatal(mLogger, LOG4CXX_LOCATION, [&] {
            return "openFile : Das Device '" + local8Bit(file->fileName()) + "' existiert nicht.";
        });
        return false;
    }
    if (!file->open(mode | QIODevice::Unbuffered)) {
        logFatal(mLogger, LOG4CXX_LOCATION, [&] {
            return "openFile : Das Device '" + local8Bit(file->fileName()) +
                   local8Bit(QStringLiteral("' kann nicht geöffnet werden"));
        });
        return false;
    }
    return true;
}

qint32 PrussSimulation::writeSamples(InputValues& values)
{
    if (!isReady(LOG4CXX_LOCATION)) {
        return 0;
    }
    InputValueItem* const first = values.nextItem();
    if (first == nullptr) {
        return 1;
    }
    adoptFrequency(values, first->mFrequency, LOG4CXX_LOCATION);
    bool exhausted = false;
    const qint64 samples = assembleBlock(values, first, &exhausted);
    if (!writeBlock(samples, LOG4CXX_LOCATION)) {
        return -1;
    }
    if (sPacingCountdown > 0) {
        --sPacingCountdown;
    } else {
        pace(LOG4CXX_LOCATION);
        writeSideRecords();
        sPacingCountdown = kBlocksBetweenPacing;
    }
    return exhausted ? 1 : 0;
}

/** Logs at the location of its caller, as do all operations here that take a location. */
bool PrussSimulation::isReady(const log4cxx::spi::LocationInfo& location) const
{
    const char* problem = nullptr;
    if (!mSampleBuffer) {
        problem = "Samplebuffer not ready";
    } else if (!mSampleBuffer->isOpen()) {
        problem = "Samplebuffer not open";
    } else if (!mF2hFile) {
        problem = "Peri2HostFile not ready";
    } else if (!mF2hFile->isOpen()) {
        problem = "Peri2HostFile not open";
    }
    if (problem == nullptr) {
        return true;
    }
    logError(mLogger, location, [problem] { return problem; });
    return false;
}

void PrussSimulation::adoptFrequency(InputValues& values, float frequency,
                                     const log4cxx::spi::LocationInfo& location)
{
    const bool isInForce = mSampleStep != 0 && frequency == mCurrentFrequency;
    if (isInForce) {
        return;
    }
    const quint32 step = sampleStepOf(frequency);
    if (!isPlayableStep(step)) {
        refuseFrequency(values, frequency, location);
        return;
    }
    mCurrentFrequency = frequency;
    mSampleStep = step;
    mF2hRecord.period = periodOf(frequency);
}

/** Keeps the current step and period, or starts with those of 50 Hz. */
void PrussSimulation::refuseFrequency(InputValues& values, float frequency,
                                      const log4cxx::spi::LocationInfo& location)
{
    if (mSampleStep == 0) {
        mCurrentFrequency = kDefaultFrequencyHz;
        mSampleStep = sampleStepOf(kDefaultFrequencyHz);
        mF2hRecord.period = periodOf(kDefaultFrequencyHz);
    }
    if (!values.isFirstRefusal()) {
        return;
    }
    logError(mLogger, location, [&] {
        return local8Bit(values.fileName()) + ": frequency of " +
               local8Bit(QString::number(static_cast<double>(frequency))) +
               " Hz cannot be played (step of 0 ns or of a second and more), going on with " +
               local8Bit(QString::number(static_cast<double>(mCurrentFrequency))) + " Hz";
    });
}

/** Stamps and collects the items of one block in mBlock; returns how many. */
qint64 PrussSimulation::assembleBlock(InputValues& values, InputValueItem* item, bool* exhausted)
{
    size_t count = 0;
    while (item != nullptr) {
        advanceClock();
        item->mSeconds = static_cast<quint32>(mSimTime.tv_sec);
        item->mNanoseconds = static_cast<quint32>(mSimTime.tv_nsec);
        mBlock[count++] = *item;
        if (count == mBlock.size()) {
            return static_cast<qint64>(count);
        }
        item = values.nextItem();
    }
    *exhausted = true;
    return static_cast<qint64>(count);
}

void PrussSimulation::advanceClock()
{
    // Both are below one second, so their sum fits 32 bits.
    mSimTime.tv_nsec += static_cast<long>(mSampleStep);
    if (mSimTime.tv_nsec < kNanosecondsPerSecond) {
        return;
    }
    ++mSimTime.tv_sec;
    mSimTime.tv_nsec -= kNanosecondsPerSecond;
    if (mSimTime.tv_sec % kMarkIntervalSeconds == 0) {
        passTenSecondMark();
    }
}

void PrussSimulation::passTenSecondMark()
{
    if (mSimTime.tv_sec != sLastMark.tv_sec) {
        mF2hRecord.markSeconds = static_cast<quint32>(mSimTime.tv_sec);
        mF2hRecord.markNanoseconds = static_cast<quint32>(mSimTime.tv_nsec);
        mF2hRecord.markPeriod = mF2hRecord.period;
    }
    sLastMark = mSimTime;
}

/** An exception from the write counts as success. */
bool PrussSimulation::writeBlock(qint64 samples, const log4cxx::spi::LocationInfo& location)
{
    const qint64 size = samples * static_cast<qint64>(sizeof(SampleRecord));
    qint64 written = 0;
    try {
        written = mSampleBuffer->write(reinterpret_cast<const char*>(mBlock.data()), size);
    } catch (...) {
        logFatal(mLogger, location, [] { return "Sample Buffer Write Error"; });
    }
    if (written < 0) {
        logError(mLogger, location,
                 [this] { return "error writing file " + local8Bit(mSampleBuffer->fileName()); });
        return false;
    }
    mSamplesWritten += static_cast<quint64>(samples);
    return true;
}

/**
 * Sleeps for the time by which the samples are ahead. Sets the simulated clock to the wall clock
 * when they are more than kLargestDriftSeconds apart.
 */
void PrussSimulation::pace(const log4cxx::spi::LocationInfo& location)
{
    timespec wallClock = mPacedTo;
    const bool isRead = readWallClock(&wallClock, location);
    const qint64 lead = microsecondsBetween(wallClock, mSimTime);
    const qint64 drift = static_cast<qint64>(mSimTime.tv_sec) - wallClock.tv_sec;
    if (isRead && std::abs(drift) > kLargestDriftSeconds) {
        mSimTime = wallClock;
        logInfo(mLogger, location, [] { return "Zeit angepasst"; });
    }
    if (lead > kShortestSleepMicroseconds) {
        sleepMicroseconds(lead);
    }
    mPacedTo = mSimTime;
}

/** A failure leaves *wallClock unchanged. Only the first failure in a row is logged. */
bool PrussSimulation::readWallClock(timespec* wallClock, const log4cxx::spi::LocationInfo& location)
{
    const bool isRead = clock_gettime(CLOCK_REALTIME, wallClock) == 0;
    if (!isRead && !mIsClockBroken) {
        const int error = errno;
        logError(mLogger, location, [error] {
            return std::string("wall clock cannot be read, paced by the samples alone: ") +
                   std::strerror(error);
        });
    }
    mIsClockBroken = !isRead;
    return isRead;
}

void PrussSimulation::writeSideRecords()
{
    mF2hFile->seek(0);
    mF2hFile->write(reinterpret_cast<const char*>(&mF2hRecord), sizeof(mF2hRecord));
    mR2hFile->seek(0);
    mR2hRecord.mSeconds = static_cast<quint32>(mSimTime.tv_sec);
    mR2hRecord.mNanoseconds = static_cast<quint32>(mSimTime.tv_nsec);
    mR2hFile->write(reinterpret_cast<const char*>(&mR2hRecord), sizeof(mR2hRecord));
}
