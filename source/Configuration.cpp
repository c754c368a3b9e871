#include "Configuration.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "FixedPaths.h"
#include "TimeUtils.h"
#include "TrackLog.h"

namespace {
const QChar kSeparator = QLatin1Char(',');
const QChar kOnceMark = QLatin1Char('s');
constexpr int kFieldCount = 3;
constexpr qint32 kNoConfiguration = -1;
constexpr mode_t kControlFifoMode = 0700;

/** The longest command line, without its line end. */
constexpr int kMaxCommandBytes = 64 * 1024;

/**
 * What one call reads at most: a line of the greatest length and as much again. A writer who
 * never stops must not hold the loop.
 */
constexpr int kMostReads = 2 * kMaxCommandBytes / static_cast<int>(FifoPeek::kMostBytes);

constexpr quint32 kNanosecondsPerMillisecond = 1'000'000;
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
    if (!mControlDevice.exists()) {
        logError(mLogger, LOG4CXX_LOCATION, [this] {
            return "File:" + local8Bit(mControlDevice.fileName()) + " doesnot exist";
        });
        return;
    }
    // A link to nowhere is there as far as exists() goes; no file is made through it.
    mControlDevice.open(QIODevice::ReadWrite | QIODevice::ExistingOnly);
    reportOpenRights();
}

Configuration::~Configuration() = default;

/** Tells when the FIFO is one that others can command the program through, or take lines from. */
void Configuration::reportOpenRights() const
{
    constexpr mode_t kRightsOfOthers = S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    struct stat status
    {
    };
    if (!mControlDevice.isOpen() || fstat(mControlDevice.handle(), &status) != 0 ||
        !S_ISFIFO(status.st_mode)) {
        return;
    }
    if (status.st_uid == geteuid() && (status.st_mode & kRightsOfOthers) == 0) {
        return;
    }
    logInfo(mLogger, LOG4CXX_LOCATION, [&] {
        std::array<char, sizeof "07777"> mode{};
        std::snprintf(mode.data(), mode.size(), "%04o", status.st_mode & ALLPERMS);
        return local8Bit(mControlDevice.fileName()) + " was there, with mode " + mode.data() +
               " and user " + std::to_string(status.st_uid) +
               " as its owner: others can send commands";
    });
}

bool Configuration::parseLine(QString line)
{
    QStringList fields;
    if (!splitLine(line, kSeparator, kFieldCount, &fields, LOG4CXX_LOCATION)) {
        return false;
    }
    bool ok = false;
    const qint32 number = fields[0].toInt(&ok);
    if (!ok) {
        logError(mLogger, LOG4CXX_LOCATION, [&] {
            return linePrefix() + "First parameter (" + excerpt(fields[0]) +
                   ") is not of type quint32";
        });
        return false;
    }
    const quint32 value = fields[1].toUInt(&ok);
    if (!ok) {
        logError(mLogger, LOG4CXX_LOCATION, [&] {
            return linePrefix() + "Second parameter (" + excerpt(fields[1]) +
                   ") is not of type quint32";
        });
        return false;
    }
    if (number < 0) {
        mContinuousConfiguration = static_cast<qint32>(value);
    } else {
        mConfigurations[number].append(ConfigurationItem(value, fields[2]));
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
    if (!takeCommandLine(&line)) {
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
    const bool timedOut = !mControlDevice.waitForReadyRead(msecs) && errno == ETIMEDOUT;
    if (timedOut) {
        return false;
    }
    if (readUserInput()) {
        return true;
    }
    // Something is there that will not go away, or goes away without a command.
    TimeUtils::nanoSleep(static_cast<quint32>(msecs) * kNanosecondsPerMillisecond);
    return false;
}

/**
 * True when a whole line is in *line, with its line end. What follows the line end belongs to the
 * next call and stays in the FIFO.
 */
bool Configuration::takeCommandLine(QByteArray* line)
{
    std::array<char, FifoPeek::kMostBytes> bytes{};
    for (int reads = 0; reads < kMostReads && mControlDevice.waitForReadyRead(0); ++reads) {
        const size_t share = mControlPeek.bytesOfFirstLine(mControlDevice.handle());
        const int count = mControlDevice.readRaw(bytes.data(), share);
        if (count < 0) {
            return false;
        }
        const bool atEndOfFile = count == 0;
        if (atEndOfFile || appendToPendingLine(bytes.data(), count)) {
            line->swap(mPendingLine);
            mPendingLine.clear();
            return true;
        }
    }
    return false;
}

/** True when the bytes, which are of one line, end a line that is to be handled. */
bool Configuration::appendToPendingLine(const char* bytes, int count)
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
    logError(mLogger, LOG4CXX_LOCATION, [] {
        return "Command line without its end after " + std::to_string(kMaxCommandBytes) +
               " bytes, dropped";
    });
    mPendingLine.clear();
    mDroppingLine = !endsLine;
    return false;
}

/** Reports as its caller, whose location it gets. */
bool Configuration::executeCommand(const QString& line, const log4cxx::spi::LocationInfo& location)
{
    const bool once = line.startsWith(kOnceMark);
    if (once && line.size() == 1) {
        logError(mLogger, location, [] { return "Config Cmd to small!"; });
        return false;
    }
    qint32 number = kNoConfiguration;
    if (!parseConfigurationNumber(once ? line.mid(1) : line, &number, location)) {
        return false;
    }
    logInfo(mLogger, location, [&] {
        return "Execute Config " + std::to_string(number) + (once ? " once" : " continuous");
    });
    (once ? mOnceConfiguration : mContinuousConfiguration) = number;
    return true;
}

bool Configuration::parseConfigurationNumber(const QString& text, qint32* number,
                                             const log4cxx::spi::LocationInfo& location)
{
    bool ok = false;
    const auto value = static_cast<qint32>(text.toUInt(&ok));
    if (!ok) {
        logError(mLogger, location,
                 [&] { return "Could not convert " + excerpt(text) + "to unsigned"; });
        return false;
    }
    if (value < 0 || value >= configurationCount()) {
        logError(mLogger, location, [&] { return "Wrong Config: " + std::to_string(value); });
        return false;
    }
    *number = value;
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
