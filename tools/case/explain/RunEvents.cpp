#include "explain/RunEvents.h"

namespace explain {

void RunEvents::add(Event event)
{
    mLastTimeNs = event.mTimeNs;
    switch (event.mKind) {
        case Event::Kind::Block:
            addBlock(event);
            return;
        case Event::Kind::Command:
            mCommands.push_back(std::move(event));
            return;
        case Event::Kind::ProgramEnd:
            mDeath = event.mText;
            return;
        case Event::Kind::RunEnd:
            endRun(event);
            return;
        case Event::Kind::Other:
            return;
    }
}

void RunEvents::addBlock(const Event& block)
{
    mLastBlockNs = block.mTimeNs;
    if (!block.mAccepted) {
        mRefusedSamples += block.mSamples;
        return;
    }
    mRefusedSamples = 0;
    mSamples += block.mSamples;
    mBlocks.push_back({mSamples, block.mTimeNs});
}

void RunEvents::endRun(const Event& end)
{
    mIsRunOver = true;
    mEndedWhilePlaying =
        end.mText == "time" || end.mText == "interrupted" || end.mText == "input ended";
    if (mDeath.empty() && end.mText == "no block") {
        mDeath = "the program wrote no block before --patience was over";
    }
}

std::optional<qint64> RunEvents::arrivalNs(size_t sample)
{
    while (!mBlocks.empty() && mBlocks.front().mEnd <= sample) {
        mBlocks.pop_front();
    }
    return mBlocks.empty() ? std::nullopt : std::optional<qint64>(mBlocks.front().mArrivalNs);
}

std::optional<Event> RunEvents::takeCommand(std::optional<qint64> untilNs)
{
    if (mCommands.empty() || (untilNs && mCommands.front().mTimeNs > *untilNs)) {
        return std::nullopt;
    }
    Event command = std::move(mCommands.front());
    mCommands.pop_front();
    return command;
}

} // namespace explain
