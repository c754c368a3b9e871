#include "ControlFifo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstring>

namespace control {

namespace {
QString notAFifo()
{
    return QStringLiteral("expected a FIFO, and it is none; nothing was written");
}

QString textOf(int error)
{
    switch (error) {
        case ENOENT:
            return QStringLiteral("there is no such FIFO; is the simulator running?");
        case ENXIO:
        case EPIPE: // gone since the FIFO was opened
            return QStringLiteral("nobody reads it; is the simulator running?");
        case EAGAIN:
            return QStringLiteral("it is full; its reader takes no commands");
        default:
            return QString::fromLocal8Bit(std::strerror(error));
    }
}

QString problemOfOpening(const QByteArray& path, int error)
{
    struct stat status
    {
    };
    const bool isSocket =
        error == ENXIO && stat(path.constData(), &status) == 0 && !S_ISFIFO(status.st_mode);
    return isSocket ? notAFifo() : textOf(error);
}

QString problemOfWriting(int descriptor, const QByteArray& line)
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return notAFifo();
    }
    std::signal(SIGPIPE, SIG_IGN);
    const ssize_t written = write(descriptor, line.constData(), static_cast<size_t>(line.size()));
    return written == line.size() ? QString() : textOf(errno);
}
} // namespace

QString sendCommand(const QString& path, const QByteArray& line)
{
    const QByteArray name = QFile::encodeName(path);
    // Without O_NONBLOCK the open would wait for a reader.
    const int descriptor = open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    const QString problem =
        descriptor < 0 ? problemOfOpening(name, errno) : problemOfWriting(descriptor, line);
    if (descriptor >= 0) {
        close(descriptor);
    }
    return problem.isEmpty() ? problem : path + QStringLiteral(": ") + problem;
}

} // namespace control
