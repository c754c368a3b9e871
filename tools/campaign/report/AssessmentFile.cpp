#include "report/AssessmentFile.h"

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "base/CaseError.h"
#include "base/ResultFile.h"
#include "base/WholeFile.h"

namespace report {

namespace {
using AssessmentJson = nlohmann::ordered_json;

constexpr size_t kMaxBytes = size_t{256} << 20U;
constexpr std::array<const char*, 3> kGradeNames = {"good", "not judged", "bad"};

AssessmentJson jsonOf(const CaseAssessment& it)
{
    AssessmentJson json = {
        {"verdict", it.mVerdict}, {"values", AssessmentJson::array()}, {"remarks", it.mRemarks}};
    for (const Assessment& value : it.mValues) {
        json["values"].push_back({{"name", value.mName},
                                  {"verdict", value.mVerdict},
                                  {"text", value.mText},
                                  {"grade", kGradeNames.at(static_cast<size_t>(value.mGrade))}});
    }
    return json;
}

/** An unknown name counts as bad. */
Grade gradeOf(const std::string& name)
{
    const auto* const found = std::find(kGradeNames.begin(), kGradeNames.end(), name);
    return found == kGradeNames.end() ? Grade::Bad
                                      : static_cast<Grade>(found - kGradeNames.begin());
}

CaseAssessment caseOf(const AssessmentJson& json)
{
    CaseAssessment it;
    json.at("verdict").get_to(it.mVerdict);
    json.at("remarks").get_to(it.mRemarks);
    for (const AssessmentJson& value : json.at("values")) {
        it.mValues.push_back(
            {value.at("name").get<std::string>(), value.at("verdict").get<std::string>(),
             value.at("text").get<std::string>(), gradeOf(value.at("grade").get<std::string>())});
    }
    return it;
}

NightAssessment parseAssessment(const std::string& text)
{
    const AssessmentJson json = AssessmentJson::parse(text);
    NightAssessment assessment;
    json.at("journalBytes").get_to(assessment.mJournalBytes);
    json.at("limits").get_to(assessment.mLimits);
    for (const auto& [name, it] : json.at("cases").items()) {
        assessment.mCases[name] = caseOf(it);
    }
    return assessment;
}
} // namespace

void writeAssessment(const std::string& folder, const NightAssessment& assessment)
{
    AssessmentJson json = {{"journalBytes", assessment.mJournalBytes},
                           {"limits", assessment.mLimits},
                           {"cases", AssessmentJson::object()}};
    for (const auto& [name, it] : assessment.mCases) {
        json["cases"][name] = jsonOf(it);
    }
    base::ResultFile file(folder + '/' + kAssessmentFile);
    file.write(json.dump(1, ' ', false, AssessmentJson::error_handler_t::replace) + '\n');
    file.commit();
}

void addAssessment(const std::string& folder, size_t journalBytes, NightSummary* night)
{
    const std::string path = folder + '/' + kAssessmentFile;
    if (!QFileInfo::exists(QString::fromStdString(path))) {
        return;
    }
    const std::string advice = "; judge the night again";
    try {
        NightAssessment assessment = parseAssessment(base::readWholeFile(path, kMaxBytes));
        if (assessment.mJournalBytes != journalBytes) {
            night->mAssessmentProblem =
                std::string(kAssessmentFile) + " belongs to an earlier state of the night" + advice;
            return;
        }
        night->mLimits = assessment.mLimits;
        for (CaseSummary& it : night->mCases) {
            it.mAssessment = std::move(assessment.mCases[it.mStaged.mName]);
        }
    } catch (const base::CaseError& error) {
        night->mAssessmentProblem = error.what() + advice;
    } catch (const AssessmentJson::exception&) {
        night->mAssessmentProblem =
            std::string(kAssessmentFile) + " was changed since judge wrote it" + advice;
    }
}

} // namespace report
