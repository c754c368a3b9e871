#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace control {

/**
 * Follows a log file from its present end on. When the log is rotated, continues in the new file;
 * when it is truncated, starts again at its beginning.
 *
 * Owns the open file, which may be the one that was renamed.
 */
class LogWatch
{
public:
    /** A file that is not there yet counts as empty. */
    explicit LogWatch(const QString& path);

    /** Why an existing file cannot be read; else empty. */
    QString problem() const { return mProblem; }

    /**
     * The next complete line, with its line end; empty when there is none yet.
     */
    QByteArray nextLine();

private:
    bool openFromBeginning();
    bool wasReplaced() const;
    void readMore();

    QFile mFile;
    QString mProblem;
    QByteArray mUnread; ///< read from the file, not yet returned
};

} // namespace control
