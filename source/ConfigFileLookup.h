#pragma once

#include <QString>
#include <QStringList>
#include <iosfwd>

class QCommandLineOption;
class QCommandLineParser;

/**
 * Finds configuration files that are not given by an option. Messages go to a stream of the caller,
 * since logging is not running yet.
 */

/** The default name of the case configuration. */
inline constexpr char kCaseConfigName[] = "vx-simulator.conf";

/**
 * The directories to search, in this order; computed anew by each call. One of them is the
 * directory of the running program: for a tool its own, which is the simulator's if both are
 * installed together.
 */
QStringList configSearchDirectories();

/** Full path of the first match in the search directories; null after a message on err. */
QString searchConfigFile(const QString& fileName, std::ostream& err);

/** The file given with the option, else the default one; null after a message on err. */
QString locateConfigFile(const QString& defaultName, const QCommandLineParser& parser,
                         const QCommandLineOption& option, std::ostream& err);
