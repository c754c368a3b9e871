#include "expected/NightJudge.h"

#include <QFile>

#include "assess/TableReader.h"
#include "expected/CaseJudge.h"
#include "report/ReportText.h"

namespace expected {

namespace {
bool isFile(const std::string& path)
{
    return QFile::exists(QString::fromStdString(path));
}

void judgePlay(const std::string& folder, const report::NightSummary& night, size_t index,
               const MeasuredNight& measured, CaseJudge* judge)
{
    const report::PlaySummary& play = night.mPlays[index];
    const journal::StagedCase& staged = night.mCases[play.mCase].mStaged;
    const std::string name = journal::expectedName(staged, static_cast<int>(index));
    const std::string text = playText(night, play);
    if (play.mOutcome != report::Outcome::Passed) {
        judge->addNotObserved(
            text, std::string("no expected values: the play is ") + nameOf(play.mOutcome));
        return;
    }
    const std::string path = folder + '/' + name + ".csv";
    if (!isFile(path)) {
        const bool isRecorded = isFile(folder + '/' + name + ".bin");
        judge->addNotObserved(text, "no expected values: there is no " + name + ".csv" +
                                        (isRecorded ? "; run with --resume measures it" : ""));
        return;
    }
    const assess::ReadTable table = assess::readTable(path, assess::measureMap());
    assess::AssessmentOptions options;
    options.mNominal = measured.mNominal;
    options.mIsPart = true;
    judge->add(
        text,
        assess::Assessment(table.mValues, measured.mValues, measured.mLimits, options).result());
}
} // namespace

report::NightAssessment judgeNight(const std::string& folder, const report::NightSummary& night,
                                   const MeasuredNight& measured)
{
    report::NightAssessment assessment;
    assessment.mLimits = measured.mLimits.mName;
    for (const report::CaseSummary& it : night.mCases) {
        if (it.mStaged.mExpected.empty()) {
            continue;
        }
        CaseJudge judge;
        if (it.mPlays.empty()) {
            judge.addNotObserved(it.mStaged.mName, "it was not played");
        }
        for (const size_t index : it.mPlays) {
            judgePlay(folder, night, index, measured, &judge);
        }
        assessment.mCases[it.mStaged.mName] = judge.finish();
    }
    return assessment;
}

} // namespace expected
