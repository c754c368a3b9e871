#pragma once

#include <string>
#include <vector>

#include "base/ProgressLine.h"
#include "input/OpenInput.h"
#include "plot/MomentChooser.h"
#include "plot/Picture.h"

namespace plot {

/** A request for a picture. */
struct PictureRequest
{
    std::vector<std::string> mInputs; ///< one, or two to be drawn over each other
    input::InputOptions mInputOptions;
    std::string mEvents;        ///< of vx-sandbox; empty for none
    std::string mConfiguration; ///< the played one; empty for none
    std::string mDirectory;     ///< base of its relative names
    MomentRequest mMoments;
    size_t mColumns = 1000; ///< distinguishable points side by side
};

/**
 * Reads each signal once, and returns the content of the picture. With a configuration the
 * recording is explained first, which reads it once more.
 *
 * @throws CaseError if something cannot be read or drawn
 */
Picture makePicture(const PictureRequest& request, base::ProgressLine& progress);

} // namespace plot
