#pragma once

#include <QByteArray>
#include <QString>

namespace control {

/**
 * Writes one command line into the control FIFO, in one piece, so that lines of several writers
 * never mix. Never waits: a FIFO that nobody reads is told at once. Ignores SIGPIPE from then on.
 *
 * @param path a FIFO; nothing is made where there is none
 * @param line with its line end; at most PIPE_BUF bytes
 * @return what is wrong, in one line that begins with the path; empty when it was written
 */
QString sendCommand(const QString& path, const QByteArray& line);

} // namespace control
