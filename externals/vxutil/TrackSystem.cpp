#include "TrackSystem.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/xml/domconfigurator.h>

#include <algorithm>
#include <iostream>

namespace {
constexpr char kProgramLogger[] = "vx-simulator";

bool hasAppender(const log4cxx::LoggerPtr& logger)
{
    return !logger->getAllAppenders().empty();
}

bool canLog()
{
    const log4cxx::LoggerList loggers = log4cxx::LogManager::getCurrentLoggers();
    return hasAppender(log4cxx::LogManager::getRootLogger()) ||
           std::any_of(loggers.begin(), loggers.end(), hasAppender);
}
} // namespace

log4cxx::LoggerPtr initializeTrackSystem(const std::string& path)
{
    const auto status = log4cxx::xml::DOMConfigurator::configure(path);
    if (status != log4cxx::spi::ConfigurationStatus::Configured || !canLog()) {
        std::cerr << "Logging configuration '" << path
                  << "' cannot be read or sets up no output. Logging to the console instead."
                  << std::endl;
        log4cxx::LogManager::resetConfiguration();
        log4cxx::BasicConfigurator::configure();
    }
    return log4cxx::Logger::getLogger(kProgramLogger);
}
