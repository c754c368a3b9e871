#pragma once

#include <QtGlobal>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/WrongInput.h"
#include "generate/SignalTable.h"
#include "importing/ImportOptions.h"
#include "journal/Entries.h"
#include "states/Location.h"

namespace plan {

/** What a value file is made from. */
enum class SourceKind
{
    Signal,    ///< of the catalogue
    Recording, ///< imported
    States,    ///< a file of states
    File,      ///< a value file
};

/** Where a value file comes from, and how it is made. */
struct Source
{
    SourceKind mKind = SourceKind::Signal;

    /** In words, with all that it is made by: the same text is the same source. */
    std::string mText;

    std::string mPath;                ///< of the file; as the working directory sees it
    generate::Signal mSignal;         ///< for Signal, as it is changed by `set`
    importing::ImportOptions mImport; ///< for Recording
    std::string mEncoding;            ///< for Recording; empty: detected
    bool mIsAligned = false;          ///< for States: they are whole periods
    states::Location mLocation;       ///< in the plan
};

struct Case
{
    std::string mName;
    Source mSource;
    int mTimes = 1;                     ///< plays; at least 1
    std::optional<double> mSeconds;     ///< the file is repeated for so long; none: once
    std::vector<std::string> mExpected; ///< groups of quantities whose expected values are wanted
    states::Location mLocation;         ///< in the plan
};

/** Group names and the cases in them, which are cases of the plan. */
using Groups = std::map<std::string, std::vector<std::string>>;

/** A night: what is played, in the order of the file. */
struct Plan
{
    std::string mFileName; ///< as given
    std::string mText;     ///< of the file
    std::string mHash;     ///< SHA-256 of the text
    std::string mName;
    Source mSteady; ///< what plays between cases
    qint64 mGapNs = 0;
    journal::Measuring mMeasuring;
    std::vector<Case> mCases; ///< at least one; no name twice
    Groups mGroups;

    /** Plays of all cases. */
    int playCount() const;
};

/** The plan, or what it is made from, is wrong: ends the command with status 2. */
class PlanError : public base::WrongInput
{
public:
    using WrongInput::WrongInput;
};

/**
 * Reads a plan. Relative paths in it begin in its folder.
 * @throws PlanError with every mistake of every case, a line each: "night.toml:7:9: ..."
 */
Plan readPlan(const std::string& path);

/** The same for a text. @param path of its file, as messages give it */
Plan parsePlan(const std::string& text, const std::string& path);

/** Which cases are meant, by --only and --group; both empty: all. */
struct Selection
{
    std::vector<std::string> mCases;
    std::vector<std::string> mGroups;
};

/**
 * The plan with the selected cases alone, in the order of the plan.
 * @throws PlanError for a name that the plan does not have, with the nearest
 */
Plan selected(Plan plan, const Selection& selection);

} // namespace plan
