#pragma once

#include "ControlFifo.h"
#include "LogWatch.h"
#include "run/DeviceNight.h"
#include "run/SandboxDesk.h"

namespace run {

/** Now, on both clocks. */
Moment momentNow();

/** Receives SIGINT and SIGTERM instead of the program, as long as this object exists. */
class EndingSignals
{
public:
    EndingSignals();
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;
    ~EndingSignals();

    int descriptor() const { return mFile.get(); }

    /** Number of signals since the last call. */
    int take();

private:
    sigset_t mOldMask{};
    files::FileDescriptor mFile;
};

/** Shows the progress of a night as a line on the terminal, cleared before other texts. */
class NightDisplay
{
public:
    /** @param night is borrowed */
    explicit NightDisplay(const journal::NightBegin& night);
    ~NightDisplay();
    NightDisplay(const NightDisplay&) = delete;
    NightDisplay& operator=(const NightDisplay&) = delete;

    void show(const Progress& progress, const Moment& now);

    /** Prints it as a line. */
    void print(const journal::Finding& finding);
    void print(const journal::Remark& remark);
    void print(const journal::NightEnd& end);

private:
    void clear();

    const journal::NightBegin& mNight;
    bool mIsTerminal;
    bool mIsShown = false;
    qint64 mNextNs = 0;
};

/**
 * Forwards the steps of a night, and prints its findings, its remarks and why it gives up. Borrows
 * both arguments.
 */
class DisplayedJournal : public journal::JournalSink
{
public:
    DisplayedJournal(journal::JournalSink& sink, NightDisplay& display)
        : mSink(sink), mDisplay(display)
    {
    }

    void append(const journal::Entry& entry) override;

private:
    journal::JournalSink& mSink;
    NightDisplay& mDisplay;
};

/** "case 17 of 33  dip1 (4 of 10)  3.2 s left  0 findings  ends 05:12" */
std::string progressText(const journal::NightBegin& night, const Progress& progress);

/**
 * Runs a night that has begun until it is over. The first signal interrupts it, the second ends it
 * at once.
 */
void playNight(Night& night, SandboxDesk& desk, EndingSignals& ending, NightDisplay& display);

/** The control FIFO of a device and the log of the program there. */
class RealDevice : public Device
{
public:
    /** @throws CaseError if the log cannot be read */
    RealDevice(const std::string& fifo, const std::string& log);

    std::string send(const std::string& line) override;
    std::string problem() override;

    /** Passes the lines of the log since the last call to the night. */
    void deliver(DeviceNight& night, const Moment& now);

private:
    QString mFifo;
    control::LogWatch mLog;
};

/** The same for a night on a device. */
void playNight(DeviceNight& night, RealDevice& device, EndingSignals& ending,
               NightDisplay& display);

} // namespace run
