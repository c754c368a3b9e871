#pragma once

#include "importing/ImportPlan.h"
#include "importing/LineWriter.h"
#include "importing/MappedSignal.h"
#include "importing/PeriodicExtension.h"

namespace importing {

/**
 * Writes the lines of a replay in their order: repeated first periods, the recording, repeated last
 * periods. Borrows its arguments. Each operation except writeRecording() throws CaseError for a
 * recording of less than one period.
 */
class Replay
{
public:
    Replay(const ImportPlan& plan, MappedSignal& signal, LineWriter& writer);

    /** The first period, repeated. */
    void writeBefore(size_t periods);

    void writeRecording();

    /** The last period, repeated, so that the recording continues. */
    void writeAfter(size_t periods);

    /**
     * One to two periods in which the last period fades into the first one, such that the replay
     * has no jump when it is repeated.
     */
    void writeLoop();

private:
    PeriodicExtension firstPeriod() const;
    PeriodicExtension lastPeriod() const;
    double cyclesOfLastAt(size_t line) const;
    float frequencyBehind(size_t line, float next) const;

    const ImportPlan& mPlan;
    MappedSignal& mSignal;
    LineWriter& mWriter;
    double mFirstCycles = 0.0; ///< phase of the first line written
};

} // namespace importing
