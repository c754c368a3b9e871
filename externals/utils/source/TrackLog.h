#pragma once

#include <log4cxx/logger.h>

#include <string>

#include "LogText.h"
#include "TrackObject.h"

/**
 * The one way in which the program's classes log.
 *
 * Each call takes the logger, LOG4CXX_LOCATION (which names the calling function) and a callable
 * that builds the text. The text is built only when the level is enabled; errors are counted
 * either way.
 *
 *     logError(mLogger, LOG4CXX_LOCATION, [&] { return "cannot open " + local8Bit(name); });
 */

/** Logs at the given level and counts nothing; the other three are made of it. */
template <typename BuildText>
void logAt(const log4cxx::LevelPtr& level, const log4cxx::LoggerPtr& logger,
           const log4cxx::spi::LocationInfo& location, BuildText buildText)
{
    if (logger->isEnabledFor(level)) {
        logger->forcedLog(level, std::string(buildText()), location);
    }
}

template <typename BuildText>
void logInfo(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& location,
             BuildText buildText)
{
    logAt(log4cxx::Level::getInfo(), logger, location, buildText);
}

/** Also counts one in TrackObject::sErrorCounter. */
template <typename BuildText>
void logError(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& location,
              BuildText buildText)
{
    ++TrackObject::sErrorCounter;
    logAt(log4cxx::Level::getError(), logger, location, buildText);
}

/** Also counts one in TrackObject::sFatalCounter. */
template <typename BuildText>
void logFatal(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& location,
              BuildText buildText)
{
    ++TrackObject::sFatalCounter;
    logAt(log4cxx::Level::getFatal(), logger, location, buildText);
}
