#pragma once

#include <log4cxx/logger.h>

/**
 * Base of all classes that log: holds the logger of the object and counts the reported errors of
 * the whole program.
 *
 * It replaces the utility library of the target and offers only what the program uses of it, so
 * that the real one can be linked instead.
 */
class TrackObject
{
public:
    TrackObject();
    TrackObject(const TrackObject&) = default;
    TrackObject& operator=(const TrackObject&) = default;
    virtual ~TrackObject();

    static int sErrorCounter; ///< ERROR reports so far, whether or not the level was enabled
    static int sFatalCounter; ///< FATAL reports so far, whether or not the level was enabled

protected:
    /** Points mLogger at the logger of the given name. */
    void initTrack(const char* name);

    /** Never null; the root logger until initTrack() is called. */
    log4cxx::LoggerPtr mLogger;
};
