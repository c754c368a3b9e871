#pragma once

#include <log4cxx/helpers/exception.h>
#include <log4cxx/logger.h>

#include <QtGlobal>
#include <string>

#include "LogText.h"
#include "TrackObject.h"

/**
 * The only way in which the program's classes log.
 *
 * Each call takes the logger, LOG4CXX_LOCATION (the calling function) and a callable that builds
 * the text. The text is built only if the level is enabled; errors are counted in any case. A line
 * that log4cxx cannot write, for example because the disk is full, is lost without any other
 * effect.
 *
 *     logError(mLogger, LOG4CXX_LOCATION, [&] { return "cannot open " + local8Bit(name); });
 */

/**
 * Passes lines to log4cxx and counts those that it could not write. The next line that can be
 * written is preceded by one, at its level, with the number of lost lines.
 */
class LogOutput
{
public:
    static void write(const log4cxx::LevelPtr& level, const log4cxx::LoggerPtr& logger,
                      const log4cxx::spi::LocationInfo& location, const std::string& text)
    {
        if (sLostLines > 0 &&
            tryWrite(level, logger, location,
                     "Log lines lost before this one: " + std::to_string(sLostLines))) {
            sLostLines = 0;
        }
        // Tried in any case: a second appender may take it while the first one cannot.
        if (!tryWrite(level, logger, location, text)) {
            ++sLostLines;
        }
    }

private:
    /** Only what log4cxx itself reports is a lost line; a lack of memory is for the caller. */
    static bool tryWrite(const log4cxx::LevelPtr& level, const log4cxx::LoggerPtr& logger,
                         const log4cxx::spi::LocationInfo& location, const std::string& text)
    {
        try {
            logger->forcedLog(level, text, location);
            return true;
        } catch (const log4cxx::helpers::Exception&) {
            return false;
        }
    }

    static inline quint64 sLostLines = 0;
};

/** Logs at the given level and counts nothing; the other three are made of it. */
template <typename BuildText>
void logAt(const log4cxx::LevelPtr& level, const log4cxx::LoggerPtr& logger,
           const log4cxx::spi::LocationInfo& location, BuildText buildText)
{
    if (logger->isEnabledFor(level)) {
        LogOutput::write(level, logger, location, std::string(buildText()));
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
    logAt(log4cxx::Level::getError(), logger, location, buildText);
    ++TrackObject::sErrorCounter;
}

/** Also counts one in TrackObject::sFatalCounter. */
template <typename BuildText>
void logFatal(const log4cxx::LoggerPtr& logger, const log4cxx::spi::LocationInfo& location,
              BuildText buildText)
{
    logAt(log4cxx::Level::getFatal(), logger, location, buildText);
    ++TrackObject::sFatalCounter;
}
