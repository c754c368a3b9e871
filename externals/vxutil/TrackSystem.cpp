#include "TrackSystem.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/xml/domconfigurator.h>

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <algorithm>
#include <iostream>
#include <type_traits>

namespace {
constexpr char kProgramLogger[] = "vx-simulator";

bool hasAppender(const log4cxx::LoggerPtr& logger)
{
    return !logger->getAllAppenders().empty();
}

bool hasAnyAppender()
{
    const log4cxx::LoggerList loggers = log4cxx::LogManager::getCurrentLoggers();
    return hasAppender(log4cxx::LogManager::getRootLogger()) ||
           std::any_of(loggers.begin(), loggers.end(), hasAppender);
}

bool isRegularFile(const std::string& path)
{
    return QFileInfo(QString::fromStdString(path)).isFile();
}

/** log4cxx accepts any well-formed file, whatever its root element is, so this checks the root. */
bool isTrackConfiguration(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    QXmlStreamReader reader(&file);
    if (!file.open(QIODevice::ReadOnly) || !reader.readNextStartElement() ||
        reader.name() != QLatin1String("configuration")) {
        return false;
    }
    while (!reader.atEnd()) {
        reader.readNext();
    }
    return !reader.hasError();
}

/**
 * False when log4cxx could not read the file. Releases before 1.0 do not report that: there, a file
 * counts as read if it has set up an appender, or if it is a regular file.
 */
template <typename Configurator>
bool couldRead(const std::string& path)
{
    if constexpr (std::is_void_v<decltype(Configurator::configure(path))>) {
        Configurator::configure(path);
        return hasAnyAppender() || isRegularFile(path);
    } else {
        const auto status = Configurator::configure(path);
        return status == std::decay_t<decltype(status)>::Configured;
    }
}

/**
 * A file that has set up an appender needs no further check; a pipe cannot be read a second time.
 */
bool configure(const std::string& path)
{
    return couldRead<log4cxx::xml::DOMConfigurator>(path) &&
           (hasAnyAppender() || !isRegularFile(path) || isTrackConfiguration(path));
}
} // namespace

log4cxx::LoggerPtr initializeTrackSystem(const std::string& path)
{
    if (!configure(path)) {
        std::cerr << "Logging configuration '" << path
                  << "' cannot be read or is none of log4cxx. Logging to the console instead."
                  << std::endl;
        log4cxx::LogManager::resetConfiguration();
        log4cxx::BasicConfigurator::configure();
    }
    return log4cxx::Logger::getLogger(kProgramLogger);
}
