#include "PrussSimulation.h"

#include <unistd.h>

#include <QThread>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "FixedPaths.h"
#include "SampleStep.h"
#include "TimeUtils.h"
#include "TrackLog.h"

namespace {
constexpr long kNanosecondsPerSecond = 1'000'000'000;
constexpr long kNanosecondsPerMicrosecond = 1000;
constexpr qint64 kMicrosecondsPerSecond = 1'000'000;

constexpr int kBlocksBetweenPacing = 10;

/** How often in a row a write that was interrupted is tried again. */
constexpr int kMostInterruptions = 100;

constexpr qint64 kShortestSleepMicroseconds = 2000;
constexpr qint64 kLargestDriftSeconds = 60;
constexpr time_t kMarkIntervalSeconds = 10;

/** Periods are computed in single precision, as steps are. */
constexpr float kPeriodUnitsPerSecondF = 1e8F;

constexpr qint32 kR2hFirstChannels = 94578709;
constexpr qint32 kR2hLastChannels = 188918007;

quint32 periodOf(float frequency)
{
    return saturatingToUInt(kPeriodUnitsPerSecondF / frequency);
}

bool isSameFrequency(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

bool isBefore(const timespec& a, const timespec& b)
{
    return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

/** How far `later` is after `earlier`, in whole µs rounded down; 0 when it is not. */
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

/** On a 32-bit target one call cannot take more than about 71 minutes. */
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
    return new QFile(QString::fromLatin1(path));
}

SampleRecord initialR2hRecord()
{
    SampleRecord record{};
    std::fill_n(record.mValues, kChannelCount / 2, kR2hFirstChannels);
    std::fill_n(record.mValues + kChannelCount / 2, kChannelCount / 2, kR2hLastChannels);
    return record;
}

/**
 * Writes as QFile::write() does, which goes on behind a short write, but gives up when a driver
 * interrupts every attempt: that would hold the program for ever. Returns the bytes written, -1
 * when there are none.
 */
qint64 writeBytes(const QFile& file, const char* bytes, qint64 size)
{
    qint64 written = 0;
    ssize_t count = 0;
    do {
        int attempts = 0;
        do {
            count = ::write(file.handle(), bytes + written, static_cast<size_t>(size - written));
        } while (count < 0 && errno == EINTR && ++attempts <= kMostInterruptions);
        written += std::max<ssize_t>(count, 0);
    } while (count > 0 && written < size);
    return written > 0 ? written : -1;
}

template <typename Record>
void rewrite(QFile& file, const Record& record)
{
    file.seek(0);
    writeBytes(file, reinterpret_cast<const char*>(&record), sizeof(record));
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
    }
    return ok;
}

bool PrussSimulation::openFile(QScopedPointer<QFile>& file, QIODevice::OpenMode mode)
{
    // Not even through a link to nowhere, which is there as far as exists() goes, is a file made.
    if (!file->exists()) {
        logFatal(mLogger, LOG4CXX_LOCATION, [&] {
            return "openFile : Das Device '" + local8Bit(file->fileName()) + "' existiert nicht.";
        });
        return false;
    }
    if (!file->open(mode | QIODevice::Unbuffered | QIODevice::ExistingOnly)) {
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
    adoptFrequency(values, first->mFrequency);
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

/** Reports as its caller, whose location it gets; as do writeBlock() and pace(). */
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

void PrussSimulation::adoptFrequency(const InputValues& values, float frequency)
{
    const bool isInForce = mSampleStep != 0 && frequency == mCurrentFrequency;
    if (isInForce) {
        mRefusing = false;
        return;
    }
    const quint32 step = sampleStepOf(frequency);
    if (!isPlayableStep(step)) {
        refuseFrequency(values, frequency);
        return;
    }
    mRefusing = false;
    mCurrentFrequency = frequency;
    mSampleStep = step;
    mF2hRecord.period = periodOf(frequency);
}

/** Keeps the step and the period in force, or begins with those of 50 Hz. */
void PrussSimulation::refuseFrequency(const InputValues& values, float frequency)
{
    if (mSampleStep == 0) {
        mCurrentFrequency = kDefaultFrequencyHz;
        mSampleStep = sampleStepOf(kDefaultFrequencyHz);
        mF2hRecord.period = periodOf(kDefaultFrequencyHz);
    }
    if (mRefusing && isSameFrequency(frequency, mRefusedFrequency)) {
        return;
    }
    mRefusing = true;
    mRefusedFrequency = frequency;
    logError(mLogger, LOG4CXX_LOCATION, [&] {
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

bool PrussSimulation::writeBlock(qint64 samples, const log4cxx::spi::LocationInfo& location)
{
    const char* const bytes = reinterpret_cast<const char*>(mBlock.data());
    try {
        const qint64 size = samples * static_cast<qint64>(sizeof(SampleRecord));
        if (writeBytes(*mSampleBuffer, bytes, size) < 0) {
            logError(mLogger, location, [this] {
                return "error writing file " + local8Bit(mSampleBuffer->fileName());
            });
            return false;
        }
    } catch (...) {
        logFatal(mLogger, location, [] { return "Sample Buffer Write Error"; });
    }
    mSamplesWritten += static_cast<quint64>(samples);
    return true;
}

/** Sleeps away the lead of the samples; gives up the simulated clock when it is far off. */
void PrussSimulation::pace(const log4cxx::spi::LocationInfo& location)
{
    const timespec wallClock = TimeUtils::currentTime();
    const qint64 lead = microsecondsBetween(wallClock, mSimTime);
    const qint64 drift = static_cast<qint64>(mSimTime.tv_sec) - wallClock.tv_sec;
    if (std::abs(drift) > kLargestDriftSeconds) {
        mSimTime = wallClock;
        logInfo(mLogger, location, [] { return "Zeit angepasst"; });
    }
    if (lead > kShortestSleepMicroseconds) {
        sleepMicroseconds(lead);
    }
}

void PrussSimulation::writeSideRecords()
{
    rewrite(*mF2hFile, mF2hRecord);
    mR2hRecord.mSeconds = static_cast<quint32>(mSimTime.tv_sec);
    mR2hRecord.mNanoseconds = static_cast<quint32>(mSimTime.tv_nsec);
    rewrite(*mR2hFile, mR2hRecord);
}
