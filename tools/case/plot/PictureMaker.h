#pragma once

#include <optional>

#include "input/OpenInput.h"
#include "plot/Picture.h"

namespace plot {

/** What is to be pictured. */
struct PictureRequest
{
    std::vector<std::string> mInputs; ///< one, or two to be drawn over each other
    input::InputOptions mInputOptions;
    std::string mEvents;        ///< of vx-sandbox; empty for none
    std::string mConfiguration; ///< that was played; empty for none
    std::string mDirectory;     ///< where its relative names begin
    std::optional<double> mAt;  ///< s, the moment to show
    std::optional<double> mFrom;
    std::optional<double> mTo;
    size_t mMaxMoments = 3;
    size_t mColumns = 1000; ///< points side by side that can be told apart
};

/**
 * Reads the signals, once for the whole and once for the waveforms, and tells what the picture
 * shows. What finds no place in it is said on standard error.
 */
Picture makePicture(const PictureRequest& request);

} // namespace plot
