#include "TrackSystem.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/xml/domconfigurator.h>

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

#include <algorithm>
#include <iostream>

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

/** log4cxx says "configured" of any well-formed file, whatever its root element is. */
bool isTrackConfiguration(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    QXmlStreamReader reader(&file);
    return file.open(QIODevice::ReadOnly) && reader.readNextStartElement() &&
           reader.name() == QLatin1String("configuration");
}

/** What sets up an appender needs no second look, and a pipe does not allow one. */
bool configure(const std::string& path)
{
    return log4cxx::xml::DOMConfigurator::configure(path) ==
               log4cxx::spi::ConfigurationStatus::Configured &&
           (hasAnyAppender() || !QFileInfo(QString::fromStdString(path)).isFile() ||
            isTrackConfiguration(path));
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
