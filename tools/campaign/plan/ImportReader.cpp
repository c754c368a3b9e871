#include "plan/ImportReader.h"

#include <fmt/format.h>

#include "SampleStep.h"
#include "base/TextEncoding.h"
#include "plan/PlanValues.h"

namespace plan {

namespace {
/** For more periods, `seconds` repeats the file. */
constexpr double kMaxRepeatedPeriods = 100'000.0;
constexpr double kMaxRecordedSeconds = 1e6;
} // namespace

std::vector<std::string> ImportReader::keys()
{
    return {"channels", "scale",  "side",  "clip", "frequency", "from",
            "to",       "before", "after", "loop", "encoding"};
}

std::string ImportReader::read(importing::ImportOptions& options, std::string& encoding)
{
    mMistakes.collect([&] { readChannels(options.mMapping); });
    mMistakes.collect([&] { readScale(options.mMapping); });
    mMistakes.collect([&] { readSide(options.mMapping); });
    mMistakes.collect([&] { readFlag("clip", options.mClip); });
    mMistakes.collect([&] { readFrequency(options); });
    mMistakes.collect([&] { readSeconds("from", options.mFrom); });
    mMistakes.collect([&] { readSeconds("to", options.mTo); });
    mMistakes.collect([&] { readPeriods("before", options.mBefore); });
    mMistakes.collect([&] { readPeriods("after", options.mAfter); });
    mMistakes.collect([&] { readFlag("loop", options.mDoLoop); });
    mMistakes.collect([&] { readEncoding(encoding); });
    mMistakes.collect([&] {
        if (options.mDoLoop && mSection.find("after") != nullptr) {
            mSection.fail(*mSection.find("after"), "after",
                          "loop is given, too; expected one of the two");
        }
    });
    return mText;
}

void ImportReader::describe(const char* key, const std::string& value)
{
    mText += fmt::format(", {}={}", key, value);
}

void ImportReader::readChannels(importing::MappingOptions& mapping)
{
    const std::optional<std::string> text = plainText(mSection, "channels");
    if (!text) {
        return;
    }
    const std::string problem = importing::readAssignments(*text, mapping.mAssignments);
    if (!problem.empty()) {
        mSection.fail(*mSection.find("channels"), "channels", problem);
    }
    describe("channels", *text);
}

void ImportReader::readScale(importing::MappingOptions& mapping)
{
    const auto scale = mSection.numbers("scale", {0.0, kMaxCounts, true}, states::kExpectedScale);
    if (!scale) {
        return;
    }
    mapping.mCountsPerVolt = scale->at(0);
    mapping.mCountsPerAmpere = scale->at(1);
    describe("scale", fmt::format("{},{}", mapping.mCountsPerVolt, mapping.mCountsPerAmpere));
}

void ImportReader::readSide(importing::MappingOptions& mapping)
{
    const std::optional<std::string> text = plainText(mSection, "side");
    if (!text) {
        return;
    }
    if (*text != "primary" && *text != "secondary") {
        mSection.fail(*mSection.find("side"), "side", "expected \"primary\" or \"secondary\"");
    }
    mapping.mSide = *text == "primary" ? importing::TransformerSide::Primary
                                       : importing::TransformerSide::Secondary;
    describe("side", *text);
}

/** Reads a number, or one of two words. */
void ImportReader::readFrequency(importing::ImportOptions& options)
{
    const toml::node* const node = mSection.find("frequency");
    if (node == nullptr) {
        return;
    }
    const std::string text = node->is_string() ? node->as_string()->get() : "";
    if (text == "track" || text == "nominal") {
        options.mTiming =
            text == "track" ? importing::LineTiming::Phase : importing::LineTiming::Nominal;
        describe("frequency", text);
        return;
    }
    options.mTiming = importing::LineTiming::Fixed;
    options.mHz = node->is_number() ? static_cast<float>(node->value_or(0.0)) : 0.0F;
    if (!isPlayableStep(sampleStepOf(options.mHz))) {
        mSection.fail(*node, "frequency",
                      "expected \"track\", \"nominal\" or a frequency in Hz that can be played");
    }
    describe("frequency", fmt::format("{}", options.mHz));
}

void ImportReader::readEncoding(std::string& encoding)
{
    encoding = plainText(mSection, "encoding").value_or("");
    if (encoding.empty()) {
        return;
    }
    if (!base::isEncoding(encoding)) {
        mSection.fail(*mSection.find("encoding"), "encoding", "unknown encoding");
    }
    describe("encoding", encoding);
}

void ImportReader::readSeconds(const char* key, std::optional<double>& seconds)
{
    seconds = mSection.number(key, {-kMaxRecordedSeconds, kMaxRecordedSeconds});
    if (seconds) {
        describe(key, fmt::format("{}", *seconds));
    }
}

void ImportReader::readPeriods(const char* key, size_t& periods)
{
    periods = wholeNumber(mSection, key, {0.0, kMaxRepeatedPeriods}).value_or(0);
    if (periods > 0) {
        describe(key, std::to_string(periods));
    }
}

void ImportReader::readFlag(const char* key, bool& isSet)
{
    isSet = flag(mSection, key);
    if (isSet) {
        mText += fmt::format(", {}", key);
    }
}

} // namespace plan
