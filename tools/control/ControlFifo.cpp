#include "ControlFifo.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include <cerrno>
#include <cstring>

namespace {
QString whyNotOpen(int error)
{
    switch (error) {
        case ENOENT:
            return QStringLiteral("there is no such FIFO; is the simulator running?");
        case ENXIO:
            return QStringLiteral("nobody reads it; is the simulator running?");
        default:
            return QString::fromLocal8Bit(std::strerror(error));
    }
}

QString problemOfWriting(int descriptor, const QByteArray& line)
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return QStringLiteral("expected a FIFO, and it is none; nothing was written");
    }
    if (write(descriptor, line.constData(), static_cast<size_t>(line.size())) == line.size()) {
        return {};
    }
    return errno == EAGAIN ? QStringLiteral("it is full; its reader takes no commands")
                           : QString::fromLocal8Bit(std::strerror(errno));
}
} // namespace

QString sendCommand(const QString& path, const QByteArray& line)
{
    // Without O_NONBLOCK the open would wait for a reader.
    const int descriptor =
        open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    const QString problem = descriptor < 0 ? whyNotOpen(errno) : problemOfWriting(descriptor, line);
    if (descriptor >= 0) {
        close(descriptor);
    }
    return problem.isEmpty() ? problem : path + QStringLiteral(": ") + problem;
}
