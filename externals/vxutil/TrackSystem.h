#pragma once

#include <log4cxx/logger.h>
#include <string>

/**
 * Configures log4cxx from an XML file and returns the logger for the caller's own messages. To be
 * called once, before any logger is used.
 *
 * @param path the logging configuration, UTF-8
 *
 * A file that cannot be read, is not valid XML or has another root element than log4cxx's is
 * reported on standard error with its name, and everything is logged to the console (standard
 * output) instead. Any other file is used unchanged, even one without outputs.
 */
log4cxx::LoggerPtr initializeTrackSystem(const std::string& path);
