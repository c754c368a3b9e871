#include "run/SandboxDesk.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "base/CaseError.h"

namespace run {

namespace {
/** The largest size that an ordinary user may set. It holds more than 1 s of the stream. */
constexpr int kPipeBytes = 1 << 20U;

/** Descriptor numbers in the sandbox. */
constexpr int kRecordDescriptor = 3;
constexpr int kEventsDescriptor = 4;

std::string descriptorPath(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

std::string endText(int waitStatus)
{
    if (WIFSIGNALED(waitStatus)) {
        return fmt::format("vx-sandbox was killed by signal {}", WTERMSIG(waitStatus));
    }
    return fmt::format("vx-sandbox ended with status {}; see program.log", WEXITSTATUS(waitStatus));
}
} // namespace

SandboxDesk::SandboxDesk(SandboxSetup setup)
    : mSetup(std::move(setup)), mFolder(mSetup.mFolder), mRecordings(mSetup.mFolder)
{
}

void SandboxDesk::start(int run)
{
    mStartProblem.reset();
    mIsRunEndKnown = false;
    mReader.reset();
    mRecords = {};
    mEvents = {};
    try {
        startProgram(run);
    } catch (const base::CaseError& error) {
        mStartProblem = error.what();
    }
    mIsFirstRun = false;
}

void SandboxDesk::startProgram(int run)
{
    Pipe commands;
    Pipe records;
    Pipe events;
    const files::FileDescriptor log = mFolder.append("program.log");
    // On failure, the default size is enough.
    fcntl(records.mReadEnd.get(), F_SETPIPE_SZ, kPipeBytes);
    if (mSetup.mKeepsAll) {
        mRecords.mCopy = mFolder.append(fmt::format("recording-{}.bin", run));
        mEvents.mCopy = mFolder.append(fmt::format("events-{}.jsonl", run));
    }
    mSandbox = std::make_unique<ChildProcess>(
        ChildSetup{commandFor(run),
                   mSetup.mStage,
                   {commands.mReadEnd.get(), log.get(), log.get(), records.mWriteEnd.get(),
                    events.mWriteEnd.get()}});
    mCommands = std::move(commands.mWriteEnd);
    fcntl(mCommands.get(), F_SETFL, O_NONBLOCK);
    mReader =
        std::make_unique<StreamReader>(std::move(events.mReadEnd), std::move(records.mReadEnd));
}

std::vector<std::string> SandboxDesk::commandFor(int /*run*/) const
{
    std::vector<std::string> words = {mSetup.mSandbox,
                                      "--record",
                                      descriptorPath(kRecordDescriptor),
                                      "--events",
                                      descriptorPath(kEventsDescriptor),
                                      "--send",
                                      "-"};
    for (const std::string& fault : mSetup.mFaults) {
        if (mIsFirstRun) {
            words.insert(words.end(), {"--fault", fault});
        }
    }
    words.insert(words.end(), {"--", mSetup.mSimulator, "--config", "cases.conf"});
    return words;
}

/** A command that cannot be written is detected by the night: its case is not played. */
void SandboxDesk::send(const std::string& command)
{
    if (mCommands.isOpen()) {
        files::writeAll(mCommands.get(), command + '\n');
    }
}

void SandboxDesk::kill()
{
    if (mSandbox) {
        mSandbox->kill();
    }
}

std::string SandboxDesk::keep(const std::string& name, const std::vector<SampleRecord>& records)
{
    return mFolder.keep(name, records);
}

pollfd SandboxDesk::waitsFor() const
{
    return {mReader ? mReader->descriptor() : -1, POLLIN, 0};
}

void SandboxDesk::deliver(Night& night, const Moment& now)
{
    if (mStartProblem) {
        const std::string problem = *mStartProblem;
        mStartProblem.reset();
        night.programEnded(problem, 0, now);
        return;
    }
    if (!mSandbox) {
        return;
    }
    const ArrivedBytes arrived = mReader->take();
    mEvents.add(arrived.mEvents);
    mRecords.add(arrived.mRecords);
    tellEvents(night, now);
    deliverRecords(night, now);
    if (arrived.mHasEnded) {
        tellEnd(night, now);
    }
}

void SandboxDesk::Stream::add(const std::string& arrived)
{
    mUnread += arrived;
    if (mCopy.isOpen() && !files::writeAll(mCopy.get(), arrived)) {
        mCopy.close(); // a file with a gap is worse than a short one
    }
}

void SandboxDesk::tellEvents(Night& night, const Moment& now)
{
    size_t begin = 0;
    for (size_t end = mEvents.mUnread.find('\n'); end != std::string::npos;
         end = mEvents.mUnread.find('\n', begin)) {
        const std::string_view line(mEvents.mUnread.data() + begin, end - begin);
        if (const std::optional<explain::Event> event = explain::parseEvent(line)) {
            mIsRunEndKnown = mIsRunEndKnown || event->mKind == explain::Event::Kind::RunEnd;
            night.add(*event, now);
        }
        begin = end + 1;
    }
    mEvents.mUnread.erase(0, begin);
}

void SandboxDesk::deliverRecords(Night& night, const Moment& now)
{
    std::vector<SampleRecord> records(mRecords.mUnread.size() / sizeof(SampleRecord));
    if (records.empty()) {
        return;
    }
    const size_t bytes = records.size() * sizeof(SampleRecord);
    std::memcpy(records.data(), mRecords.mUnread.data(), bytes);
    mRecords.mUnread.erase(0, bytes);
    night.add(records.data(), records.size(), now);
}

void SandboxDesk::tellEnd(Night& night, const Moment& now)
{
    const int status = mSandbox->wait();
    mSandbox.reset();
    mReader.reset();
    mCommands.close();
    night.programEnded(mIsRunEndKnown ? "" : endText(status), mRecords.mUnread.size(), now);
}

} // namespace run
