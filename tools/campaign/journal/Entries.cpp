#include "journal/Entries.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "journal/Fields.h"

namespace journal {

namespace {
using Json = Fields::Json;

constexpr std::array<const char*, 3> kVerdictNames = {"passed", "failed", "not observed"};
constexpr std::array<const char*, 4> kReasonNames = {"done", "interrupted", "first failure",
                                                     "gave up"};

/** In the order of the alternatives of Step. */
constexpr std::array<const char*, std::variant_size_v<Step>> kStepNames = {
    "night", "resumed", "started", "begin", "command", "finding", "remark", "end", "ended", "over"};

// The fields of each object, in the order in which they are written. Io is a FieldWriter or a
// FieldReader. A number after a field is the smallest value that is accepted on reading.

template <typename Io>
void fields(Io& io, typename Io::template Object<StagedCase> it)
{
    io("name", it.mName);
    io("number", it.mNumber, 1);
    io("file", it.mFile);
    io("samples", it.mSamples);
    io("repetitions", it.mFileRepetitions);
    io("durationNs", it.mDurationNs, 0);
    io("times", it.mTimes, 1);
    io("source", it.mSource);
    io("expect", it.mExpected);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<Measuring> it)
{
    io("countsPerVolt", it.mCountsPerVolt);
    io("countsPerAmpere", it.mCountsPerAmpere);
    io("nominalVolts", it.mNominalVolts);
    io("nominalAmperes", it.mNominalAmperes);
    io("nominalHz", it.mNominalHz);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<NightBegin> it)
{
    io("name", it.mName);
    io("plan", it.mPlanPath);
    io("planHash", it.mPlanHash);
    io("stageHash", it.mStageHash);
    io("observed", it.mIsObserved);
    io("gapNs", it.mGapNs, 0);
    io("seed", it.mSeed);
    io("untilFailure", it.mUntilFailure);
    io("cases", it.mCases);
    io("order", it.mOrder, 0);
    io("environment", it.mEnvironment);
    io("measuring", it.mMeasuring);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<Resumed> it)
{
    io("environment", it.mEnvironment);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<ProgramStarted> it)
{
    io("run", it.mRun, 1);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<PlayBegin> it)
{
    io("play", it.mPlay, 0);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<CommandSent> it)
{
    io("play", it.mPlay, 0);
    io("text", it.mText);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<Finding> it)
{
    io("play", it.mPlay, 0);
    io("kind", it.mKind);
    io("text", it.mText);
    io("stamp", it.mStampNs);
    io("samples", it.mSamplesFile);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<Remark> it)
{
    io("text", it.mText);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<PlayEnd> it)
{
    io("play", it.mPlay, 0);
    io.named("verdict", it.mVerdict, kVerdictNames);
    io("firstStamp", it.mFirstStampNs);
    io("lastStamp", it.mLastStampNs);
    io("samples", it.mSamples);
    io("delayNs", it.mDelayNs);
    io("findings", it.mFindings);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<ProgramEnded> it)
{
    io("run", it.mRun, 1);
    io("how", it.mEndText);
}

template <typename Io>
void fields(Io& io, typename Io::template Object<NightEnd> it)
{
    io.named("reason", it.mReason, kReasonNames);
    io("text", it.mText);
}

/** Adds fields to an object. Optional fields without a value are left out. */
class FieldWriter
{
public:
    template <typename Type>
    using Object = const Type&;

    explicit FieldWriter(Json& object) : mObject(object) {}

    template <typename Value>
    void operator()(const char* key, const Value& value, int /*min*/ = 0)
    {
        mObject[key] = value;
    }

    template <typename Number>
    void operator()(const char* key, const std::optional<Number>& value, int /*min*/ = 0)
    {
        if (value) {
            mObject[key] = *value;
        }
    }

    void operator()(const char* key, const Measuring& value) { mObject[key] = objectOf(value); }

    void operator()(const char* key, const std::vector<StagedCase>& values)
    {
        mObject[key] = Json::array();
        for (const StagedCase& it : values) {
            mObject[key].push_back(objectOf(it));
        }
    }

    template <typename Enum, typename Names>
    void named(const char* key, Enum value, const Names& names)
    {
        mObject[key] = names.at(static_cast<size_t>(value));
    }

private:
    template <typename Value>
    static Json objectOf(const Value& value)
    {
        Json object;
        FieldWriter writer(object);
        fields(writer, value);
        return object;
    }

    Json& mObject;
};

/** Reads fields of an object. Throws a CaseError that names the field, see Fields. */
class FieldReader
{
public:
    template <typename Type>
    using Object = Type&;

    explicit FieldReader(const Json& object) : mFields(object) {}

    void operator()(const char* key, std::string& value) { value = mFields.text(key); }
    void operator()(const char* key, bool& value) { value = mFields.flag(key); }
    void operator()(const char* key, double& value) { value = mFields.number(key); }
    void operator()(const char* key, std::vector<std::string>& value)
    {
        value = mFields.texts(key);
    }
    void operator()(const char* key, std::map<std::string, std::string>& value)
    {
        value = mFields.textsByName(key);
    }

    template <typename Number>
    void operator()(const char* key, Number& value, std::optional<int> min = std::nullopt)
    {
        value = mFields.whole<Number>(key, minOf<Number>(min));
    }

    template <typename Number>
    void operator()(const char* key, std::optional<Number>& value,
                    std::optional<int> min = std::nullopt)
    {
        value = mFields.optionalWhole<Number>(key, minOf<Number>(min));
    }

    void operator()(const char* key, std::vector<int>& values, int min)
    {
        for (const Json& it : mFields.at(key)) {
            values.push_back(Fields::wholeOf<int>(it, key, min));
        }
    }

    void operator()(const char* key, Measuring& value)
    {
        FieldReader reader(mFields.at(key));
        fields(reader, value);
    }

    void operator()(const char* key, std::vector<StagedCase>& values)
    {
        for (const Json& it : mFields.at(key)) {
            FieldReader reader(it);
            fields(reader, values.emplace_back());
        }
    }

    template <typename Enum, typename Names>
    void named(const char* key, Enum& value, const Names& names)
    {
        const auto found = std::find(names.begin(), names.end(), mFields.text(key));
        if (found == names.end()) {
            Fields::fail(key, "not known", mFields.at(key));
        }
        value = static_cast<Enum>(found - names.begin());
    }

private:
    template <typename Number>
    static Number minOf(std::optional<int> min)
    {
        return min ? static_cast<Number>(*min) : std::numeric_limits<Number>::min();
    }

    Fields mFields;
};

/** Reads the step of the alternative with this index in Step. */
template <size_t Index>
Step stepAt(FieldReader& reader)
{
    std::variant_alternative_t<Index, Step> step;
    fields(reader, step);
    return step;
}

template <size_t... Indices>
Step readStep(size_t index, FieldReader& reader, std::index_sequence<Indices...> /*all*/)
{
    using Reader = Step (*)(FieldReader&);
    constexpr std::array<Reader, sizeof...(Indices)> kReaders = {&stepAt<Indices>...};
    return kReaders.at(index)(reader);
}

Step stepOf(const Json& json)
{
    size_t index = 0;
    FieldReader reader(json);
    reader.named("step", index, kStepNames);
    return readStep(index, reader, std::make_index_sequence<kStepNames.size()>());
}
} // namespace

std::string expectedName(const StagedCase& played, int play)
{
    return std::string(kExpectedFolder) + '/' + played.mName + '-' + std::to_string(play);
}

std::string playText(const StagedCase& played, int repetition)
{
    if (repetition > played.mTimes) {
        return fmt::format("{} (repetition {})", played.mName, repetition);
    }
    return played.mTimes == 1
               ? played.mName
               : fmt::format("{} ({} of {})", played.mName, repetition, played.mTimes);
}

std::string lineOf(const Entry& entry)
{
    Json json = {{"t", entry.mTimeNs}};
    FieldWriter writer(json);
    writer.named("step", entry.mStep.index(), kStepNames);
    std::visit([&writer](const auto& step) { fields(writer, step); }, entry.mStep);
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Entry parseEntry(std::string_view line)
{
    const Json json = Json::parse(line, nullptr, false);
    return {Fields(json).whole<qint64>("t"), stepOf(json)};
}

const char* nameOf(PlayVerdict verdict)
{
    return kVerdictNames.at(static_cast<size_t>(verdict));
}

} // namespace journal
