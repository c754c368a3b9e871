#pragma once

#include <optional>
#include <vector>

#include "ControlCommand.h"
#include "explain/Event.h"
#include "explain/Findings.h"

namespace explain {

/** The commands of a run: what was given, how long each waited, and whether it was reported. */
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

    /** All valid ones so far. */
    const std::vector<ControlCommand>& valid() const { return mValid; }

    /** What the last of them that arrived by then asked to play continuously; nothing if none did.
     */
    std::optional<int> continuousAt(qint64 ns) const;

    /**
     * A case has ended while the command with this index, if there is one, was waiting. Returns its
     * outcome when it has waited too long: nothing else is reported of it then.
     */
    std::optional<CommandOutcome> giveUpOverdue(size_t index, qint64 nowNs);

    /** The next one that was not reported yet, if its index is below this. */
    std::optional<CommandOutcome> takeUnreported(size_t end);
    std::optional<CommandOutcome> takeUnreported() { return takeUnreported(mGiven.size()); }

    /** Number of commands, from the first on, of which it was reported what became of them. */
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
    std::vector<ControlCommand> mValid; ///< and below what else is known of each
    std::vector<GivenCommand> mGiven;
    size_t mReported = 0;
};

} // namespace explain
