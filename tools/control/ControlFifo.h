#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace control {

/**
 * The writing side of the control FIFO. Nothing here ever waits: a FIFO without a reader is a
 * problem at once. Never makes a FIFO. Owns the open descriptor.
 *
 * A problem is one line that begins with the path; empty when there is none.
 */
class ControlFifo
{
public:
    explicit ControlFifo(const QString& path) : mPath(path) {}
    ControlFifo(const ControlFifo&) = delete;
    ControlFifo& operator=(const ControlFifo&) = delete;
    ~ControlFifo();

    /** @return the error; empty on success */
    QString open();

    /** What makes the FIFO unsafe, one line each. Requires: open, as does all that follows. */
    QStringList warnings() const;

    /**
     * Takes the FIFO's advisory lock, until this object goes away; false while another process
     * holds it. The lock keeps nobody from writing.
     */
    bool tryLock() const;

    /** True when bytes wait in it that the simulator has not taken. */
    bool hasWaitingCommands() const;

    /**
     * Writes one line in one piece, so that lines of several writers never mix. Ignores SIGPIPE
     * from then on.
     *
     * @param line with its line end; at most PIPE_BUF bytes
     * @return what is wrong; empty when it was written
     */
    QString write(const QByteArray& line) const;

private:
    QString problem(const QString& text) const { return mPath + QStringLiteral(": ") + text; }

    QString mPath;
    int mDescriptor = -1;
};

} // namespace control
