#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plot/Moment.h"
#include "plot/Overview.h"
#include "plot/Picture.h"
#include "plot/WaveformWindows.h"

namespace plot {

/** The requested waveforms, in s; without a time, those around the moments found. */
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
 * Chooses the times whose waveforms are shown: the requested ones, or else changes of the signal,
 * then switches of the configuration and commands, or else the beginning. Its few candidates are
 * known while the signal is read, so their samples can be kept.
 */
class MomentChooser
{
public:
    /** @param played, commands further moments */
    MomentChooser(const MomentRequest& request, const std::vector<PlayedPart>& played,
                  const std::vector<GivenCommand>& commands);

    /** Spans that may be shown, according to the first signal so far. */
    std::vector<Span> candidates(const Overview& overview) const;

    /** Number of spans that will be shown, as far as known. */
    size_t shownCount(const Overview& overview) const;

    /** No later candidate begins before this time. */
    double earliestNext(const Overview& overview) const;

    /**
     * The spans that are shown: some of the last candidates. To be called at the end.
     *
     * @param begin, end of all signals
     * @throws CaseError if the signals have nothing at the requested times
     */
    std::vector<ShownSpan> choose(const Overview& overview, double begin, double end) const;

private:
    std::vector<Moment> moments(const Overview& overview) const;

    MomentRequest mRequest;
    std::vector<Moment> mOthers;
};

} // namespace plot
