#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/ProgressLine.h"
#include "plot/Picture.h"
#include "report/ExpectedSamples.h"

namespace report {

/** A picture as SVG, or why there is none. */
struct Drawing
{
    std::string mSvg;
    std::string mReasonNotDrawn; ///< empty if there is a picture
};

struct Pictures
{
    std::vector<Drawing> mCases;              ///< of each case
    std::map<std::string, Drawing> mFindings; ///< by the name of the file with the kept samples
};

/**
 * Draws all pictures of a report with gnuplot: the samples around findings, then the cases that did
 * not pass, then the others. Their total size is limited, so that the report can be sent by mail.
 * Nothing is thrown: if a picture cannot be drawn, Drawing::mReasonNotDrawn has the reason.
 */
class PictureDrawer
{
public:
    /** Bytes of all pictures, as SVG. */
    static constexpr size_t kMaxBytes = 3'000'000;

    /** @param folder of the night. Borrows the summary. */
    PictureDrawer(std::string folder, const NightSummary& night);

    Pictures drawAll();

private:
    Drawing draw(const plot::Picture& picture);
    Drawing drawCase(const journal::StagedCase& staged);
    void drawFinding(const PlaySummary* play, const journal::Finding& finding);
    void drawFindings();
    void drawCases(bool areGood);

    std::string mFolder;
    const NightSummary& mNight;
    ExpectedSamples mExpected;
    Pictures mPictures;
    size_t mBytes = 0;
    size_t mCasesDone = 0;
    base::ProgressLine mProgress{"drawing the report"};
};

} // namespace report
