#include "run/DeviceNight.h"

#include <fmt/format.h>

#include <algorithm>

namespace run {

namespace {
using journal::NightEnd;

/** Max time for an answer beyond the longest case. */
constexpr qint64 kAnswerToleranceNs = 10'000'000'000;

/** Max difference between the program's stream and the wall clock. */
constexpr qint64 kPlayingToleranceNs = 1'000'000'000;
} // namespace

DeviceNight::DeviceNight(const journal::NightBegin& night, qint64 steadyNs,
                         const NightOptions& options, Device& device, journal::JournalSink& sink)
    : ScheduledNight(night, options, steadyNs + kPlayingToleranceNs, sink),
      mDevice(device),
      mSteadyFileNs(steadyNs)
{
    for (const journal::StagedCase& it : night.mCases) {
        mLongestCaseNs = std::max(mLongestCaseNs, it.mDurationNs);
    }
}

void DeviceNight::addLogLine(const std::string& line, const Moment& now)
{
    schedule().setTime(now);
    if (mState != State::Commanded) {
        return;
    }
    switch (control::verdictOf(QByteArray::fromStdString(line), mRequest)) {
        case control::RequestVerdict::Executed:
            enter(State::Playing);
            return;
        case control::RequestVerdict::Rejected:
            fail("rejected", "the program rejects the command: " +
                                 QByteArray::fromStdString(line).trimmed().toStdString());
            return;
        case control::RequestVerdict::Unknown:
            return;
    }
}

void DeviceNight::interrupt(const Moment& now)
{
    schedule().setTime(now);
    if (!isOver()) {
        finish(NightEnd::Reason::Interrupted);
    }
}

void DeviceNight::tick(const Moment& now)
{
    schedule().setTime(now);
    if (!problem().empty()) {
        mState = State::Over;
    } else if (mState == State::Waiting && schedule().isDue()) {
        nextPlay();
    } else if (mState == State::Gap && inStateNs() >= schedule().gapNs()) {
        sendCommand();
    } else if (mState == State::Commanded || mState == State::Playing) {
        watchPlay();
    }
}

void DeviceNight::watchPlay()
{
    if (const std::string lost = mDevice.problem(); !lost.empty()) {
        fail("died", "the program ended during the play: " + lost);
    } else if (mState == State::Commanded &&
               inStateNs() > mSteadyFileNs + mLongestCaseNs + kAnswerToleranceNs) {
        fail("notAnswered", "the log does not answer the command");
    } else if (mState == State::Playing &&
               inStateNs() >= schedule().currentCase().mDurationNs + kPlayingToleranceNs) {
        endPlay();
    }
}

void DeviceNight::enter(State state)
{
    mState = state;
    mSinceNs = schedule().now().mSteadyNs;
}

void DeviceNight::nextPlay()
{
    if (!schedule().hasNext()) {
        finish(schedule().reason());
        return;
    }
    schedule().beginNext();
    enter(State::Gap);
}

void DeviceNight::sendCommand()
{
    mRequest = {true, schedule().currentCase().mNumber};
    const QByteArray line = mRequest.line();
    playJournal().write(journal::CommandSent{*playJournal().play(), line.trimmed().toStdString()});
    const std::string refusal = mDevice.send(line.toStdString());
    if (refusal.empty()) {
        enter(State::Commanded);
    } else {
        fail("notSent", refusal);
    }
}

void DeviceNight::fail(const std::string& kind, const std::string& text)
{
    playJournal().addFinding({std::nullopt, kind, text, std::nullopt, ""});
    endPlay();
}

void DeviceNight::endPlay()
{
    schedule().endPlay({0, journal::PlayVerdict::NotObserved, 0, 0, 0, std::nullopt, 0});
    nextPlay();
}

void DeviceNight::finish(NightEnd::Reason reason)
{
    playJournal().write(NightEnd{reason, ""});
    mState = State::Over;
}

} // namespace run
