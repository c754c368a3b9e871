#include "Delivery.h"

#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "ControlOptions.h"
#include "Messages.h"
#include "TimeUtils.h"

namespace control {

namespace {
constexpr unsigned long kCheckIntervalMilliseconds = 50;
constexpr double kMillisecondsPerSecond = 1000.0;

/** More than one check, because a command leaves the FIFO a moment before it is in the log. */
constexpr int kChecksOfEmptyFifo = 2;

/** In nanoseconds since the epoch. */
qint64 realtimeNs()
{
    constexpr qint64 kNanosecondsPerSecond = 1'000'000'000;
    const timespec now = TimeUtils::currentTime();
    return now.tv_sec * kNanosecondsPerSecond + now.tv_nsec;
}
} // namespace

Delivery::Delivery(const ControlOptions& options, const PlayRequest& request)
    : mOptions(options),
      mRequest(request),
      mDeadline(std::llround(options.waitSeconds() * kMillisecondsPerSecond)),
      mFifo(options.fifo())
{
}

bool Delivery::mustWait() const
{
    return mOptions.waitSeconds() > 0.0;
}

int Delivery::run()
{
    const QString unusable = openFiles();
    if (!unusable.isEmpty()) {
        return fail(unusable);
    }
    const QString problem = deliver();
    const QString unrecorded = record(problem);
    int status = EXIT_SUCCESS;
    if (!unrecorded.isEmpty()) {
        status = fail(unrecorded + QStringLiteral("; the command is missing in the events"));
    }
    if (!problem.isEmpty()) {
        return fail(problem);
    }
    return mustWait() ? std::max(status, awaitVerdict()) : status;
}

/** Opens all files except the FIFO. */
QString Delivery::openFiles()
{
    if (mustWait()) {
        const QString problem = LogWatch(mOptions.log()).problem();
        if (!problem.isEmpty()) {
            return problem;
        }
    }
    if (mOptions.events().isEmpty()) {
        return {};
    }
    mEvents.emplace(mOptions.events());
    return mEvents->open();
}

/** Waits for its turn, then writes the command. */
QString Delivery::deliver()
{
    mSentNs = realtimeNs();
    QString problem = mFifo.open();
    if (!problem.isEmpty()) {
        return problem;
    }
    for (const QString& warning : mFifo.warnings()) {
        warn(warning);
    }
    if (mustWait()) {
        problem = awaitTurn();
        if (!problem.isEmpty()) {
            return problem;
        }
        mLog.emplace(mOptions.log());
    }
    mSentNs = realtimeNs();
    return mFifo.write(mRequest.line());
}

/** Waits until no other process waits for an answer and the FIFO has no earlier command. */
QString Delivery::awaitTurn()
{
    for (int looks = 0;;) {
        const bool isAlone = mFifo.tryLock();
        looks = isAlone && !mFifo.hasWaitingCommands() ? looks + 1 : 0;
        if (looks == kChecksOfEmptyFifo) {
            return {};
        }
        if (looks == 0 && mDeadline.hasExpired()) {
            return QStringLiteral("%1: %2 after %3 s; nothing was written")
                .arg(mOptions.fifo(),
                     isAlone ? QStringLiteral("earlier commands still wait in it")
                             : QStringLiteral("another vx-control still waits for its answer"))
                .arg(mOptions.waitSeconds());
        }
        QThread::msleep(kCheckIntervalMilliseconds);
    }
}

QString Delivery::record(const QString& problem)
{
    return mEvents ? mEvents->append(mSentNs, mRequest.line(), problem) : QString();
}

/** Waits until the log shows how the request ended. */
int Delivery::awaitVerdict()
{
    for (;;) {
        const bool isLastLook = mDeadline.hasExpired();
        for (QByteArray line = mLog->nextLine(); !line.isEmpty(); line = mLog->nextLine()) {
            const RequestVerdict verdict = verdictOf(line, mRequest);
            if (verdict != RequestVerdict::Unknown) {
                const int printed = print(QString::fromLocal8Bit(line));
                return verdict == RequestVerdict::Executed ? printed : kNotDone;
            }
        }
        if (isLastLook) {
            return fail(QStringLiteral("written, but the log says nothing about it after "
                                       "%1 s (a command takes effect at the end of a case)")
                            .arg(mOptions.waitSeconds()));
        }
        QThread::msleep(kCheckIntervalMilliseconds);
    }
}

} // namespace control
