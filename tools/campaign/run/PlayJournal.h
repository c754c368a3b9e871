#pragma once

#include <map>

#include "journal/JournalWriter.h"
#include "run/Desk.h"

namespace run {

/**
 * Writes the steps into the journal, and counts the findings of the current play. Once the journal
 * cannot be written, it keeps the reason and writes nothing more.
 *
 * Borrows the journal.
 */
class PlayJournal
{
public:
    /** Limit of written findings of one kind per play; all are counted. */
    static constexpr int kMaxListed = 20;

    explicit PlayJournal(journal::JournalSink& sink) : mSink(sink) {}

    /** Sets the time of the next steps. */
    void setTime(const Moment& now) { mNow = now; }

    void write(journal::Step step);

    /** @param findings number that the play has from before the night was cut off */
    void beginPlay(int play, quint64 findings);

    /** Whether another finding of this kind would be written. */
    bool lists(const std::string& kind) const;

    /** Adds it to the current play, or to the night if there is none. */
    void addFinding(journal::Finding finding);

    /**
     * Ends the current play. A play with findings has failed.
     * @return its verdict
     */
    journal::PlayVerdict endPlay(journal::PlayEnd end);

    /** The current play. */
    const std::optional<int>& play() const { return mPlay; }

    /** Number for the current play, or since the last one. */
    quint64 findings() const { return mFindings; }

    quint64 allFindings() const { return mAllFindings; }
    void setAllFindings(quint64 count) { mAllFindings = count; }

    /** Why the journal could not be written; empty while it can. */
    const std::string& problem() const { return mProblem; }

private:
    void forgetFindings(quint64 count);

    journal::JournalSink& mSink;
    Moment mNow;
    std::optional<int> mPlay;
    quint64 mFindings = 0;
    quint64 mAllFindings = 0;
    std::map<std::string, int> mListed;
    std::string mProblem;
};

} // namespace run
