#include "journal/Entries.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace journal {

namespace {
using Json = nlohmann::ordered_json;

constexpr std::array<const char*, 3> kVerdictNames = {"passed", "failed", "not observed"};
constexpr std::array<const char*, 4> kReasonNames = {"done", "interrupted", "first failure",
                                                     "gave up"};

/** Throws a Json::exception for a name that is none of them. */
template <typename Enum, size_t Count>
Enum valueNamed(const Json& name, const std::array<const char*, Count>& names)
{
    const auto found = std::find(names.begin(), names.end(), name.get<std::string>());
    if (found == names.end()) {
        throw Json::other_error::create(501, "unknown name", nullptr);
    }
    return static_cast<Enum>(found - names.begin());
}

template <typename Value>
std::optional<Value> optionalAt(const Json& json, const char* key)
{
    return json.contains(key) ? std::make_optional(json[key].get<Value>()) : std::nullopt;
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

StagedCase stagedCaseOf(const Json& json)
{
    StagedCase it;
    json.at("name").get_to(it.mName);
    json.at("number").get_to(it.mNumber);
    json.at("file").get_to(it.mFile);
    json.at("samples").get_to(it.mSamples);
    json.at("repetitions").get_to(it.mFileRepetitions);
    json.at("durationNs").get_to(it.mDurationNs);
    json.at("times").get_to(it.mTimes);
    json.at("source").get_to(it.mSource);
    json.at("expect").get_to(it.mExpected);
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

Measuring measuringOf(const Json& json)
{
    Measuring it;
    json.at("countsPerVolt").get_to(it.mCountsPerVolt);
    json.at("countsPerAmpere").get_to(it.mCountsPerAmpere);
    json.at("nominalVolts").get_to(it.mNominalVolts);
    json.at("nominalAmperes").get_to(it.mNominalAmperes);
    json.at("nominalHz").get_to(it.mNominalHz);
    return it;
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

NightBegin nightOf(const Json& json)
{
    NightBegin step;
    json.at("name").get_to(step.mName);
    json.at("plan").get_to(step.mPlanPath);
    json.at("planHash").get_to(step.mPlanHash);
    json.at("stageHash").get_to(step.mStageHash);
    json.at("observed").get_to(step.mIsObserved);
    json.at("gapNs").get_to(step.mGapNs);
    step.mSeed = optionalAt<quint64>(json, "seed");
    step.mUntilFailure = json.value("untilFailure", false);
    for (const Json& it : json.at("cases")) {
        step.mCases.push_back(stagedCaseOf(it));
    }
    json.at("order").get_to(step.mOrder);
    json.at("environment").get_to(step.mEnvironment);
    if (json.contains("measuring")) { // not in a journal of an earlier version
        step.mMeasuring = measuringOf(json["measuring"]);
    }
    return step;
}

Finding findingOf(const Json& json)
{
    return {optionalAt<int>(json, "play"), json.at("kind").get<std::string>(),
            json.at("text").get<std::string>(), optionalAt<qint64>(json, "stamp"),
            json.at("samples").get<std::string>()};
}

PlayEnd playEndOf(const Json& json)
{
    PlayEnd step;
    json.at("play").get_to(step.mPlay);
    step.mVerdict = valueNamed<PlayVerdict>(json.at("verdict"), kVerdictNames);
    json.at("firstStamp").get_to(step.mFirstStampNs);
    json.at("lastStamp").get_to(step.mLastStampNs);
    json.at("samples").get_to(step.mSamples);
    step.mDelayNs = optionalAt<qint64>(json, "delayNs");
    json.at("findings").get_to(step.mFindings);
    return step;
}

/** Throws a Json::exception for what is no step. */
Step stepOf(const Json& json)
{
    using Reader = Step (*)(const Json&);
    static const std::map<std::string, Reader> readers = {
        {"night", [](const Json& it) { return Step(nightOf(it)); }},
        {"resumed",
         [](const Json& it) {
             return Step(Resumed{it.at("environment").get<std::map<std::string, std::string>>()});
         }},
        {"started", [](const Json& it) { return Step(ProgramStarted{it.at("run").get<int>()}); }},
        {"begin", [](const Json& it) { return Step(PlayBegin{it.at("play").get<int>()}); }},
        {"command",
         [](const Json& it) {
             return Step(CommandSent{it.at("play").get<int>(), it.at("text").get<std::string>()});
         }},
        {"finding", [](const Json& it) { return Step(findingOf(it)); }},
        {"remark", [](const Json& it) { return Step(Remark{it.at("text").get<std::string>()}); }},
        {"end", [](const Json& it) { return Step(playEndOf(it)); }},
        {"ended",
         [](const Json& it) {
             return Step(ProgramEnded{it.at("run").get<int>(), it.at("how").get<std::string>()});
         }},
        {"over",
         [](const Json& it) {
             return Step(NightEnd{valueNamed<NightEnd::Reason>(it.at("reason"), kReasonNames),
                                  it.at("text").get<std::string>()});
         }},
    };
    const auto reader = readers.find(json.at("step").get<std::string>());
    if (reader == readers.end()) {
        throw Json::other_error::create(501, "unknown step", nullptr);
    }
    return reader->second(json);
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

std::optional<Entry> parseEntry(std::string_view line)
{
    try {
        const Json json = Json::parse(line);
        return Entry{json.at("t").get<qint64>(), stepOf(json)};
    } catch (const Json::exception&) {
        return std::nullopt;
    }
}

const char* nameOf(PlayVerdict verdict)
{
    return kVerdictNames.at(static_cast<size_t>(verdict));
}

} // namespace journal
