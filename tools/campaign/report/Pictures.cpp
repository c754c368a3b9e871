#include "report/Pictures.h"

#include <fmt/format.h>

#include "base/CaseError.h"
#include "plot/Gnuplot.h"
#include "plot/GnuplotScript.h"
#include "plot/PictureMaker.h"
#include "report/CompactSvg.h"
#include "report/FindingPicture.h"
#include "report/ThinnedCurves.h"
#include "stage/Stage.h"

namespace report {

namespace {
/** Max size of one picture as SVG. */
constexpr size_t kMaxPictureBytes = 1'000'000;
} // namespace

PictureDrawer::PictureDrawer(std::string folder, const NightSummary& night)
    : mFolder(std::move(folder)), mNight(night), mExpected(mFolder)
{
    mPictures.mCases.resize(night.mCases.size());
}

Pictures PictureDrawer::drawAll()
{
    drawFindings();
    drawCases(false);
    drawCases(true);
    return std::move(mPictures);
}

Drawing PictureDrawer::draw(const plot::Picture& picture)
{
    const std::string script = plot::gnuplotScript(plot::layOut(picture), plot::PictureFormat::Svg);
    Drawing drawing{compactSvg(plot::runGnuplot(script)), ""};
    if (drawing.mSvg.size() > kMaxPictureBytes) {
        return {"", "the picture is too large for the report"};
    }
    mBytes += drawing.mSvg.size();
    return drawing;
}

Drawing PictureDrawer::drawCase(const journal::StagedCase& staged)
{
    const std::string file = std::string(stage::kStageFolder) + "/" + staged.mFile;
    if (mBytes > kMaxBytes) {
        return {"",
                fmt::format("the report has no room for more pictures; vx-case plot {} draws it",
                            file)};
    }
    try {
        plot::PictureRequest request;
        request.mInputs = {mFolder + "/" + file};
        base::ProgressLine progress("drawing");
        plot::Picture picture = plot::makePicture(request, progress);
        picture.mTitle = staged.mName;
        thinCurves(&picture);
        return draw(picture);
    } catch (const base::CaseError& error) {
        return {"", error.what()};
    }
}

void PictureDrawer::drawCases(bool areGood)
{
    for (size_t i = 0; i < mNight.mCases.size(); ++i) {
        const CaseSummary& it = mNight.mCases[i];
        if ((it.mOutcome == mNight.wanted()) == areGood) {
            mPictures.mCases[i] = drawCase(it.mStaged);
            mProgress.show(double(++mCasesDone) / double(mNight.mCases.size()));
        }
    }
}

void PictureDrawer::drawFindings()
{
    for (const PlaySummary& play : mNight.mPlays) {
        for (const journal::Finding& finding : play.mListedFindings) {
            drawFinding(&play, finding);
        }
    }
    for (const journal::Finding& finding : mNight.mOutside) {
        drawFinding(nullptr, finding);
    }
}

/** Findings close to each other share one file of samples. */
void PictureDrawer::drawFinding(const PlaySummary* play, const journal::Finding& finding)
{
    if (finding.mSamplesFile.empty() || mPictures.mFindings.count(finding.mSamplesFile) > 0) {
        return;
    }
    Drawing& drawing = mPictures.mFindings[finding.mSamplesFile];
    if (mBytes > kMaxBytes / 2) {
        drawing.mReasonNotDrawn =
            fmt::format("the report has no room for more pictures; vx-case plot {} draws it",
                        finding.mSamplesFile);
        return;
    }
    try {
        plot::Picture picture = findingPicture(mFolder, mNight, play, finding, &mExpected);
        thinCurves(&picture);
        drawing = draw(picture);
    } catch (const base::CaseError& error) {
        drawing.mReasonNotDrawn = error.what();
    }
}

} // namespace report
