#pragma once

#include <QString>
#include <QStringList>
#include <iosfwd>

class QCommandLineOption;
class QCommandLineParser;

/**
 * Where a configuration file is when nobody says where. Messages go to the stream that the caller
 * hands in, since logging is not running yet.
 */

/** The name under which the case configuration is looked for. */
inline constexpr char kCaseConfigName[] = "vx-simulator.conf";

/**
 * The directories that are searched, the first first; made anew by each call. Among them is the
 * directory of the running program: of a tool it is the tool's own, which is the simulator's
 * where both are installed together.
 */
QStringList configSearchDirectories();

/** Full path of the first match in the search directories; null after a message on err. */
QString searchConfigFile(const QString& fileName, std::ostream& err);

/** The file given with the option, else the default one; null after a message on err. */
QString locateConfigFile(const QString& defaultName, const QCommandLineParser& parser,
                         const QCommandLineOption& option, std::ostream& err);
