#pragma once

#include <QList>
#include <memory>
#include <vector>

#include "ControlCommand.h"
#include "explain/PassHistory.h"
#include "explain/PlayPlan.h"

namespace explain {

/** Numbers of configurations in ascending order. Copies share them. */
class ConfigurationSet
{
public:
    ConfigurationSet() : ConfigurationSet(std::vector<int>()) {}
    explicit ConfigurationSet(std::vector<int> numbers)
        : mNumbers(std::make_shared<const std::vector<int>>(std::move(numbers)))
    {
    }

    const std::vector<int>& numbers() const { return *mNumbers; }
    ConfigurationSet with(int number) const;
    ConfigurationSet united(const ConfigurationSet& other) const;
    bool includes(const ConfigurationSet& other) const;
    bool operator==(const ConfigurationSet& other) const
    {
        return mNumbers == other.mNumbers || *mNumbers == *other.mNumbers;
    }

private:
    std::shared_ptr<const std::vector<int>> mNumbers;
};

/**
 * One possible position of the simulator in its plan: about to play a sample of an entry. Several
 * alternatives stay open in one hypothesis: the repetition, the continuous configuration, and the
 * sample, if a file continues equally from several of its samples. These samples are at equal
 * distances, and all samples from the first to the last of them equal those one stride later, so
 * one comparison decides about all but the last.
 */
struct Hypothesis
{
    int mEntry = 0;
    size_t mSample = 0; ///< the first possible next sample in the entry's file
    size_t mStride = 0; ///< distance between the possible samples; 0 if there is one
    size_t mCount = 1;  ///< number of possible samples; 1 at the beginning of a case
    /** Range of possible repetitions, counted from 1. */
    quint32 mMinRepetition = 1;
    quint32 mMaxRepetition = 1;
    ConfigurationSet mContinuous; ///< what may follow when the configuration is played through
    int mCost = 0;                ///< how unlikely it is: see Costs.h
    size_t mKnownCommands = 0;    ///< number of the given commands that were taken
    int mUnknownCommands = 0;     ///< number of unknown commands that this assumes
    Origins mOrigins{Origin{}};   ///< of the possible next samples, in their order

    size_t lastSample() const { return mSample + mStride * (mCount - 1); }
    bool contains(size_t sample) const;

    /** Whether it allows for everything that the other one does, at no higher cost. */
    bool dominates(const Hypothesis& other) const;

    /**
     * Takes over what the other one allows. False if their pasts differ, or if the result would
     * allow for more than both together.
     */
    bool absorb(const Hypothesis& other);

    /** Takes over the position of another one, in front of its own; false if the two differ. */
    bool prepend(const Hypothesis& other, const PlayedFile& file);

    /** Splits off a hypothesis with the last sample alone. Requires: mCount > 1. */
    Hypothesis splitLast();
};

/**
 * What may follow the end of the file without a command: the next repetition, the next entry, the
 * continuous configuration. If there is nothing to play, everything that a command may select.
 * Requires: a single position. The results are about to play their first sample.
 */
std::vector<Hypothesis> successors(const Hypothesis& ended, const PlayPlan& plan);

/** What may follow after the command, in the same way. Requires: a valid command. */
std::vector<Hypothesis> successorsOf(const ControlCommand& command, const Hypothesis& ended,
                                     const PlayPlan& plan);

/** The beginnings of the configurations of these entries; each may be the continuous one now. */
std::vector<Hypothesis> startsAt(const std::vector<int>& entries, const Hypothesis& before,
                                 const PlayPlan& plan);

} // namespace explain
