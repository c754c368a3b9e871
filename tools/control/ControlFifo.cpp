#include "ControlFifo.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include <cerrno>
#include <csignal>

#include "Messages.h"

namespace control {

namespace {
constexpr mode_t kRightsOfOthers = S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

QString notFifoText()
{
    return QStringLiteral("not a FIFO; nothing was written");
}

QString errorText(int error)
{
    switch (error) {
        case ENOENT:
            return QStringLiteral("there is no such FIFO; is the simulator running?");
        case ENXIO:
        case EPIPE: // the reader has closed the FIFO since it was opened
            return QStringLiteral("nobody reads it; is the simulator running?");
        case EAGAIN:
            return QStringLiteral("it is full: its reader takes no commands");
        default:
            return systemText(error);
    }
}

QString openErrorText(const QByteArray& path, int error)
{
    struct stat status
    {
    };
    const bool isSocket =
        error == ENXIO && stat(path.constData(), &status) == 0 && !S_ISFIFO(status.st_mode);
    return isSocket ? notFifoText() : errorText(error);
}
} // namespace

ControlFifo::~ControlFifo()
{
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

QString ControlFifo::open()
{
    const QByteArray name = QFile::encodeName(mPath);
    // Without O_NONBLOCK the open would wait for a reader.
    mDescriptor = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (mDescriptor < 0) {
        return problem(openErrorText(name, errno));
    }
    struct stat status
    {
    };
    const bool isFifo = fstat(mDescriptor, &status) == 0 && S_ISFIFO(status.st_mode);
    return isFifo ? QString() : problem(notFifoText());
}

QStringList ControlFifo::warnings() const
{
    struct stat status
    {
    };
    QStringList warnings;
    if (fstat(mDescriptor, &status) != 0) {
        return warnings;
    }
    if (status.st_uid != 0 && status.st_uid != geteuid()) {
        warnings += problem(QStringLiteral("it belongs to user %1, neither to you nor to root; is "
                                           "its reader the simulator?")
                                .arg(status.st_uid));
    }
    if ((status.st_mode & kRightsOfOthers) != 0) {
        warnings += problem(QStringLiteral("others can send commands or take yours away (mode "
                                           "%1); chmod 0600 prevents that")
                                .arg(status.st_mode & ALLPERMS, 4, 8, QLatin1Char('0')));
    }
    return warnings;
}

bool ControlFifo::tryLock() const
{
    return flock(mDescriptor, LOCK_EX | LOCK_NB) == 0;
}

bool ControlFifo::hasWaitingCommands() const
{
    int bytes = 0;
    return ioctl(mDescriptor, FIONREAD, &bytes) == 0 && bytes > 0;
}

QString ControlFifo::write(const QByteArray& line) const
{
    std::signal(SIGPIPE, SIG_IGN);
    const ssize_t written =
        ::write(mDescriptor, line.constData(), static_cast<size_t>(line.size()));
    return written == line.size() ? QString() : problem(errorText(errno));
}

} // namespace control
