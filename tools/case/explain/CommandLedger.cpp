#include "explain/CommandLedger.h"

#include <algorithm>

#include "explain/Costs.h"

namespace explain {

std::optional<CommandOutcome> CommandLedger::add(const Event& sent)
{
    const ControlCommand command(QString::fromStdString(sent.mText + "\n"), mConfigurationCount);
    if (command.isValid()) {
        mValid.push_back(command);
        mGiven.push_back({sent.mText, sent.mTimeNs});
        return std::nullopt;
    }
    std::string problem = command.error();
    std::replace(problem.begin(), problem.end(), '\n', ' ');
    return CommandOutcome{sent.mText, sent.mTimeNs, problem, std::nullopt, 0};
}

std::optional<int> CommandLedger::continuousAt(qint64 ns) const
{
    for (size_t i = mGiven.size(); i > 0; --i) {
        if (mGiven[i - 1].mArrivalNs <= ns && !mValid[i - 1].isOnce()) {
            return mValid[i - 1].number();
        }
    }
    return std::nullopt;
}

CommandOutcome CommandLedger::outcomeOf(const GivenCommand& command)
{
    return {command.mText, command.mArrivalNs, "", std::nullopt, 0};
}

std::optional<CommandOutcome> CommandLedger::giveUpOverdue(size_t index, qint64 nowNs)
{
    if (index >= mGiven.size()) {
        return std::nullopt;
    }
    GivenCommand& waiting = mGiven[index];
    const CommandOutcome outcome = outcomeOf(waiting);
    waiting.mIsGivenUp = ++waiting.mPolls > kMaxPolls && isNotFollowed(outcome, nowNs);
    return waiting.mIsGivenUp ? std::optional<CommandOutcome>(outcome) : std::nullopt;
}

std::optional<CommandOutcome> CommandLedger::takeUnreported(size_t end)
{
    while (mReported < std::min(end, mGiven.size())) {
        const GivenCommand& command = mGiven[mReported++];
        if (!command.mIsGivenUp) {
            return outcomeOf(command);
        }
    }
    return std::nullopt;
}

bool CommandLedger::isNotFollowed(const CommandOutcome& waiting, qint64 endNs) const
{
    return endNs - waiting.mArrivalNs > mLongestCaseNs + kWaitToleranceNs;
}

} // namespace explain
