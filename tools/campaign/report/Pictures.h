#pragma once

#include <map>
#include <string>
#include <vector>

#include "plot/Picture.h"
#include "report/ExpectedSamples.h"

namespace report {

/** A picture as SVG, or why there is none. */
struct Drawing
{
    std::string mSvg;
    std::string mWhyNot; ///< empty where there is one
};

struct Pictures
{
    std::vector<Drawing> mCases;              ///< of each case
    std::map<std::string, Drawing> mFindings; ///< by the name of the file with the kept samples
};

/**
 * Draws all that a report shows, by gnuplot: the samples around findings, then the cases that did
 * not pass, then the others. All together have a limit, so that the report stays a file that can be
 * mailed. Nothing is thrown: what cannot be drawn says why.
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
};

} // namespace report
