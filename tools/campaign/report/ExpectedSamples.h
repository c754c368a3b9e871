#pragma once

#include <map>
#include <memory>
#include <string>

#include "explain/PlayedFile.h"
#include "report/NightSummary.h"

namespace report {

/** A sample as it should have arrived. */
struct ExpectedSample
{
    qint64 mStampNs;
    const explain::SampleContent* mContent;
};

/**
 * What should have arrived around a play: the steady signal up to its first sample, its case up to
 * its last one, and the steady signal again. The journal has the stamps of both, and the value
 * files the steps.
 *
 * Owns the last case's file and that of the steady signal, which are read when they are needed.
 */
class ExpectedSamples
{
public:
    /** @param folder of the night */
    explicit ExpectedSamples(const std::string& folder);

    /**
     * The samples with stamps in this range, which is cut to the gaps around the play; valid until
     * the next call.
     *
     * @throws CaseError where it cannot be known: the play did not arrive, or a file is missing
     */
    std::vector<ExpectedSample> around(const NightSummary& night, const PlaySummary& play,
                                       qint64 fromNs, qint64 toNs);

private:
    const explain::PlayedFile& caseFile(const std::string& name);
    const explain::PlayedFile& steadyFile();

    std::string mStage; ///< folder of the value files
    std::string mCaseName;
    std::unique_ptr<explain::PlayedFile> mCase;
    std::unique_ptr<explain::PlayedFile> mSteady;
};

} // namespace report
