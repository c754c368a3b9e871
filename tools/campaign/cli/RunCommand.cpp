#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <charconv>
#include <iostream>
#include <limits>
#include <memory>
#include <random>

#include "base/CaseError.h"
#include "base/StandardOutput.h"
#include "cli/PlanOptions.h"
#include "cli/Subcommands.h"
#include "expected/PlayMeasuring.h"
#include "journal/Journal.h"
#include "plan/Draft.h"
#include "report/AssessmentFile.h"
#include "report/Report.h"
#include "report/ReportText.h"
#include "run/Environment.h"
#include "run/NightLoop.h"
#include "run/ProgramCheck.h"
#include "run/StartTime.h"
#include "stage/Stage.h"

namespace cli {

namespace {
constexpr char kRunFooter[] =
    R"(The reports are FOLDER/report.html, FOLDER/junit.xml and FOLDER/cases.csv. The first
interrupt ends the night and writes its reports; the second ends it at once. While the
reports are written, an interrupt stops the writing; report writes them again.

Exit status: 0 if every play passed (with --fifo: was answered), 1 if one did not, 2 for
a wrong plan or command line, 130 if it was interrupted.

Example:
  vx-campaign run night.toml -o night-0411)";

struct RunOptions
{
    PlanOptions mPlan;
    std::string mFolder;
    std::optional<quint64> mSeed;
    bool mShuffle = false;
    bool mUntilFailure = false;
    bool mResume = false;
    std::string mStartAt;
    std::string mKeep;
    std::vector<std::string> mFaults;
    std::string mFifo; ///< of a device; empty for a night in the sandbox
    std::string mLog;

    bool isOnDevice() const { return !mFifo.empty(); }
};

/** The stage to be played, and the journal of its folder so far. */
struct Prepared
{
    stage::Stage mStage;
    journal::NightBegin mNight;
    std::optional<run::ResumePoint> mResume;
    size_t mJournalBytes = 0; ///< size of its complete lines
    size_t mFoundBytes = 0;   ///< size of the file
};

std::string journalOf(const RunOptions& options)
{
    return options.mFolder + '/' + report::kJournalFile;
}

/** Each play of the plan once: case after case, or shuffled by the seed. */
std::vector<int> orderOf(const std::vector<journal::StagedCase>& cases,
                         const std::optional<quint64>& seed)
{
    std::vector<int> order;
    for (size_t index = 0; index < cases.size(); ++index) {
        order.insert(order.end(), static_cast<size_t>(cases[index].mTimes),
                     static_cast<int>(index));
    }
    if (seed) {
        std::mt19937_64 random(*seed);
        // Not std::shuffle: its order depends on the standard library.
        for (size_t left = order.size(); left > 1; --left) {
            std::swap(order[left - 1], order[random() % left]);
        }
    }
    return order;
}

/** The journal of the night to resume; no value if not even its first line is complete. */
std::optional<journal::Journal> journalToResume(const RunOptions& options)
{
    const std::string path = journalOf(options);
    const bool isThere = QFileInfo::exists(QString::fromStdString(path));
    if (isThere && !options.mResume) {
        throw CLI::ValidationError("-o", options.mFolder +
                                             " has a night already; name another folder, or "
                                             "continue it with --resume");
    }
    if (!isThere && options.mResume) {
        throw CLI::ValidationError("--resume", options.mFolder + " has no night to resume");
    }
    std::optional<journal::Journal> journal;
    if (isThere) {
        journal = journal::readJournal(path);
    }
    return journal && journal->night() != nullptr ? journal : std::nullopt;
}

/** Existing files with these names may belong to the user. */
void expectNoFiles(const std::string& folder)
{
    for (const char* name :
         {report::kPageFile, report::kJunitFile, report::kTableFile, report::kAssessmentFile,
          journal::kExpectedFolder, "program.log", "recording-1.bin", "events-1.jsonl"}) {
        const std::string path = folder + '/' + name;
        if (QFileInfo::exists(QString::fromStdString(path))) {
            throw CLI::ValidationError("-o", path + " already exists; name another folder");
        }
    }
}

/** Selects the cases that the night began with. */
void selectCasesOf(const journal::NightBegin& night, RunOptions* options)
{
    options->mPlan.mSelection = {};
    for (const journal::StagedCase& it : night.mCases) {
        options->mPlan.mSelection.mCases.push_back(it.mName);
    }
}

void expectSame(const std::string& now, const std::string& before, const std::string& what)
{
    if (now != before) {
        throw plan::PlanError(what +
                              ": changed since the night began; start a new night in another "
                              "folder");
    }
}

/**
 * Verdicts of one night are of one kind: based on the observed stream, or on answers in the log.
 */
void expectSameObservation(const journal::NightBegin& night, const RunOptions& options)
{
    if (night.mIsObserved == options.isOnDevice()) {
        throw CLI::ValidationError("--resume",
                                   night.mIsObserved
                                       ? "the night began without --fifo and --log; leave them out"
                                       : "the night began with --fifo and --log; add them");
    }
}

Prepared prepare(RunOptions options)
{
    Prepared prepared;
    prepared.mFoundBytes =
        static_cast<size_t>(QFileInfo(QString::fromStdString(journalOf(options))).size());
    const std::optional<journal::Journal> before = journalToResume(options);
    if (before) {
        expectSameObservation(*before->night(), options);
        selectCasesOf(*before->night(), &options);
    } else {
        expectNoFiles(options.mFolder);
    }
    plan::Plan plan = plan::readPlan(options.mPlan.mPlan);
    if (before) {
        expectSame(plan.mHash, before->night()->mPlanHash, options.mPlan.mPlan);
    }
    plan = plan::selected(std::move(plan), options.mPlan.mSelection);
    prepared.mStage = stage::makeStage(plan, options.mFolder);
    if (before) {
        expectSame(prepared.mStage.mHash, before->night()->mStageHash, prepared.mStage.mDirectory);
        prepared.mNight = *before->night();
        prepared.mResume = run::resumePointOf(before->mEntries);
        prepared.mJournalBytes = before->mWholeBytes;
        return prepared;
    }
    journal::NightBegin& night = prepared.mNight;
    night.mName = plan.mName;
    night.mPlanPath = options.mPlan.mPlan;
    night.mPlanHash = plan.mHash;
    night.mStageHash = prepared.mStage.mHash;
    night.mIsObserved = !options.isOnDevice();
    night.mGapNs = plan.mGapNs;
    night.mUntilFailure = options.mUntilFailure;
    night.mMeasuring = plan.mMeasuring;
    if (night.mMeasuring.mNominalHz == 0.0) {
        night.mMeasuring.mNominalHz = nominalHz(prepared.mStage);
    }
    night.mCases = prepared.mStage.mCases;
    if (options.mShuffle) {
        night.mSeed = options.mSeed ? *options.mSeed : std::random_device()();
    }
    night.mOrder = orderOf(night.mCases, night.mSeed);
    return prepared;
}

run::SandboxSetup setupOf(const RunOptions& options)
{
    return {run::programBeside("vx-sandbox"),
            run::programBeside("vx-simulator"),
            options.mFolder,
            "",
            options.mFaults,
            options.mKeep == "all"};
}

/** Called before anything is made or played. */
void expectPlayable(const RunOptions& options)
{
    if (options.isOnDevice()) {
        run::checkDevice(options.mFifo, options.mLog);
    } else {
        run::checkPrograms(setupOf(options));
    }
}

run::NightOptions nightOptionsOf(const RunOptions& options)
{
    run::NightOptions night;
    if (options.mStartAt.empty()) {
        return night;
    }
    const qint64 nowNs = run::momentNow().mWallNs;
    night.mStartAtNs = run::startTimeNs(options.mStartAt, nowNs);
    if (*night.mStartAtNs < nowNs) {
        throw CLI::ValidationError("--start-at", options.mStartAt + " is in the past");
    }
    std::cerr << "vx-campaign: begins at " << run::startTimeText(*night.mStartAtNs) << std::endl;
    return night;
}

void beginOrResume(run::ScheduledNight& night, const Prepared& prepared,
                   const run::Environment& environment)
{
    if (prepared.mResume) {
        night.resume(*prepared.mResume, environment, run::momentNow());
    } else {
        night.begin(run::momentNow());
    }
}

/** Returns why the journal could not be written; empty on success. */
std::string playPrepared(const RunOptions& options, const run::NightOptions& nightOptions,
                         Prepared prepared)
{
    run::SandboxSetup setup = setupOf(options);
    setup.mStage = prepared.mStage.mDirectory;
    const run::Environment environment =
        options.isOnDevice() ? run::environmentNow(VX_VERSION)
                             : run::environmentNow(VX_VERSION, setup.mSandbox, setup.mSimulator);
    if (!prepared.mResume) {
        prepared.mNight.mEnvironment = environment;
    }
    run::EndingSignals ending;
    journal::JournalWriter writer(journalOf(options), prepared.mJournalBytes, prepared.mFoundBytes);
    run::NightDisplay display(prepared.mNight);
    run::DisplayedJournal displayed(writer, display);
    if (options.isOnDevice()) {
        run::RealDevice device(options.mFifo, options.mLog);
        run::DeviceNight night(prepared.mNight, prepared.mStage.mSteady.mDurationNs, nightOptions,
                               device, displayed);
        beginOrResume(night, prepared, environment);
        run::playNight(night, device, ending, display);
        return night.problem();
    }
    const explain::PlayPlan plan(prepared.mStage.mConfiguration, prepared.mStage.mDirectory);
    run::SandboxDesk desk(setup);
    run::Night night(prepared.mNight, plan, nightOptions, desk, displayed);
    beginOrResume(night, prepared, environment);
    run::playNight(night, desk, ending, display);
    return night.problem();
}

void remark(const std::string& text)
{
    std::cerr << "vx-campaign: remark: " << text << std::endl;
}

/** A complete night is not touched: what was judged afterwards belongs to its journal. */
std::string playRemaining(const RunOptions& options, const run::NightOptions& nightOptions,
                          Prepared prepared)
{
    if (prepared.mResume && prepared.mResume->mIsComplete) {
        remark("the night is complete, nothing is left to play");
        return "";
    }
    return playPrepared(options, nightOptions, std::move(prepared));
}

/** @return whether it was interrupted */
bool measureExpected(const RunOptions& options, const report::NightSummary& night)
{
    run::EndingSignals ending;
    const expected::MeasuredPlays measured =
        expected::measurePlays(options.mFolder, night, [&ending] { return ending.take() > 0; });
    for (const std::string& text : measured.mRemarks) {
        remark(text);
    }
    if (measured.mLeft == 0) {
        return false;
    }
    remark(
        fmt::format("interrupted: the expected values of {} are missing; run with --resume "
                    "measures them",
                    report::countText(measured.mLeft, "play")));
    return true;
}

void runPlan(const RunOptions& options)
{
    const run::NightOptions nightOptions = nightOptionsOf(options);
    expectPlayable(options);
    Prepared prepared = prepare(options);
    for (const std::string& text : prepared.mStage.mRemarks) {
        remark(text);
    }
    const std::string problem = playRemaining(options, nightOptions, std::move(prepared));
    if (!problem.empty()) {
        std::cerr << "vx-campaign: the night ends: " << problem << std::endl;
    }
    const report::NightSummary night = report::writeReports(options.mFolder);
    const bool isInterrupted = measureExpected(options, night);
    base::writeToStandardOutput(report::verdictText(night) + "\n" + options.mFolder + "/" +
                                report::kPageFile + "\n");
    const int status = !problem.empty() ? EXIT_FAILURE
                       : isInterrupted  ? report::kStatusInterrupted
                                        : report::statusOf(night);
    if (status != EXIT_SUCCESS) {
        throw base::EndWith(status);
    }
}

/** Why the text is not a seed; empty if it is one. */
std::string seedProblem(const std::string& text)
{
    quint64 seed = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seed);
    return error == std::errc{} && rest == end
               ? ""
               : fmt::format("'{}': expected a whole number, 0 to {}", text,
                             std::numeric_limits<quint64>::max());
}

void addNightOptions(CLI::App& command, RunOptions& options)
{
    CLI::Option* const shuffle =
        command.add_flag("--shuffle", options.mShuffle, "Plays in random order");
    command
        .add_option("--seed", options.mSeed,
                    "Seed of the random order; the same seed gives the same order")
        ->type_name("N")
        ->check(seedProblem)
        ->needs(shuffle);
    command.add_flag("--until-failure", options.mUntilFailure,
                     "Repeats the plan until a play fails");
    command
        .add_option("--start-at", options.mStartAt,
                    "Starts at HH:MM or YYYY-MM-DDTHH:MM, local time")
        ->type_name("TIME")
        ->check([](const std::string& text) { return run::startTimeProblem(text); });
    command
        .add_option("--fault", options.mFaults,
                    "Driver fault in the first run of the program, as for vx-sandbox; repeatable")
        ->type_name("FILE:WHEN:WHAT[:COUNT]")
        ->allow_extra_args(false);
    command
        .add_option("--keep", options.mKeep,
                    "Keeps all records and events (default: the samples around findings)")
        ->type_name("all")
        ->check(CLI::IsMember({"all"}).description(""));
}
} // namespace

void addRunCommand(CLI::App& app)
{
    CLI::App& command =
        *app.add_subcommand("run", "Plays the cases of a plan and judges the samples that arrive");
    command.footer(kRunFooter);
    const auto options = std::make_shared<RunOptions>();
    addPlanOptions(command, options->mPlan);
    command
        .add_option("-o", options->mFolder, "Folder for the night: value files, journal, reports")
        ->type_name("FOLDER")
        ->check([](const std::string& folder) {
            return folder.empty() ? "expected the name of a folder" : "";
        })
        ->required();
    addNightOptions(command, *options);
    CLI::Option* const fifo =
        command
            .add_option("--fifo", options->mFifo,
                        "Control FIFO of a program that runs elsewhere, on a device: no sample is "
                        "judged")
            ->type_name("FILE");
    CLI::Option* const log =
        command
            .add_option("--log", options->mLog, "Log of that program, which answers the commands")
            ->type_name("FILE")
            ->needs(fifo);
    fifo->needs(log)->excludes("--fault")->excludes("--keep");
    CLI::Option* const resume =
        command.add_flag("--resume", options->mResume, "Continues the night in FOLDER");
    for (const char* name : {"--only", "--group", "--shuffle", "--until-failure"}) {
        resume->excludes(command.get_option(name));
    }
    command.callback([options] { runPlan(*options); });
}

} // namespace cli
