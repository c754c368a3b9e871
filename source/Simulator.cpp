#include "Simulator.h"

#include <string>

#include "TrackLog.h"

namespace {
/** After a pass without a sample, the time given to the operator before the next one. */
constexpr int kIdleWaitMilliseconds = 1000;
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

/** Reports as its caller, whose location it gets. */
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
    for (;;) {
        const qint32 number = mConfiguration.currentConfiguration();
        reportNothingToPlay(&reported, LOG4CXX_LOCATION);
        mConfiguration.resetIterator();
        const bool isIdle = isIdlePass();
        mConfiguration.selectNextConfiguration();
        // The writer paces the loop only when there is something to write.
        if (isIdle && mConfiguration.currentConfiguration() == number) {
            mConfiguration.waitForUserInput(kIdleWaitMilliseconds);
            mConfiguration.selectNextConfiguration();
        }
    }
}

/**
 * Once for each change to a configuration that has nothing to play: such a one is in *reported.
 * Reports as its caller, whose location it gets.
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

/** Plays the current configuration; true when no sample was written and no command taken. */
bool Simulator::isIdlePass()
{
    const quint64 samplesBefore = mPrussSimulation.samplesWritten();
    const quint64 commandsBefore = mConfiguration.commandsTaken();
    simulateConfiguration();
    return mPrussSimulation.samplesWritten() == samplesBefore &&
           mConfiguration.commandsTaken() == commandsBefore;
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
    ConfigurationItem* item = mConfiguration.nextItem();
    while (item != nullptr && playRepetitions(item)) {
        item = mConfiguration.nextItem();
    }
}

/** False when the rest of the configuration is to be dropped. */
bool Simulator::playRepetitions(ConfigurationItem* item)
{
    for (quint32 left = item->repetitions(); left > 0; --left) {
        const quint64 samplesBefore = mPrussSimulation.samplesWritten();
        const bool ok = simulateOneCase(item);
        if (mConfiguration.readUserInput() || !ok) {
            return false;
        }
        // Repeating an input without samples would only spin.
        if (mPrussSimulation.samplesWritten() == samplesBefore) {
            return true;
        }
    }
    return true;
}
