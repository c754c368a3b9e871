#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace control {

/**
 * The control FIFO, for a writer. Nothing here ever waits: a FIFO that nobody reads is a problem
 * at once. Makes no FIFO where there is none. Owns the open descriptor.
 *
 * Problems are one line that begins with the path; empty when there is none.
 */
class ControlFifo
{
public:
    explicit ControlFifo(const QString& path) : mPath(path) {}
    ControlFifo(const ControlFifo&) = delete;
    ControlFifo& operator=(const ControlFifo&) = delete;
    ~ControlFifo();

    /** @return what is wrong */
    QString open();

    /** What makes commands unsafe, one line each. Requires: open, as all that follows. */
    QStringList warnings() const;

    /**
     * Becomes the only one who holds the FIFO's lock, until this object goes away; false while
     * somebody else holds it. The lock keeps nobody from writing.
     */
    bool tryLock() const;

    /** True when commands wait in it, or part of one. */
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
