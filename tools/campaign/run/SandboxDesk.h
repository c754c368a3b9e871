#pragma once

#include <poll.h>

#include <memory>
#include <optional>

#include "run/ChildProcess.h"
#include "run/Night.h"
#include "run/NightFolder.h"
#include "run/PlayRecordings.h"
#include "run/StreamReader.h"

namespace run {

/** The programs that a night starts, and their settings. */
struct SandboxSetup
{
    std::string mSandbox;             ///< vx-sandbox
    std::string mSimulator;           ///< vx-simulator
    std::string mFolder;              ///< of the night
    std::string mStage;               ///< directory of the value files, where cases.conf is
    std::vector<std::string> mFaults; ///< of --fault, for the first run of the program
    bool mKeepsAll = false;           ///< keeps records and events of each run in the folder
};

/**
 * The real desk: runs the simulator in the sandbox, reads samples and events as they arrive, and
 * forwards the commands. The sandbox and the program end with this object, or with its process,
 * because their standard input ends then.
 */
class SandboxDesk : public Desk
{
public:
    explicit SandboxDesk(SandboxSetup setup);

    void start(int run) override;
    void send(const std::string& command) override;
    void stop() override { mCommands.close(); }
    void kill() override;
    std::string keep(const std::string& name, const std::vector<SampleRecord>& records) override;

    void record(const std::string& name, const SampleRecord* records, size_t count) override
    {
        mRecordings.add(name, records, count);
    }

    void endRecording(const std::string& name, bool isWanted) override
    {
        mRecordings.end(name, isWanted);
    }

    /** Descriptor to wait for; call deliver() when it is readable. */
    pollfd waitsFor() const;

    /** Passes everything since the last call to the night. Never waits. */
    void deliver(Night& night, const Moment& now);

private:
    /** The data from one pipe. */
    struct Stream
    {
        void add(const std::string& arrived);

        std::string mUnread; ///< the beginning of an incomplete line or record
        files::FileDescriptor mCopy;
    };

    void startProgram(int run);
    std::vector<std::string> commandFor(int run) const;
    void tellEvents(Night& night, const Moment& now);
    void deliverRecords(Night& night, const Moment& now);
    void tellEnd(Night& night, const Moment& now);

    SandboxSetup mSetup;
    NightFolder mFolder;
    PlayRecordings mRecordings;
    std::unique_ptr<ChildProcess> mSandbox;
    files::FileDescriptor mCommands; ///< standard input of the sandbox
    std::unique_ptr<StreamReader> mReader;
    Stream mRecords;
    Stream mEvents;
    bool mIsRunEndKnown = false;
    bool mIsFirstRun = true;
    std::optional<std::string> mStartProblem;
};

} // namespace run
