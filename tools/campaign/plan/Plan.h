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

    /** Complete description in words: sources with the same text make the same file. */
    std::string mText;

    std::string mPath;                ///< of the file, relative to the working directory
    generate::Signal mSignal;         ///< for Signal, with the changes of `set`
    importing::ImportOptions mImport; ///< for Recording
    std::string mEncoding;            ///< for Recording; empty: detected
    bool mIsAligned = false;          ///< for States: rounded to whole periods
    states::Location mLocation;       ///< in the plan
};

struct Case
{
    std::string mName;
    Source mSource;
    int mTimes = 1;                     ///< plays; at least 1
    std::optional<double> mSeconds;     ///< duration of a play; none: one pass of the file
    std::vector<std::string> mExpected; ///< groups of quantities to compute expected values for
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
    Source mSteady; ///< played between cases
    qint64 mGapNs = 0;
    journal::Measuring mMeasuring;
    std::vector<Case> mCases; ///< at least one; no name twice
    Groups mGroups;

    /** The sum over all cases. */
    int playCount() const;
};

/** The plan or one of its files is wrong: ends the command with status 2. */
class PlanError : public base::WrongInput
{
public:
    using WrongInput::WrongInput;
};

/**
 * Reads a plan. Relative paths in it start at its folder.
 * @throws PlanError with all mistakes of all cases, one per line: "night.toml:7:9: ..."
 */
Plan readPlan(const std::string& path);

/** The same for a text. @param path of its file, for messages */
Plan parsePlan(const std::string& text, const std::string& path);

/** The arguments of --only and --group; all cases if both are empty. */
struct Selection
{
    std::vector<std::string> mCases;
    std::vector<std::string> mGroups;
};

/**
 * The plan with only the selected cases, in the order of the plan.
 * @throws PlanError for an unknown name, with the nearest known one
 */
Plan selected(Plan plan, const Selection& selection);

} // namespace plan
