#include "Configuration.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "ConfigurationLine.h"
#include "ControlCommand.h"
#include "FixedPaths.h"
#include "TimeUtils.h"
#include "TrackLog.h"

namespace {
constexpr qint32 kNoConfiguration = -1;
constexpr mode_t kControlFifoMode = 0700;

/** The longest command line, without its line end. */
constexpr int kMaxCommandBytes = 64 * 1024;

/**
 * What one call reads at most: a line of the greatest length and as much again. A writer who
 * never stops must not hold the loop.
 */
constexpr int kMaxReads = 2 * kMaxCommandBytes / static_cast<int>(FifoPeek::kMaxBytes);

constexpr qint64 kNanosecondsPerMillisecond = 1'000'000;
constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;

/** In a wait, the time between two looks at what is always ready and never gives a command. */
constexpr qint64 kLookInterval = 50 * kNanosecondsPerMillisecond;

/** In a wait, so many looks that bring something follow each other at once: nobody must flood. */
constexpr int kMaxLooksAtOnce = 100;

/** ns on the clock that nobody sets. */
qint64 monotonicNow()
{
    const timespec now = TimeUtils::monotonicTime();
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}

int roundedUpToMilliseconds(qint64 nanoseconds)
{
    return static_cast<int>((nanoseconds + kNanosecondsPerMillisecond - 1) /
                            kNanosecondsPerMillisecond);
}
} // namespace

ConfigurationItem::ConfigurationItem(quint32 repetitions, const QString& fileName)
    : mRepetitions(repetitions), mFileName(fileName)
{
}

Configuration::Configuration() : mOnceConfiguration(kNoConfiguration)
{
    initTrack("Configuration");
    // An existing FIFO is used as it is; any other failure shows when the FIFO is missing.
    mkfifo(kControlFifoPath, kControlFifoMode);
    mControlDevice.setFileName(QString::fromLatin1(kControlFifoPath));
    // The static one follows links: through one to nowhere a file would be made.
    if (!QFile::exists(mControlDevice.fileName())) {
        logError(mLogger, LOG4CXX_LOCATION, [this] {
            return "File:" + local8Bit(mControlDevice.fileName()) + " doesnot exist";
        });
        return;
    }
    openControlDevice(LOG4CXX_LOCATION);
}

Configuration::~Configuration() = default;

/** Reports as its caller, whose location it gets; as do the others that get one. */
void Configuration::openControlDevice(const log4cxx::spi::LocationInfo& location)
{
    if (!mControlDevice.open(QIODevice::ReadWrite)) {
        logInfo(mLogger, location, [this] {
            return local8Bit(mControlDevice.fileName()) + " is there but does not open (" +
                   local8Bit(mControlDevice.errorString()) + "): no command can be taken";
        });
        return;
    }
    // Somebody else may read what the poll has seen; a blocking read would then stop the stream.
    const int descriptor = mControlDevice.handle();
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    reportOpenRights(location);
}

/** Tells when the FIFO is one that others can command the program through, or take lines from. */
void Configuration::reportOpenRights(const log4cxx::spi::LocationInfo& location) const
{
    constexpr mode_t kRightsOfOthers = S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    struct stat status
    {
    };
    if (fstat(mControlDevice.handle(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return;
    }
    if (status.st_uid == geteuid() && (status.st_mode & kRightsOfOthers) == 0) {
        return;
    }
    logInfo(mLogger, location, [&] {
        std::array<char, sizeof "07777"> mode{};
        std::snprintf(mode.data(), mode.size(), "%04o", status.st_mode & ALLPERMS);
        return local8Bit(mControlDevice.fileName()) + " was there, with mode " + mode.data() +
               " and user " + std::to_string(status.st_uid) +
               " as its owner: others can send commands";
    });
}

bool Configuration::parseLine(QString line)
{
    const ConfigurationLine entry(line);
    if (!entry.isValid()) {
        logError(mLogger, LOG4CXX_LOCATION, [&] { return linePrefix() + entry.error(); });
        return false;
    }
    if (entry.number() < 0) {
        mContinuousConfiguration = static_cast<qint32>(entry.value());
    } else {
        mConfigurations[entry.number()].append(ConfigurationItem(entry.value(), entry.fileName()));
    }
    return true;
}

int Configuration::configurationCount() const
{
    return mConfigurations.size();
}

void Configuration::setCurrentConfiguration(qint32 number)
{
    mCurrentConfiguration = number;
}

bool Configuration::hasSamples() const
{
    const QList<ConfigurationItem> items = mConfigurations.value(mCurrentConfiguration);
    return std::any_of(items.begin(), items.end(),
                       [](const ConfigurationItem& item) { return item.hasSamples(); });
}

void Configuration::resetIterator()
{
    mItemIterator = mConfigurations[mCurrentConfiguration].begin();
}

ConfigurationItem* Configuration::nextItem()
{
    if (mItemIterator == mConfigurations[mCurrentConfiguration].end()) {
        return nullptr;
    }
    return &*mItemIterator++;
}

bool Configuration::readUserInput()
{
    QByteArray line;
    if (!takeCommandLine(&line, LOG4CXX_LOCATION)) {
        return false;
    }
    const QString text = QString::fromUtf8(line);
    if (text.isEmpty() || !executeCommand(text, LOG4CXX_LOCATION)) {
        return false;
    }
    ++mCommandsTaken;
    return true;
}

bool Configuration::waitForUserInput(int msecs)
{
    const qint64 end = monotonicNow() + msecs * kNanosecondsPerMillisecond;
    qint64 left = msecs * kNanosecondsPerMillisecond;
    int looks = 0;
    do {
        const bool isReady = mControlDevice.waitForReadyRead(roundedUpToMilliseconds(left));
        if (isReady && readUserInput()) {
            return true;
        }
        const bool lookAtOnce = isReady && mTookBytes && ++looks < kMaxLooksAtOnce;
        left = end - monotonicNow();
        if (left > 0 && !lookAtOnce) {
            TimeUtils::nanoSleep(static_cast<quint32>(std::min(left, kLookInterval)));
            left = end - monotonicNow();
        }
    } while (left > 0);
    return false;
}

/**
 * True when a whole line is in *line, with its line end. What follows the line end belongs to the
 * next call and stays in the FIFO.
 */
bool Configuration::takeCommandLine(QByteArray* line, const log4cxx::spi::LocationInfo& location)
{
    mTookBytes = false;
    std::array<char, FifoPeek::kMaxBytes> bytes{};
    for (int reads = 0; reads < kMaxReads && mControlDevice.waitForReadyRead(0); ++reads) {
        const size_t share = mControlPeek.bytesOfFirstLine(mControlDevice.handle());
        const int count = mControlDevice.readRaw(bytes.data(), share);
        if (count < 0) {
            return false;
        }
        const bool atEndOfFile = count == 0;
        mTookBytes = mTookBytes || !atEndOfFile;
        if (atEndOfFile || appendToPendingLine(bytes.data(), count, location)) {
            line->swap(mPendingLine);
            mPendingLine.clear();
            return true;
        }
    }
    return false;
}

/** True when the bytes, which are of one line, end a line that is to be handled. */
bool Configuration::appendToPendingLine(const char* bytes, int count,
                                        const log4cxx::spi::LocationInfo& location)
{
    const bool endsLine = bytes[count - 1] == '\n';
    if (mDroppingLine) {
        mDroppingLine = !endsLine;
        return false;
    }
    mPendingLine.append(bytes, count);
    if (mPendingLine.size() - (endsLine ? 1 : 0) <= kMaxCommandBytes) {
        return endsLine;
    }
    logError(mLogger, location, [] {
        return "Command line without its end after " + std::to_string(kMaxCommandBytes) +
               " bytes, dropped";
    });
    mPendingLine.clear();
    mDroppingLine = !endsLine;
    return false;
}

bool Configuration::executeCommand(const QString& line, const log4cxx::spi::LocationInfo& location)
{
    const ControlCommand command(line, configurationCount());
    if (!command.isValid()) {
        logError(mLogger, location, [&] { return command.error(); });
        return false;
    }
    logInfo(mLogger, location, [&] {
        return "Execute Config " + std::to_string(command.number()) +
               (command.isOnce() ? " once" : " continuous");
    });
    (command.isOnce() ? mOnceConfiguration : mContinuousConfiguration) = command.number();
    return true;
}

void Configuration::selectNextConfiguration()
{
    if (mOnceConfiguration >= 0) {
        mCurrentConfiguration = mOnceConfiguration;
        mOnceConfiguration = kNoConfiguration;
    } else {
        mCurrentConfiguration = mContinuousConfiguration;
    }
}
