#pragma once

#include <log4cxx/logger.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "PrivateMounts.h"

/** Ends the run with a report of the input: the fuzzer has found something. */
inline void require(bool holds, const std::string& what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what.c_str());
        std::abort();
    }
}

/** No log, and an /etc/vx of this process alone. */
inline void enterFuzzProcess()
{
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    sandbox::PrivateMounts mounts;
    mounts.enter();
    mounts.makeEtcVx();
}
