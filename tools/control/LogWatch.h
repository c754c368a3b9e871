#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace control {

/**
 * Follows a log file from the end that it has when the watch is made. Goes on in the new file when
 * the log is renamed away and made again, and from the beginning when it is cut.
 *
 * Owns the open file, which may be the renamed one.
 */
class LogWatch
{
public:
    /** A file that is not there yet counts as empty. */
    explicit LogWatch(const QString& path);

    /** What is wrong with a file that is there but cannot be read; else empty. */
    QString problem() const { return mProblem; }

    /**
     * The next line that has come, with its line end; empty when there is none yet. A line is
     * given once its end has arrived.
     */
    QByteArray nextLine();

private:
    bool openFromBeginning();
    bool wasReplaced() const;
    void readMore();

    QFile mFile;
    QString mProblem;
    QByteArray mUnread; ///< what was read and is not yet a line
};

} // namespace control
