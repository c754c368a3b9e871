#pragma once

#include <QByteArray>
#include <QString>

namespace control {

/**
 * Appends commands to the events of a run, in the format of vx-sandbox --events, which may write
 * to the same file meanwhile. Owns the open file.
 *
 * A problem is one line that begins with the file's name; empty when there is none.
 */
class EventFile
{
public:
    explicit EventFile(const QString& path) : mPath(path) {}
    EventFile(const EventFile&) = delete;
    EventFile& operator=(const EventFile&) = delete;
    ~EventFile();

    /**
     * Opens or creates the file. Refuses a file with other content than events, so that no other
     * file is damaged. @return the error; empty on success
     */
    QString open();

    /**
     * Appends one line in one piece. Requires: open.
     * @param realtimeNs when the command was written, in nanoseconds since the epoch
     * @param command as it was written, with its line end; only digits and letters
     * @param problem why it was not written; empty when it was
     * @return what is wrong
     */
    QString append(qint64 realtimeNs, const QByteArray& command, const QString& problem);

private:
    QString mPath;
    int mDescriptor = -1;
};

} // namespace control
