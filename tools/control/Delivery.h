#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <optional>

#include "ControlFifo.h"
#include "EventFile.h"
#include "LogWatch.h"
#include "PlayRequest.h"

namespace control {

class ControlOptions;

/**
 * Sends one request to the simulator and, if requested, waits for the answer.
 *
 * The log has the result of a command, not its sender. So a process that waits for an answer holds
 * the lock of the FIFO, and writes only when no other command is left there: the next matching
 * answer is then the answer to this request.
 */
class Delivery
{
public:
    /** `options` is borrowed for the object's life. */
    Delivery(const ControlOptions& options, const PlayRequest& request);

    /** Delivers the request and reports errors. @return the exit status */
    int run();

private:
    QString openFiles();
    QString deliver();
    QString awaitTurn();
    QString record(const QString& problem);
    int awaitVerdict();

    bool mustWait() const;

    const ControlOptions& mOptions;
    PlayRequest mRequest;
    QDeadlineTimer mDeadline; ///< of --wait
    ControlFifo mFifo;
    std::optional<EventFile> mEvents;
    std::optional<LogWatch> mLog;
    qint64 mSentNs = 0; ///< since the epoch
};

} // namespace control
