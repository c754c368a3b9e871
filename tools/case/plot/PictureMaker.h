#pragma once

#include <string>
#include <vector>

#include "base/ProgressLine.h"
#include "input/OpenInput.h"
#include "plot/MomentChooser.h"
#include "plot/Picture.h"

namespace plot {

/** What to draw. */
struct PictureRequest
{
    std::vector<std::string> mInputs; ///< one, or two to be drawn over each other
    input::InputOptions mInputOptions;
    std::string mEvents;        ///< of vx-sandbox; empty for none
    std::string mConfiguration; ///< that was played; empty for none
    std::string mDirectory;     ///< where its relative names begin
    MomentRequest mMoments;
    size_t mColumns = 1000; ///< points side by side that can be told apart
};

/**
 * Reads the signals, each of them once, and returns what the picture shows. With a configuration
 * the recording is explained first, which reads it once more.
 *
 * @throws CaseError for what cannot be read or drawn
 */
Picture makePicture(const PictureRequest& request, base::ProgressLine& progress);

} // namespace plot
