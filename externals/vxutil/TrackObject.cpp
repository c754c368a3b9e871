#include "TrackObject.h"

int TrackObject::sErrorCounter = 0;
int TrackObject::sFatalCounter = 0;

TrackObject::TrackObject() : mLogger(log4cxx::Logger::getRootLogger()) {}

TrackObject::~TrackObject() = default;

void TrackObject::initTrack(const char* name)
{
    mLogger = log4cxx::Logger::getLogger(name);
}
