#pragma once

#include <QList>
#include <memory>
#include <vector>

#include "ControlCommand.h"
#include "explain/PassHistory.h"
#include "explain/PlayPlan.h"

namespace explain {

/** Numbers of configurations, ascending. Copies share them. */
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
 * One answer to the question where the simulator is in its plan: about to play a sample of an
 * entry. What cannot be known yet is kept open: which repetition it is, what the continuous
 * configuration is, and, where a file goes on alike from several of its samples, which of these.
 * They are at equal distances, and all samples from the first to the last of them are the same as
 * those a stride later, so that one comparison decides about all but the last.
 */
struct Hypothesis
{
    int mEntry = 0;
    size_t mSample = 0; ///< the first of those that may be next, in the entry's file
    size_t mStride = 0; ///< between them; 0 with a single one
    size_t mCount = 1;  ///< of them; 1 where the first is 0: a case that begins is one by itself
    /** Which of the repetitions this is, from 1: all of these are possible. */
    quint32 mMinRepetition = 1;
    quint32 mMaxRepetition = 1;
    ConfigurationSet mContinuous; ///< what may follow when the configuration is played through
    int mCost = 0;                ///< how unlikely it is: see Costs.h
    size_t mKnownCommands = 0;    ///< of those that were given, how many were taken
    int mUnknownCommands = 0;     ///< that must have been given for this to be true
    Origins mOrigins{Origin{}};   ///< of the samples that may be next, in their order

    size_t lastSample() const { return mSample + mStride * (mCount - 1); }
    bool contains(size_t sample) const;

    /** Whether it allows for all that the other does, and is as likely. */
    bool dominates(const Hypothesis& other) const;

    /**
     * Takes over what the other allows; false where their pasts differ, or where the result would
     * allow for more than both.
     */
    bool absorb(const Hypothesis& other);

    /** Takes over the position of another, in front of its own; false where the two differ. */
    bool prepend(const Hypothesis& other, const PlayedFile& file);

    /** The one with the last sample alone, which is removed from this. Requires: mCount > 1. */
    Hypothesis splitLast();
};

/**
 * What may follow when the file of the hypothesis has been played to its end and no command was
 * taken: the next repetition, the next entry, the continuous configuration. Where there is nothing
 * to play, whatever a command may bring.
 * Requires: a single position. The results are about to play their first sample.
 */
std::vector<Hypothesis> successors(const Hypothesis& ended, const PlayPlan& plan);

/** What may follow upon the command, in the same way. Requires: a valid command. */
std::vector<Hypothesis> successorsOf(const ControlCommand& command, const Hypothesis& ended,
                                     const PlayPlan& plan);

/** The beginnings of the entries' configurations, which may have become the continuous one. */
std::vector<Hypothesis> startsAt(const std::vector<int>& entries, const Hypothesis& before,
                                 const PlayPlan& plan);

} // namespace explain
