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
 * The expected samples around a play: the steady signal up to its first sample, its case up to its
 * last one, and the steady signal again. The time stamps of these two samples come from the
 * journal, the steps from the value files.
 *
 * Owns the files of the latest case and of the steady signal, which are read on demand.
 */
class ExpectedSamples
{
public:
    /** @param folder of the night */
    explicit ExpectedSamples(const std::string& folder);

    /**
     * The samples in this range of time stamps, limited to the gaps around the play; valid until
     * the next call.
     *
     * @throws CaseError if they are not known: no sample of the play arrived, or a file is missing
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
