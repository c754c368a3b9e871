#pragma once

#include <QtGlobal>
#include <string>
#include <vector>

#include "journal/Entries.h"
#include "plan/Plan.h"

namespace stage {

/** In the folder of a night. */
inline constexpr const char* kPlanFile = "plan.toml";
inline constexpr const char* kStageFolder = "stage";
inline constexpr const char* kCasesFile = "cases.conf";

/**
 * The value files of a night and their case configuration, FOLDER/stage/cases.conf. It names the
 * files without a folder, so that the whole folder can be moved or copied to a device. The program
 * is started in it, and explain::PlayPlan gets it as the directory.
 */
struct Stage
{
    std::string mDirectory;                  ///< FOLDER/stage
    std::string mConfiguration;              ///< FOLDER/stage/cases.conf
    journal::StagedCase mSteady;             ///< configuration 0; mTimes is 0
    std::vector<journal::StagedCase> mCases; ///< of the plan, in its order; numbers from 1 on
    std::string mHash;                       ///< SHA-256 of all files and their configuration
    qint64 mBytesOnDevice = 0;               ///< memory of the program for the samples
    std::vector<std::string> mRemarks;       ///< about cases that are probably not as intended
};

/**
 * Makes FOLDER/stage and FOLDER/plan.toml, a copy of the plan. They appear when all files are
 * complete and correct. Existing files are compared: missing ones are added, none is overwritten.
 *
 * @param folder is created if it is missing
 * @throws plan::PlanError with all mistakes of all cases, and for an existing file that differs
 *         from what the plan makes; CaseError if a file cannot be written
 */
Stage makeStage(const plan::Plan& plan, const std::string& folder);

/** Estimated duration of the night: gaps, waits for the end of the steady signal, and plays. */
qint64 nightNs(const Stage& stage, qint64 gapNs);

/**
 * What the recordings of the plays whose expected values are wanted take on the disk until the
 * night is over, about: 0 where there is none.
 */
quint64 recordingBytes(const Stage& stage, qint64 gapNs);

/** The nominal frequency of the steady signal: 50 or 60 Hz, whichever is nearer. */
double nominalHz(const Stage& stage);

} // namespace stage
