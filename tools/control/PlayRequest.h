#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace control {

/** What is asked of the simulator. */
struct PlayRequest
{
    bool mOnce = false; ///< play through once, else from now on
    qint32 mNumber = 0; ///< of the configuration

    /** The line that is written into the FIFO, with its line end. */
    QByteArray line() const;
};

enum class RequestVerdict
{
    Unknown, ///< the line tells nothing of it
    Executed,
    Rejected
};

/**
 * What a line of the simulator's log says of a request. Whatever the log's layout puts before and
 * behind the message does not matter.
 */
RequestVerdict verdictOf(const QByteArray& logLine, const PlayRequest& request);

} // namespace control
