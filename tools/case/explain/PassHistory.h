#pragma once

#include <QList>
#include <memory>
#include <set>
#include <vector>

#include "explain/Costs.h"

namespace explain {

struct Hypothesis;
class PlayPlan;

/** When the first sample selected by a command arrived. */
struct CommandEffect
{
    qint64 mArrivalNs; ///< of the block with that sample
    qint64 mStampNs;   ///< its time stamp
};

/** A record that arrived: its index in the recording, from 0, and its time stamp. */
struct Arrival
{
    size_t mRecord;
    qint64 mStampNs;
};

/** Passes of one file in a row; the last one may be incomplete. */
struct PlayedPasses
{
    size_t mFile;
    std::set<int> mConfigurations; ///< every one that fits
    size_t mKnownCommands;         ///< these two as in Hypothesis
    int mUnknownCommands;
    CommandEffect mLastEffect;
    Arrival mFirst;
    Arrival mLast;
    size_t mFirstSample; ///< of the first pass, in its file; above 0 if the pass is cut
    size_t mLastSample;  ///< of the last pass
    size_t mPasses;
    size_t mSamples; ///< that arrived

    /** Appends a pass that continues these; false if it does not. */
    bool append(const PlayedPasses& next);
};

/** Ended passes and those before them, back to the settled past. */
struct EndedPasses
{
    PlayedPasses mPasses;
    int mCost;    ///< of the hypotheses that ended them
    size_t mRows; ///< with those before
    std::shared_ptr<const EndedPasses> mBefore;
};

/** The beginning of the current pass of a hypothesis, and the passes before it. */
struct Origin
{
    size_t mCount = 1; ///< positions of the hypothesis that share it
    bool mHasBegun = false;
    Arrival mFirst{};          ///< once it has begun
    size_t mSamplesBefore = 0; ///< number taken by the tracker before it began
    CommandEffect mLastEffect{};
    std::shared_ptr<const EndedPasses> mBefore; ///< passes that are not settled; null for none
};

/**
 * The origins of a hypothesis's positions, in their order; adjacent ones share one if they began
 * together. Copies share them until one is changed, so a search can copy hypotheses cheaply.
 */
class Origins
{
public:
    explicit Origins(Origin origin, size_t count = 1);

    /**
     * Origins of passes that have not begun, without passes before them; keeps the last command's
     * effect.
     */
    Origins fresh(size_t count) const;

    const Origin& first() const { return mAll.first(); }
    const Origin& last() const { return mAll.last(); }
    Origin& changeFirst() { return mAll.first(); }

    /** Whether all positions have the same past. */
    bool isSameAs(const Origins& other) const;

    /** Adds a position in front. Beyond kMaxOrigins, the newest positions share one origin. */
    void pushFirst(Origin origin);
    void dropLast();

    const QList<Origin>& all() const { return mAll; }
    QList<Origin>& changeAll() { return mAll; }

private:
    QList<Origin> mAll;
};

/**
 * Finds the past that the hypotheses have in common. Stateless: the past is stored in the
 * hypotheses, so it goes away with them.
 */
class PassHistory
{
public:
    explicit PassHistory(const PlayPlan& plan) : mPlan(plan) {}

    /**
     * The current pass of the first position of a hypothesis, so far.
     * @param samplesTaken by the tracker, with the last one of the pass
     */
    PlayedPasses passOf(const Hypothesis& hypothesis, size_t samplesTaken,
                        const Arrival& last) const;

    /**
     * Stores the ended pass in each hypothesis; those with equal cost and the same beginning share
     * it.
     * Requires: single positions at the end of their files.
     */
    void addEnded(std::vector<Hypothesis>* ended, size_t samplesTaken, const Arrival& last) const;

    /** Whether all have the same past, up to the pass that they are in. */
    static bool agree(const std::vector<Hypothesis>& all);

    /** Whether one of them stores more than kMaxAmbiguousRows. */
    static bool isTooLong(const std::vector<Hypothesis>& all);

    /**
     * Settles the past as that of the decisive one's first position, and removes it, oldest first.
     * Hypotheses with another past continue as if their pass had begun with that of the decisive
     * one.
     */
    static std::vector<PlayedPasses> settle(const Hypothesis& decisive,
                                            std::vector<Hypothesis>* all);

private:
    const PlayPlan& mPlan;
};

} // namespace explain
