#include "report/Report.h"

#include "base/ResultFile.h"
#include "journal/Journal.h"
#include "journal/JournalWriter.h"
#include "report/AssessmentFile.h"
#include "report/CaseTable.h"
#include "report/HtmlPage.h"
#include "report/JunitFile.h"
#include "report/Pictures.h"

namespace report {

namespace {
void writeReport(const std::string& path, const std::string& text)
{
    base::ResultFile file(path);
    file.write(text);
    file.commit();
}
} // namespace

NightSummary writeReports(const std::string& folder)
{
    const std::string path = folder + "/" + kJournalFile;
    const bool isRunning = journal::isBeingWritten(path);
    const journal::Journal journal = journal::readJournal(path);
    NightSummary night = summarize(journal.mEntries);
    if (isRunning && night.mState == NightState::CutOff) {
        night.mState = NightState::Running;
    }
    addAssessment(folder, journal.mWholeBytes, &night);
    writeReport(folder + "/" + kTableFile, caseTable(night));
    writeReport(folder + "/" + kJunitFile, junitFile(night));
    // Drawing takes long. If it is interrupted, no page of an earlier night must remain.
    Pictures none;
    none.mCases.resize(night.mCases.size(),
                       {"", "it had not been drawn when this page was written"});
    writeReport(folder + "/" + kPageFile, htmlPage(night, none));
    writeReport(folder + "/" + kPageFile, htmlPage(night, PictureDrawer(folder, night).drawAll()));
    return night;
}

} // namespace report
