#include "journal/Entries.h"

#include <algorithm>
#include <array>

#include "journal/Fields.h"

namespace journal {

namespace {
using Json = Fields::Json;

constexpr std::array<const char*, 3> kVerdictNames = {"passed", "failed", "not observed"};
constexpr std::array<const char*, 4> kReasonNames = {"done", "interrupted", "first failure",
                                                     "gave up"};

/** Throws a CaseError for a text that is none of the names. */
template <typename Enum, size_t Count>
Enum namedAt(const Fields& fields, const char* key, const std::array<const char*, Count>& names)
{
    const auto found = std::find(names.begin(), names.end(), fields.text(key));
    if (found == names.end()) {
        Fields::fail(key, "not known", fields.at(key));
    }
    return static_cast<Enum>(found - names.begin());
}

template <typename Value>
void addOptional(Json* json, const char* key, const std::optional<Value>& value)
{
    if (value) {
        (*json)[key] = *value;
    }
}

Json jsonOf(const StagedCase& it)
{
    return {{"name", it.mName},
            {"number", it.mNumber},
            {"file", it.mFile},
            {"samples", it.mSamples},
            {"repetitions", it.mFileRepetitions},
            {"durationNs", it.mDurationNs},
            {"times", it.mTimes},
            {"source", it.mSource},
            {"expect", it.mExpected}};
}

StagedCase stagedCaseOf(const Fields& fields)
{
    StagedCase it;
    it.mName = fields.text("name");
    it.mNumber = fields.whole<int>("number", 1);
    it.mFile = fields.text("file");
    it.mSamples = fields.whole<quint64>("samples");
    it.mFileRepetitions = fields.whole<quint64>("repetitions");
    it.mDurationNs = fields.whole<qint64>("durationNs", 0);
    it.mTimes = fields.whole<int>("times", 1);
    it.mSource = fields.text("source");
    it.mExpected = fields.texts("expect");
    return it;
}

Json jsonOf(const Measuring& it)
{
    return {{"countsPerVolt", it.mCountsPerVolt},
            {"countsPerAmpere", it.mCountsPerAmpere},
            {"nominalVolts", it.mNominalVolts},
            {"nominalAmperes", it.mNominalAmperes},
            {"nominalHz", it.mNominalHz}};
}

Measuring measuringOf(const Fields& fields)
{
    return {fields.number("countsPerVolt"), fields.number("countsPerAmpere"),
            fields.number("nominalVolts"), fields.number("nominalAmperes"),
            fields.number("nominalHz")};
}

/** Writes each kind of step; its name comes first. */
struct Writer
{
    Json* mJson;

    Json& begin(const char* name) const
    {
        (*mJson)["step"] = name;
        return *mJson;
    }

    void operator()(const NightBegin& step) const
    {
        Json& json = begin("night");
        json["name"] = step.mName;
        json["plan"] = step.mPlanPath;
        json["planHash"] = step.mPlanHash;
        json["stageHash"] = step.mStageHash;
        json["observed"] = step.mIsObserved;
        json["gapNs"] = step.mGapNs;
        addOptional(&json, "seed", step.mSeed);
        json["untilFailure"] = step.mUntilFailure;
        json["cases"] = Json::array();
        for (const StagedCase& it : step.mCases) {
            json["cases"].push_back(jsonOf(it));
        }
        json["order"] = step.mOrder;
        json["environment"] = step.mEnvironment;
        json["measuring"] = jsonOf(step.mMeasuring);
    }

    void operator()(const Resumed& step) const
    {
        begin("resumed")["environment"] = step.mEnvironment;
    }

    void operator()(const ProgramStarted& step) const { begin("started")["run"] = step.mRun; }

    void operator()(const PlayBegin& step) const { begin("begin")["play"] = step.mPlay; }

    void operator()(const CommandSent& step) const
    {
        begin("command")["play"] = step.mPlay;
        (*mJson)["text"] = step.mText;
    }

    void operator()(const Finding& step) const
    {
        Json& json = begin("finding");
        addOptional(&json, "play", step.mPlay);
        json["kind"] = step.mKind;
        json["text"] = step.mText;
        addOptional(&json, "stamp", step.mStampNs);
        json["samples"] = step.mSamplesFile;
    }

    void operator()(const Remark& step) const { begin("remark")["text"] = step.mText; }

    void operator()(const PlayEnd& step) const
    {
        Json& json = begin("end");
        json["play"] = step.mPlay;
        json["verdict"] = nameOf(step.mVerdict);
        json["firstStamp"] = step.mFirstStampNs;
        json["lastStamp"] = step.mLastStampNs;
        json["samples"] = step.mSamples;
        addOptional(&json, "delayNs", step.mDelayNs);
        json["findings"] = step.mFindings;
    }

    void operator()(const ProgramEnded& step) const
    {
        begin("ended")["run"] = step.mRun;
        (*mJson)["how"] = step.mHow;
    }

    void operator()(const NightEnd& step) const
    {
        begin("over")["reason"] = kReasonNames.at(static_cast<size_t>(step.mReason));
        (*mJson)["text"] = step.mText;
    }
};

std::vector<StagedCase> casesOf(const Fields& fields)
{
    std::vector<StagedCase> cases;
    for (const Json& it : fields.at("cases")) {
        cases.push_back(stagedCaseOf(Fields(it)));
    }
    return cases;
}

std::vector<int> orderOf(const Fields& fields)
{
    std::vector<int> order;
    for (const Json& it : fields.at("order")) {
        order.push_back(Fields::wholeOf<int>(it, "order", 0));
    }
    return order;
}

NightBegin nightOf(const Fields& fields)
{
    NightBegin step;
    step.mName = fields.text("name");
    step.mPlanPath = fields.text("plan");
    step.mPlanHash = fields.text("planHash");
    step.mStageHash = fields.text("stageHash");
    step.mIsObserved = fields.flag("observed");
    step.mGapNs = fields.whole<qint64>("gapNs", 0);
    step.mSeed = fields.optionalWhole<quint64>("seed");
    step.mUntilFailure = fields.flag("untilFailure");
    step.mCases = casesOf(fields);
    step.mOrder = orderOf(fields);
    step.mEnvironment = fields.textsByName("environment");
    step.mMeasuring = measuringOf(Fields(fields.at("measuring")));
    return step;
}

Finding findingOf(const Fields& fields)
{
    return {fields.optionalWhole<int>("play", 0), fields.text("kind"), fields.text("text"),
            fields.optionalWhole<qint64>("stamp"), fields.text("samples")};
}

PlayEnd playEndOf(const Fields& fields)
{
    return {
        fields.whole<int>("play", 0),       namedAt<PlayVerdict>(fields, "verdict", kVerdictNames),
        fields.whole<qint64>("firstStamp"), fields.whole<qint64>("lastStamp"),
        fields.whole<quint64>("samples"),   fields.optionalWhole<qint64>("delayNs"),
        fields.whole<quint64>("findings")};
}

NightEnd nightEndOf(const Fields& fields)
{
    return {namedAt<NightEnd::Reason>(fields, "reason", kReasonNames), fields.text("text")};
}

/** Throws a CaseError for what is no step. */
Step stepOf(const Fields& fields)
{
    using Reader = Step (*)(const Fields&);
    static const std::map<std::string, Reader> readers = {
        {"night", [](const Fields& it) { return Step(nightOf(it)); }},
        {"resumed", [](const Fields& it) { return Step(Resumed{it.textsByName("environment")}); }},
        {"started", [](const Fields& it) { return Step(ProgramStarted{it.whole<int>("run", 1)}); }},
        {"begin", [](const Fields& it) { return Step(PlayBegin{it.whole<int>("play", 0)}); }},
        {"command",
         [](const Fields& it) {
             return Step(CommandSent{it.whole<int>("play", 0), it.text("text")});
         }},
        {"finding", [](const Fields& it) { return Step(findingOf(it)); }},
        {"remark", [](const Fields& it) { return Step(Remark{it.text("text")}); }},
        {"end", [](const Fields& it) { return Step(playEndOf(it)); }},
        {"ended",
         [](const Fields& it) {
             return Step(ProgramEnded{it.whole<int>("run", 1), it.text("how")});
         }},
        {"over", [](const Fields& it) { return Step(nightEndOf(it)); }},
    };
    const auto reader = readers.find(fields.text("step"));
    if (reader == readers.end()) {
        Fields::fail("step", "not known", fields.at("step"));
    }
    return reader->second(fields);
}
} // namespace

std::string expectedName(const StagedCase& played, int play)
{
    return std::string(kExpectedFolder) + '/' + played.mName + '-' + std::to_string(play);
}

std::string lineOf(const Entry& entry)
{
    Json json = {{"t", entry.mTimeNs}};
    std::visit(Writer{&json}, entry.mStep);
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Entry parseEntry(std::string_view line)
{
    const Json json = Json::parse(line, nullptr, false);
    const Fields fields(json);
    return {fields.whole<qint64>("t"), stepOf(fields)};
}

const char* nameOf(PlayVerdict verdict)
{
    return kVerdictNames.at(static_cast<size_t>(verdict));
}

} // namespace journal
