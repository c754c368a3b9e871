#pragma once

#include "SampleRecord.h"

/**
 * One line of an input value file: the sample record that goes to the driver and, after it, the
 * frequency from which the sample writer derives the time step.
 *
 * Made by InputValues::parseLine(), which gives every field its value.
 */
struct InputValueItem : SampleRecord
{
    virtual ~InputValueItem() = default;

    float mFrequency; ///< signal frequency in Hz, not part of the record
};
