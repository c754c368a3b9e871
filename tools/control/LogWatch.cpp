#include "LogWatch.h"

#include <sys/stat.h>

#include <algorithm>

#include "PipeOrDevice.h"

namespace control {

namespace {
/** After a truncation, a writer without O_APPEND leaves zeros before its next line. */
QByteArray withoutLeadingNuls(const QByteArray& line)
{
    const auto isZero = [](char byte) { return byte == '\0'; };
    const auto* const text = std::find_if_not(line.begin(), line.end(), isZero);
    return line.mid(int(text - line.begin()));
}
} // namespace

LogWatch::LogWatch(const QString& path) : mFile(path)
{
    if (!QFile::exists(path)) {
        return;
    }
    if (configuration::isPipeOrDevice(path)) {
        mProblem = path + QStringLiteral(": ") + configuration::kExpectedRegularFile;
        return;
    }
    if (openFromBeginning()) {
        mFile.seek(mFile.size());
    } else {
        mProblem = path + QStringLiteral(": ") + mFile.errorString();
    }
}

QByteArray LogWatch::nextLine()
{
    int end = mUnread.indexOf('\n');
    if (end < 0) {
        readMore();
        end = mUnread.indexOf('\n');
    }
    const QByteArray line = mUnread.left(end + 1);
    mUnread.remove(0, line.size());
    return withoutLeadingNuls(line);
}

bool LogWatch::openFromBeginning()
{
    mFile.close();
    return mFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

/** True if the log's name now refers to another file than the open one (rotation). */
bool LogWatch::wasReplaced() const
{
    struct stat named
    {
    };
    struct stat held
    {
    };
    return stat(QFile::encodeName(mFile.fileName()).constData(), &named) == 0 &&
           fstat(mFile.handle(), &held) == 0 &&
           (named.st_ino != held.st_ino || named.st_dev != held.st_dev);
}

void LogWatch::readMore()
{
    if (!mFile.isOpen() && !openFromBeginning()) {
        return;
    }
    if (mFile.pos() > mFile.size()) {
        mFile.seek(0);
    }
    // Checked before reading, so that everything written before the rename is read.
    const bool isLast = wasReplaced();
    mUnread += mFile.readAll();
    if (isLast && openFromBeginning()) {
        mUnread += mFile.readAll();
    }
}

} // namespace control
