#pragma once

#include <map>
#include <string>
#include <vector>

#include "check/FileFacts.h"
#include "plan/Mistakes.h"
#include "stage/Stage.h"

namespace stage {

/** Makes the files of a stage in an empty folder. Borrows the plan. */
class StageMaker
{
public:
    StageMaker(const plan::Plan& plan, std::string directory)
        : mPlan(plan), mDirectory(std::move(directory))
    {
    }

    /** @throws plan::PlanError with all mistakes of all cases, CaseError for a full disk */
    Stage make();

    /** Names of the files, after make(). */
    const std::vector<std::string>& files() const { return mFiles; }

private:
    /** A value file, which several cases may play. */
    struct MadeFile
    {
        std::string mName;
        std::string mHash;
        check::FileFacts mFacts;
        bool mIsGood = false;
    };

    void makeSteady();
    void makeCase(const plan::Case& it);
    const MadeFile& fileOf(const plan::Source& source, const std::string& name);
    void expectPlayable(const plan::Source& source, const MadeFile& file) const;
    void addRemarks(const std::string& name, const std::vector<std::string>& remarks);
    bool isLikeSteady(const MadeFile& file);
    void setRepetitions(const plan::Case& it, const MadeFile& file, journal::StagedCase& staged);
    void writeConfiguration();
    std::string pathOf(const std::string& name) const { return mDirectory + '/' + name; }
    std::string prefixOf(const states::Location& location) const;

    const plan::Plan& mPlan;
    std::string mDirectory;
    std::map<std::string, MadeFile> mMadeFrom; ///< by the source, in words
    std::vector<std::string> mFiles;
    plan::Mistakes mMistakes;
    Stage mStage;
};

} // namespace stage
