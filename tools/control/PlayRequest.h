#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace control {

/** A request to the simulator. */
struct PlayRequest
{
    bool mOnce = false; ///< play it once; otherwise continuously
    qint32 mNumber = 0; ///< of the configuration

    /** The line for the FIFO, with its line end. */
    QByteArray line() const;
};

enum class RequestVerdict
{
    Unknown, ///< the line is about something else
    Executed,
    Rejected
};

/**
 * The verdict on a request in a line of the simulator's log. Anything that the layout of the log
 * puts before and after the message is ignored.
 */
RequestVerdict verdictOf(const QByteArray& logLine, const PlayRequest& request);

} // namespace control
