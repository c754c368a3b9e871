#pragma once

#include <time.h>

#include <QFile>
#include <QScopedPointer>
#include <array>

#include "InputValues.h"
#include "SampleRecord.h"
#include "TrackObject.h"

/**
 * Takes the real-time unit's place: stamps the items of an input with the simulated clock, writes
 * them block by block into the simulated ADC driver, and paces that stream against the wall clock.
 *
 * Owns the five files of the driver. The pacing countdown and the last 10-second mark belong to
 * the process, not to the object: there is one writer.
 */
class PrussSimulation : public TrackObject
{
public:
    /** Creates the file objects and opens none. */
    PrussSimulation();
    PrussSimulation(const PrussSimulation&) = delete;
    PrussSimulation& operator=(const PrussSimulation&) = delete;
    ~PrussSimulation() override;

    /**
     * Opens the driver's files and sets the simulated clock to the wall clock.
     * @return false after a FATAL message for the first file that is missing or does not open;
     *         the files before it stay open.
     */
    bool init();

    /**
     * Writes the next block of at most 360 items and, on every eleventh block, sleeps while the
     * samples are ahead of the wall clock and rewrites the f2h and r2h records. The items get
     * their time stamps. While the wall clock cannot be read (reported by one ERROR), it sleeps
     * for the duration of what it has played since the last time.
     *
     * Requires: init() was true; values.resetIterator() was called.
     * @return 1 when the input is exhausted, 0 when items may remain, -1 after an ERROR when the
     *         block could not be written (its items are consumed and stamped).
     */
    qint32 writeSamples(InputValues& values);

    /**
     * Samples in all blocks that the driver took; one whose write threw is counted, too, since the
     * writer continues as if it had worked.
     */
    quint64 samplesWritten() const { return mSamplesWritten; }

private:
    /** The record of the f2h attribute; periods in units of 10 ns. */
    struct F2hRecord
    {
        quint32 period;
        quint32 markSeconds;     ///< simulated time of the last 10-second mark
        quint32 markNanoseconds; ///< nanoseconds of that mark
        quint32 markPeriod;      ///< period at that mark
    };
    static_assert(sizeof(F2hRecord) == 16, "the driver takes f2h records of 16 bytes");

    bool openFile(QScopedPointer<QFile>& file, QIODevice::OpenMode mode);
    bool isReady(const log4cxx::spi::LocationInfo& location) const;
    void adoptFrequency(InputValues& values, float frequency,
                        const log4cxx::spi::LocationInfo& location);
    void refuseFrequency(InputValues& values, float frequency,
                         const log4cxx::spi::LocationInfo& location);
    qint64 assembleBlock(InputValues& values, InputValueItem* item, bool* exhausted);
    void advanceClock();
    void passTenSecondMark();
    bool writeBlock(qint64 samples, const log4cxx::spi::LocationInfo& location);
    bool readWallClock(timespec* wallClock, const log4cxx::spi::LocationInfo& location);
    void pace(const log4cxx::spi::LocationInfo& location);
    void writeSideRecords();

    float mCurrentFrequency = 0.0F; ///< Hz, of the step in force
    quint32 mSampleStep = 0;        ///< ns between two samples
    QScopedPointer<QFile> mSampleBuffer;
    QScopedPointer<QFile> mH2pFile;
    QScopedPointer<QFile> mF2hFile;
    QScopedPointer<QFile> mD2hFile;
    QScopedPointer<QFile> mR2hFile;
    F2hRecord mF2hRecord;
    SampleRecord mR2hRecord;
    timespec mSimTime; ///< time stamp of the last sample written

    timespec mPacedTo{};         ///< the simulated time at the last pacing, at first at init()
    bool mIsClockBroken = false; ///< the last reading of the wall clock failed
    quint64 mSamplesWritten = 0;
    std::array<SampleRecord, kSamplesPerPeriod> mBlock;

    static int sPacingCountdown;
    static timespec sLastMark;
};
