#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/Moment.h"
#include "plot/Overview.h"
#include "plot/Picture.h"
#include "plot/WaveformWindows.h"

namespace plot {

/** Which waveforms are asked for, in s; without a time, those around the moments found. */
struct MomentRequest
{
    std::optional<double> mAt;
    std::optional<double> mFrom;
    std::optional<double> mTo;
    size_t mMax = 3; ///< moments; at most 3
};

/** Waveforms that are shown. */
struct ShownSpan
{
    std::string mTitle;
    Span mSpan; ///< may reach beyond the signal
    std::optional<double> mMark;
};

/**
 * Chooses the times whose waveforms are shown: what was asked for; else changes of the signal,
 * then switches of the configuration and commands; else the beginning. Its candidates are known
 * while the signal is read, and few, so that their samples can be kept.
 */
class MomentChooser
{
public:
    /** @param played and commands: moments beside those of the signal */
    MomentChooser(const MomentRequest& request, const std::vector<PlayedPart>& played,
                  const std::vector<GivenCommand>& commands);

    /** Spans that may be shown, by what is known of the first signal so far. */
    std::vector<Span> candidates(const Overview& overview) const;

    /** How many of them are shown, as far as it is known. */
    size_t shownCount(const Overview& overview) const;

    /** No later candidate begins before this time. */
    double earliestNext(const Overview& overview) const;

    /**
     * The spans that are shown: some of the last candidates. To be called at the end.
     *
     * @param begin and end of all signals
     * @throws CaseError when the signals have nothing at the times asked for
     */
    std::vector<ShownSpan> choose(const Overview& overview, double begin, double end) const;

private:
    std::vector<Moment> moments(const Overview& overview) const;

    MomentRequest mRequest;
    std::vector<Moment> mOthers;
};

} // namespace plot
