#include "EventFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <cerrno>

#include "Messages.h"
#include "PipeOrDevice.h"

namespace control {

namespace {
constexpr mode_t kNewFileMode = 0666;

/** A JSON string with its quotes. QJsonDocument can write one only within an array. */
QByteArray quoted(const QString& text)
{
    const QByteArray array =
        QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact).trimmed();
    return array.mid(1, array.size() - 2);
}

QString problemOf(int descriptor)
{
    struct stat status
    {
    };
    if (fstat(descriptor, &status) != 0) {
        return systemText(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return QString::fromLatin1(configuration::kExpectedRegularFile);
    }
    char first = '{';
    const bool isEvents = pread(descriptor, &first, 1, 0) >= 0 && first == '{';
    return isEvents ? QString()
                    : QStringLiteral("expected the events of a run, one JSON object a line");
}
} // namespace

EventFile::~EventFile()
{
    if (mDescriptor >= 0) {
        close(mDescriptor);
    }
}

QString EventFile::open()
{
    // Without O_NONBLOCK opening a FIFO would wait for a reader.
    constexpr int kFlags = O_RDWR | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    mDescriptor = ::open(QFile::encodeName(mPath).constData(), kFlags, kNewFileMode);
    const QString problem = mDescriptor < 0 ? systemText(errno) : problemOf(mDescriptor);
    return problem.isEmpty() ? problem : mPath + QStringLiteral(": ") + problem;
}

QString EventFile::append(qint64 realtimeNs, const QByteArray& command, const QString& problem)
{
    // Not with QJsonDocument: it stores numbers as double, which cannot hold the time exactly.
    const QByteArray line =
        "{\"t\":" + QByteArray::number(realtimeNs) + R"(,"file":"simulator_control","bytes":)" +
        QByteArray::number(command.size()) + R"(,"accepted":)" +
        (problem.isEmpty() ? "true" : "false") + R"(,"text":")" + command.trimmed() + '"' +
        (problem.isEmpty() ? QByteArray() : R"(,"reason":)" + quoted(problem)) +
        R"(,"by":"vx-control"})" + '\n';
    errno = 0;
    const ssize_t written = write(mDescriptor, line.constData(), static_cast<size_t>(line.size()));
    if (written == line.size()) {
        return {};
    }
    const QString reason = systemText(written < 0 ? errno : ENOSPC);
    return mPath + QStringLiteral(": ") + reason;
}

} // namespace control
