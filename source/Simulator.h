#pragma once

#include <QString>
#include <optional>

#include "Configuration.h"
#include "PrussSimulation.h"
#include "TrackObject.h"

/**
 * Ties the input side to the hardware side: loads the case configuration and every value file it
 * names, then plays the selected configuration for ever, taking operator commands between cases.
 *
 * Owns the driver side and the configuration; keeps no state of its own beside them.
 */
class Simulator : public TrackObject
{
public:
    Simulator();
    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;
    ~Simulator() override;

    /**
     * Loads the case configuration. Rejected lines are reported by the parser and do not count
     * here; the entries before them remain.
     * @return false after an ERROR when the file could not be opened
     */
    bool loadConfigFile(QString fileName);

    /**
     * Loads the value file of every entry, configuration by configuration from number 0.
     * @return false after an ERROR when a number has no entry, or for the first file that does
     *         not open or parse; the files after it are not read.
     */
    bool loadDataFiles();

    /**
     * Plays for ever; returns only after a FATAL message when the driver's files do not open.
     * Requires: loadConfigFile() and loadDataFiles() were true.
     */
    void startEndless();

    /** Plays the item's values once; false after an ERROR when a block could not be written. */
    bool simulateOneCase(ConfigurationItem* item);

    /**
     * Plays the entries of the current configuration from its read position, until they are used
     * up, a command was taken or a case failed. Looks for a command after every case; where many
     * in a row have no samples, it waits for one now and then.
     */
    void simulateConfiguration();

private:
    /** What became of one pass through a configuration. */
    enum class Pass
    {
        Played,        ///< a sample was written or a command taken
        NothingToPlay, ///< the configuration has no samples
        Refused        ///< the driver took none of its blocks
    };

    bool loadDataFile(ConfigurationItem* item, const log4cxx::spi::LocationInfo& location);
    bool playRepetitions(ConfigurationItem* item, int* casesWithoutSamples);
    bool takeCommand(int* casesWithoutSamples);
    Pass playCurrentConfiguration();
    void waitForCommand(int msecs);
    void reportNothingToPlay(std::optional<qint32>* reported,
                             const log4cxx::spi::LocationInfo& location) const;

    PrussSimulation mPrussSimulation;
    Configuration mConfiguration;
};
