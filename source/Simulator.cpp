#include "Simulator.h"

#include <algorithm>
#include <string>
#include <utility>

#include "TrackLog.h"

namespace {
/** Wait between two passes through a configuration that has nothing to play. */
constexpr int kIdleWaitMilliseconds = 1000;

/** Cases without samples do not pace the loop: after this number in a row it waits. */
constexpr int kMaxCasesWithoutSamples = 1000;

/** Used if other entries of the configuration have samples, which must not be delayed for long. */
constexpr int kShortWaitMilliseconds = 10;

/**
 * Waits between attempts while the driver refuses one block after the other, so that the log is not
 * flooded. The second attempt follows at once.
 */
class RetryWait
{
public:
    /** Wait after one more refusal, in ms. */
    int next() { return std::exchange(mNext, std::clamp(2 * mNext, kFirst, kMax)); }

    /** To be called when the driver has taken a block. */
    void reset() { mNext = 0; }

private:
    static constexpr int kFirst = 10;
    static constexpr int kMax = 1000;

    int mNext = 0;
};
} // namespace

Simulator::Simulator()
{
    initTrack("Simulator");
}

Simulator::~Simulator() = default;

bool Simulator::loadConfigFile(QString fileName)
{
    if (!mConfiguration.openFile(fileName)) {
        logError(mLogger, LOG4CXX_LOCATION,
                 [&] { return "Could not open file '" + local8Bit(fileName) + "'."; });
        return false;
    }
    mConfiguration.parseCompleteFile();
    logInfo(mLogger, LOG4CXX_LOCATION,
            [&] { return "File '" + local8Bit(fileName) + "' loaded."; });
    mConfiguration.closeFile();
    return true;
}

bool Simulator::loadDataFiles()
{
    bool ok = true;
    for (qint32 number = 0; number < mConfiguration.configurationCount(); ++number) {
        mConfiguration.setCurrentConfiguration(number);
        mConfiguration.resetIterator();
        ConfigurationItem* item = mConfiguration.nextItem();
        if (item == nullptr) {
            logError(mLogger, LOG4CXX_LOCATION, [] { return "no configuration found."; });
            return false;
        }
        while (ok && item != nullptr) {
            ok = loadDataFile(item, LOG4CXX_LOCATION);
            item = mConfiguration.nextItem();
        }
    }
    if (ok) {
        logInfo(mLogger, LOG4CXX_LOCATION, [] { return "All data files parsed."; });
    }
    return ok;
}

/** Logs at the location of its caller. */
bool Simulator::loadDataFile(ConfigurationItem* item, const log4cxx::spi::LocationInfo& location)
{
    const QString fileName = item->fileName();
    logInfo(mLogger, location, [&] { return "Parsing " + local8Bit(fileName) + "'."; });
    if (!item->inputValues().openFile(fileName)) {
        logError(mLogger, location, [&] { return "could not open file: " + local8Bit(fileName); });
        return false;
    }
    return item->inputValues().parseCompleteFile();
}

void Simulator::startEndless()
{
    if (!mPrussSimulation.init()) {
        logFatal(mLogger, LOG4CXX_LOCATION, [] { return "Could not initialze Prus-Simulation"; });
        return;
    }
    logInfo(mLogger, LOG4CXX_LOCATION, [] { return "Starting endless simulation loop"; });
    mConfiguration.selectNextConfiguration();
    std::optional<qint32> reported;
    RetryWait retryWait;
    for (;;) {
        const qint32 number = mConfiguration.currentConfiguration();
        reportNothingToPlay(&reported, LOG4CXX_LOCATION);
        mConfiguration.resetIterator();
        const Pass pass = playCurrentConfiguration();
        mConfiguration.selectNextConfiguration();
        // The writer paces the loop only when there is something to write.
        if (pass == Pass::Played) {
            retryWait.reset();
        } else if (pass == Pass::Refused) {
            waitForCommand(retryWait.next());
        } else if (mConfiguration.currentConfiguration() == number) {
            waitForCommand(kIdleWaitMilliseconds);
        }
    }
}

/** Selects the configuration anew if a command came; 0 ms does not wait. */
void Simulator::waitForCommand(int msecs)
{
    if (msecs > 0 && mConfiguration.waitForUserInput(msecs)) {
        mConfiguration.selectNextConfiguration();
    }
}

/**
 * Logs once for each change to a configuration that has nothing to play; *reported holds the last
 * one. Logs at the location of its caller.
 */
void Simulator::reportNothingToPlay(std::optional<qint32>* reported,
                                    const log4cxx::spi::LocationInfo& location) const
{
    const qint32 number = mConfiguration.currentConfiguration();
    if (mConfiguration.hasSamples()) {
        reported->reset();
    } else if (*reported != number) {
        *reported = number;
        logInfo(mLogger, location, [number] {
            return "Config " + std::to_string(number) +
                   " has nothing to play: no entry with samples and repetitions";
        });
    }
}

Simulator::Pass Simulator::playCurrentConfiguration()
{
    const quint64 samplesBefore = mPrussSimulation.samplesWritten();
    const quint64 commandsBefore = mConfiguration.commandsTaken();
    simulateConfiguration();
    if (mPrussSimulation.samplesWritten() != samplesBefore ||
        mConfiguration.commandsTaken() != commandsBefore) {
        return Pass::Played;
    }
    return mConfiguration.hasSamples() ? Pass::Refused : Pass::NothingToPlay;
}

bool Simulator::simulateOneCase(ConfigurationItem* item)
{
    item->inputValues().resetIterator();
    qint32 result = 0;
    while (result == 0) {
        result = mPrussSimulation.writeSamples(item->inputValues());
    }
    if (result < 0) {
        logError(mLogger, LOG4CXX_LOCATION,
                 [] { return "Error while writing data to sample buffer."; });
        return false;
    }
    return true;
}

void Simulator::simulateConfiguration()
{
    int casesWithoutSamples = 0;
    ConfigurationItem* item = mConfiguration.nextItem();
    while (item != nullptr && playRepetitions(item, &casesWithoutSamples)) {
        item = mConfiguration.nextItem();
    }
}

/** False when the rest of the configuration is to be skipped. */
bool Simulator::playRepetitions(ConfigurationItem* item, int* casesWithoutSamples)
{
    for (quint32 left = item->repetitions(); left > 0; --left) {
        const bool ok = simulateOneCase(item);
        *casesWithoutSamples = item->hasSamples() ? 0 : *casesWithoutSamples + 1;
        if (takeCommand(casesWithoutSamples) || !ok) {
            return false;
        }
    }
    return true;
}

/** Checks for a command. After kMaxCasesWithoutSamples it waits for one and restarts the count. */
bool Simulator::takeCommand(int* casesWithoutSamples)
{
    if (*casesWithoutSamples < kMaxCasesWithoutSamples) {
        return mConfiguration.readUserInput();
    }
    *casesWithoutSamples = 0;
    return mConfiguration.waitForUserInput(mConfiguration.hasSamples() ? kShortWaitMilliseconds
                                                                       : kIdleWaitMilliseconds);
}
