#pragma once

#include "generate/Neutral.h"
#include "generate/Timeline.h"

namespace generate {

/** The source of the lines of a value file, before they are rounded. */
class LineSource
{
public:
    LineSource() = default;
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
    virtual ~LineSource() = default;

    virtual const Timeline& timeline() const = 0;

    /** Requires: lines are read one after the other, from 0 on. */
    virtual LineValues read(qint64 line) = 0;
};

} // namespace generate
