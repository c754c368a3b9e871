#include "Configuration.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "ConfigurationLine.h"
#include "ControlCommand.h"
#include "FixedPaths.h"
#include "TimeUtils.h"
#include "TrackLog.h"

namespace {
constexpr qint32 kNoConfiguration = -1;
constexpr mode_t kControlFifoMode = 0700;

constexpr qint64 kNanosecondsPerMillisecond = 1'000'000;
constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;

/** While waiting: ns between two reads of an input that is always ready and never has a command. */
constexpr qint64 kLookInterval = 50 * kNanosecondsPerMillisecond;

/**
 * While waiting: reads in a row that may bring bytes before it pauses, so that a flood costs no
 * CPU.
 */
constexpr int kMaxLooksAtOnce = 100;

/** In ns. This clock never jumps. */
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
    // An existing FIFO is used as it is. Any other failure shows below, where the FIFO is missing.
    mkfifo(kControlFifoPath, kControlFifoMode);
    mControlDevice.setFileName(QString::fromLatin1(kControlFifoPath));
    // The static QFile::exists() follows links. Opening a dangling link would create a file.
    if (!QFile::exists(mControlDevice.fileName())) {
        logError(mLogger, LOG4CXX_LOCATION, [this] {
            return "File:" + local8Bit(mControlDevice.fileName()) + " doesnot exist";
        });
    } else if (mControlDevice.open(QIODevice::ReadWrite)) {
        // Another process may read the bytes that poll() reported. A blocking read would stop the
        // stream.
        const int descriptor = mControlDevice.handle();
        ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    }
}

Configuration::~Configuration() = default;

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
    const CommandReader::Result result = mCommandReader.take(mControlDevice, &line);
    if (result == CommandReader::Result::TooLong) {
        logError(mLogger, LOG4CXX_LOCATION, [] {
            return "Command line without its end after " +
                   std::to_string(CommandReader::kMaxLineBytes) + " bytes, dropped";
        });
    }
    if (result != CommandReader::Result::Line) {
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
        const bool lookAtOnce = isReady && mCommandReader.tookBytes() && ++looks < kMaxLooksAtOnce;
        left = end - monotonicNow();
        if (left > 0 && !lookAtOnce) {
            TimeUtils::nanoSleep(static_cast<quint32>(std::min(left, kLookInterval)));
            left = end - monotonicNow();
        }
    } while (left > 0);
    return false;
}

/** Logs at the location of its caller. */
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
