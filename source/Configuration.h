#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include "CommandReader.h"
#include "CsvParser.h"
#include "InputValues.h"
#include "VxDevice.h"

/** One entry of the case configuration: an input value file and how often it is played. */
class ConfigurationItem
{
public:
    ConfigurationItem() = default;
    ConfigurationItem(quint32 repetitions, const QString& fileName);
    ConfigurationItem(const ConfigurationItem&) = default;
    ConfigurationItem& operator=(const ConfigurationItem&) = default;
    virtual ~ConfigurationItem() = default;

    /** The parser and the values of the file; empty until the simulator loads it. */
    InputValues& inputValues() { return mInputValues; }

    /** Times in a row that the entry is played; 0 means never. */
    quint32 repetitions() const { return mRepetitions; }

    /** Name of the input value file as the case configuration gives it. */
    QString fileName() const { return mFileName; }

    /** True when playing it writes something. */
    bool hasSamples() const { return mRepetitions > 0 && !mInputValues.isEmpty(); }

private:
    InputValues mInputValues;
    quint32 mRepetitions = 0;
    QString mFileName;
};

/**
 * The case configuration: parses its file into numbered configurations of entries, takes the
 * operator's commands from the control FIFO, and decides which configuration is played next.
 *
 * Owns the entries and the control FIFO, which its constructor creates and opens. Entries are
 * added only while the file is parsed. Must not be copied.
 */
class Configuration : public CsvParser
{
public:
    /**
     * Never fails: a missing control FIFO is reported, one that does not open is not; in both cases
     * no commands are taken.
     */
    Configuration();
    ~Configuration() override;

    /** Adds the line's entry or sets the continuous configuration; false after an ERROR. */
    bool parseLine(QString line) override;

    /** Number of configuration numbers that exist. */
    int configurationCount() const;

    void setCurrentConfiguration(qint32 number);
    qint32 currentConfiguration() const { return mCurrentConfiguration; }

    /** True when an entry of the current configuration has samples that are played. */
    bool hasSamples() const;

    /**
     * Sets the read position to the first entry of the current configuration. A number without
     * entries gets an empty list, which configurationCount() then counts.
     */
    void resetIterator();

    /**
     * The entry at the read position, which then advances; null at the end. The entry stays
     * owned by this object and valid for its life.
     * Requires: resetIterator() was called for the current number.
     */
    ConfigurationItem* nextItem();

    /**
     * Takes at most one command from the control FIFO, without waiting. An unfinished line is
     * kept until its line end arrives.
     * @return true when a valid command was taken and stored; false when there is none, or after
     *         an ERROR when the line was rejected, which changes nothing.
     */
    bool readUserInput();

    /**
     * Like readUserInput(), but waits up to msecs ms for a valid command and returns at once when
     * it comes, even after rejected or unfinished lines. However the control FIFO behaves, a call
     * without a valid command takes that long and does not spin, so it can be made in a loop.
     */
    bool waitForUserInput(int msecs);

    /** Valid commands taken so far. */
    quint64 commandsTaken() const { return mCommandsTaken; }

    /** Makes the pending once-request current and clears it, else the continuous configuration. */
    void selectNextConfiguration();

private:
    bool executeCommand(const QString& line, const log4cxx::spi::LocationInfo& location);

    qint32 mCurrentConfiguration = 0;
    QMap<qint32, QList<ConfigurationItem>> mConfigurations;
    qint32 mContinuousConfiguration = 0;
    qint32 mOnceConfiguration;
    QList<ConfigurationItem>::iterator mItemIterator;
    VxDevice mControlDevice;
    CommandReader mCommandReader;
    quint64 mCommandsTaken = 0;
};
