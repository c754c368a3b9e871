#include "ConfigFileLookup.h"

#include <libgen.h>
#include <limits.h>
#include <unistd.h>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFile>
#include <QStandardPaths>

#include <array>
#include <ostream>

namespace {
QString programDirectory()
{
    std::array<char, PATH_MAX + 1> target{};
    const ssize_t length = readlink("/proc/self/exe", target.data(), target.size() - 1);
    return length < 0 ? QString() : QFile::decodeName(dirname(target.data()));
}

void writeLine(std::ostream& err, const QString& line)
{
    err << line.toStdString() << std::endl;
}
} // namespace

QStringList configSearchDirectories()
{
    QStringList directories{QStringLiteral("/etc/vx"),
                            QStringLiteral("/opt/vx/share/vx-core/defaults")};
    const QString ownDirectory = programDirectory();
    if (!ownDirectory.isNull()) {
        directories += ownDirectory;
    }
    directories += QStandardPaths::standardLocations(QStandardPaths::ConfigLocation);
    directories.removeDuplicates();
    return directories;
}

QString searchConfigFile(const QString& fileName, std::ostream& err)
{
    for (const QString& directory : configSearchDirectories()) {
        const QString path = directory + QLatin1Char('/') + fileName;
        if (QFile::exists(path)) {
            return path;
        }
    }
    writeLine(err, QStringLiteral("Configuration file not found: ") + fileName);
    writeLine(err, QStringLiteral("Add it to one of these directories:"));
    for (const QString& directory : configSearchDirectories()) {
        writeLine(err, QStringLiteral("  ") + directory);
    }
    return QString();
}

QString locateConfigFile(const QString& defaultName, const QCommandLineParser& parser,
                         const QCommandLineOption& option, std::ostream& err)
{
    if (parser.isSet(option)) {
        const QString value = parser.value(option);
        if (QFile::exists(value)) {
            return value;
        }
        writeLine(err, QStringLiteral("Specified configuration file not found: ") + value);
        return QString();
    }
    const QString path = searchConfigFile(defaultName, err);
    if (path.isEmpty()) {
        writeLine(err, QStringLiteral("or specify file with command line argument: ") +
                           option.names().join(QStringLiteral(", ")));
        return QString();
    }
    return path;
}
