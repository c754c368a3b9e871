#include "run/NightLoop.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>

#include "base/CaseError.h"
#include "run/PlayOrder.h"
#include "waveform/RecordStamp.h"

namespace run {

namespace {
constexpr int kTickMilliseconds = 100;

qint64 nsOf(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return time.tv_sec * waveform::kSecondInNs + time.tv_nsec;
}

/** Cuts the text to the width of the terminal: a wrapped line could not be overwritten. */
std::string inOneLine(const std::string& text)
{
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    return isKnown ? text.substr(0, size.ws_col - 1U) : text;
}
} // namespace

Moment momentNow()
{
    return {nsOf(CLOCK_REALTIME), nsOf(CLOCK_MONOTONIC)};
}

EndingSignals::EndingSignals()
{
    std::signal(SIGPIPE, SIG_IGN); // the sandbox may end while commands are written to it
    sigset_t all;
    sigemptyset(&all);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&all, number);
    }
    sigprocmask(SIG_BLOCK, &all, &mOldMask);
    mFile = files::FileDescriptor(signalfd(-1, &all, SFD_CLOEXEC | SFD_NONBLOCK));
}

EndingSignals::~EndingSignals()
{
    sigprocmask(SIG_SETMASK, &mOldMask, nullptr);
}

int EndingSignals::take()
{
    int count = 0;
    signalfd_siginfo info{};
    while (read(mFile.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        ++count;
    }
    return count;
}

std::string progressText(const journal::NightBegin& night, const Progress& progress)
{
    const std::string findings =
        fmt::format("{} finding{}", progress.mFindings, progress.mFindings == 1 ? "" : "s");
    if (progress.mCase == nullptr) {
        return findings;
    }
    const auto ends = static_cast<time_t>(progress.mEndsAtNs / waveform::kSecondInNs);
    tm local{};
    localtime_r(&ends, &local);
    return fmt::format(
        "case {} of {}  {}  {:.1f} s left  {}  ends {:%H:%M}", progress.mCaseIndex + 1,
        night.mCases.size(), playText(*progress.mCase, progress.mRepetition),
        static_cast<double>(progress.mLeftNs) / waveform::kSecondInNs, findings, local);
}

NightDisplay::NightDisplay(const journal::NightBegin& night)
    : mNight(night), mIsTerminal(isatty(STDERR_FILENO) == 1)
{
}

NightDisplay::~NightDisplay()
{
    clear();
}

void NightDisplay::show(const Progress& progress, const Moment& now)
{
    if (!mIsTerminal || now.mSteadyNs < mNextNs) {
        return;
    }
    mNextNs = now.mSteadyNs + waveform::kSecondInNs / 10;
    mIsShown = true;
    fmt::print(stderr, "\r{}\033[K", inOneLine(progressText(mNight, progress)));
    std::fflush(stderr);
}

void NightDisplay::clear()
{
    if (mIsShown) {
        std::fputs("\r\033[K", stderr);
        mIsShown = false;
    }
}

void NightDisplay::print(const journal::Finding& finding)
{
    clear();
    std::string where = "outside the plays";
    if (finding.mPlay) {
        const PlayOrder order(mNight);
        where = playText(order.caseOf(*finding.mPlay), order.repetitionOf(*finding.mPlay));
    }
    fmt::print(stderr, "vx-campaign: {}: {}\n", where, finding.mText);
}

void NightDisplay::print(const journal::Remark& remark)
{
    clear();
    fmt::print(stderr, "vx-campaign: remark: {}\n", remark.mText);
}

void NightDisplay::print(const journal::NightEnd& end)
{
    clear();
    if (!end.mText.empty()) {
        fmt::print(stderr, "vx-campaign: the night ends: {}\n", end.mText);
    }
}

void DisplayedJournal::append(const journal::Entry& entry)
{
    mSink.append(entry);
    if (const auto* finding = std::get_if<journal::Finding>(&entry.mStep)) {
        mDisplay.print(*finding);
    } else if (const auto* remark = std::get_if<journal::Remark>(&entry.mStep)) {
        mDisplay.print(*remark);
    } else if (const auto* end = std::get_if<journal::NightEnd>(&entry.mStep)) {
        mDisplay.print(*end);
    }
}

RealDevice::RealDevice(const std::string& fifo, const std::string& log)
    : mFifo(QString::fromStdString(fifo)), mLog(QString::fromStdString(log))
{
    if (!mLog.problem().isEmpty()) {
        throw base::CaseError(mLog.problem().toStdString());
    }
}

std::string RealDevice::send(const std::string& line)
{
    control::ControlFifo fifo(mFifo);
    const QString refusal = fifo.open();
    return (refusal.isEmpty() ? fifo.write(QByteArray::fromStdString(line)) : refusal)
        .toStdString();
}

/** A running program keeps its FIFO open. */
std::string RealDevice::problem()
{
    return control::ControlFifo(mFifo).open().toStdString();
}

void RealDevice::deliver(DeviceNight& night, const Moment& now)
{
    for (QByteArray line = mLog.nextLine(); !line.isEmpty(); line = mLog.nextLine()) {
        night.addLogLine(line.toStdString(), now);
    }
}

void playNight(DeviceNight& night, RealDevice& device, EndingSignals& ending, NightDisplay& display)
{
    while (!night.isOver()) {
        pollfd signalFile{ending.descriptor(), POLLIN, 0};
        poll(&signalFile, 1, kTickMilliseconds);
        const Moment now = momentNow();
        device.deliver(night, now);
        if (ending.take() > 0) {
            night.interrupt(now);
        }
        night.tick(now);
        display.show(night.progress(), now);
    }
}

void playNight(Night& night, SandboxDesk& desk, EndingSignals& ending, NightDisplay& display)
{
    while (!night.isOver()) {
        std::array<pollfd, 2> files = {desk.waitsFor(), pollfd{ending.descriptor(), POLLIN, 0}};
        poll(files.data(), files.size(), kTickMilliseconds);
        const Moment now = momentNow();
        desk.deliver(night, now);
        for (int count = ending.take(); count > 0; --count) {
            night.interrupt(now);
        }
        night.tick(now);
        display.show(night.progress(), now);
    }
}

} // namespace run
