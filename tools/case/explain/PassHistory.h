#pragma once

#include <QList>
#include <memory>
#include <set>
#include <vector>

#include "explain/Costs.h"

namespace explain {

struct Hypothesis;
class PlayPlan;

/** When the first sample that a command brought was met. */
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

/** Passes of one file in a row, the last one to its end or so far. */
struct PlayedPasses
{
    size_t mFile;
    std::set<int> mConfigurations; ///< every one that fits
    size_t mKnownCommands;         ///< as in Hypothesis; so the others
    int mUnknownCommands;
    CommandEffect mLastEffect;
    Arrival mFirst;
    Arrival mLast;
    size_t mFirstSample; ///< of the first pass, in its file; not 0 where that is cut
    size_t mLastSample;  ///< of the last pass
    size_t mPasses;
    size_t mSamples; ///< that arrived

    /** Takes over a pass that goes on with these; false where it is another thing. */
    bool append(const PlayedPasses& next);
};

/** Passes that have ended and those before them, back to where the past is settled. */
struct EndedPasses
{
    PlayedPasses mPasses;
    int mCost;    ///< of the hypotheses that ended them
    size_t mRows; ///< with those before
    std::shared_ptr<const EndedPasses> mBefore;
};

/** How the pass began in which a hypothesis is, and what was before it. */
struct Origin
{
    size_t mCount = 1; ///< positions of the hypothesis that share it
    bool mHasBegun = false;
    Arrival mFirst{};          ///< once it has begun
    size_t mSamplesBefore = 0; ///< that the tracker had taken when it began
    CommandEffect mLastEffect{};
    std::shared_ptr<const EndedPasses> mBefore; ///< what is not settled; null when nothing
};

/**
 * The origins of a hypothesis's positions, in their order; neighbours share one where they began
 * together. Copies share them until one is changed, so that a search may copy hypotheses freely.
 */
class Origins
{
public:
    explicit Origins(Origin origin, size_t count = 1);

    /** Of passes that have not begun and nothing before them; the last command's effect stays. */
    Origins fresh(size_t count) const;

    const Origin& first() const { return mAll.first(); }
    const Origin& last() const { return mAll.last(); }
    Origin& changeFirst() { return mAll.first(); }

    /** Whether all positions have the same past. */
    bool isSameAs(const Origins& other) const;

    /** Adds one position in front. Of more than kMaxOrigins the newest count as one. */
    void pushFirst(Origin origin);
    void dropLast();

    const QList<Origin>& all() const { return mAll; }
    QList<Origin>& changeAll() { return mAll; }

private:
    QList<Origin> mAll;
};

/**
 * What the hypotheses have in common of their past, and where it ends. Stateless: the past itself
 * is in the hypotheses, so that it goes when they go.
 */
class PassHistory
{
public:
    explicit PassHistory(const PlayPlan& plan) : mPlan(plan) {}

    /**
     * The pass in which the first position of a hypothesis is, so far.
     * @param samplesTaken by the tracker, with the last one of the pass
     */
    PlayedPasses passOf(const Hypothesis& hypothesis, size_t samplesTaken,
                        const Arrival& last) const;

    /**
     * Remembers in each what has ended; those that are as likely and began it together share it.
     * Requires: single positions at the end of their files.
     */
    void addEnded(std::vector<Hypothesis>* ended, size_t samplesTaken, const Arrival& last) const;

    /** Whether all have the same past, up to the pass that they are in. */
    static bool agree(const std::vector<Hypothesis>& all);

    /** Whether one of them remembers more than kMaxAmbiguousRows. */
    static bool isTooLong(const std::vector<Hypothesis>& all);

    /**
     * Settles the past as it is for the first position of the decisive one, and takes it out,
     * oldest first. Those of another past continue as if their pass had begun with the decisive
     * one's.
     */
    static std::vector<PlayedPasses> settle(const Hypothesis& decisive,
                                            std::vector<Hypothesis>* all);

private:
    const PlayPlan& mPlan;
};

} // namespace explain
