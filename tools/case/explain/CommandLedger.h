#pragma once

#include <optional>
#include <vector>

#include "ControlCommand.h"
#include "explain/Event.h"
#include "explain/Findings.h"

namespace explain {

/** The commands of a run: their text, how long each has waited, and whether it was reported. */
class CommandLedger
{
public:
    /**
     * @param configurationCount as of ControlCommand
     * @param longestCaseNs a command that waits longer, with some tolerance, is not followed
     */
    CommandLedger(int configurationCount, qint64 longestCaseNs)
        : mConfigurationCount(configurationCount), mLongestCaseNs(longestCaseNs)
    {
    }

    /** Takes a command that was written; the outcome when the program rejects it. */
    std::optional<CommandOutcome> add(const Event& sent);

    /** All valid commands so far. */
    const std::vector<ControlCommand>& valid() const { return mValid; }

    /**
     * The continuous configuration set by the last command up to this time; no value if there is
     * none.
     */
    std::optional<int> continuousAt(qint64 ns) const;

    /**
     * To be called when a case has ended while the command with this index was waiting. Returns its
     * outcome if it has waited too long; nothing else is then reported for it.
     */
    std::optional<CommandOutcome> giveUpOverdue(size_t index, qint64 nowNs);

    /** The next command that was not reported yet, if its index is below `end`. */
    std::optional<CommandOutcome> takeUnreported(size_t end);
    std::optional<CommandOutcome> takeUnreported() { return takeUnreported(mGiven.size()); }

    /** Number of commands, from the first on, whose outcome was reported. */
    size_t reported() const { return mReported; }

    /** Whether the command waited too long when the run ended at this time. */
    bool isNotFollowed(const CommandOutcome& waiting, qint64 endNs) const;

private:
    struct GivenCommand
    {
        std::string mText;
        qint64 mArrivalNs;
        int mPolls = 0; ///< cases that ended while it waited
        bool mIsGivenUp = false;
    };

    static CommandOutcome outcomeOf(const GivenCommand& command);

    int mConfigurationCount;
    qint64 mLongestCaseNs;
    std::vector<ControlCommand> mValid; ///< mGiven has further facts about each
    std::vector<GivenCommand> mGiven;
    size_t mReported = 0;
};

} // namespace explain
