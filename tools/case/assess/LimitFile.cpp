#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "assess/BuiltInLimits.h"
#include "assess/Limits.h"
#include "assess/QuantityNames.h"
#include "base/CaseError.h"
#include "base/NearestName.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/WholeFile.h"
#include "states/TomlSection.h"

namespace assess {

namespace {
constexpr size_t kMaxLimitBytes = size_t{1} << 20U;
constexpr double kMaxLimitSeconds = 86400.0;
constexpr double kMaxLimit = 1e9;

const states::Range kLimitRange{0.0, kMaxLimit, true};
const states::Range kSecondsRange{0.0, kMaxLimitSeconds};

/** Reads one table of limits. */
class LimitReader
{
public:
    LimitReader(LimitTable& limits, const toml::table& file)
        : mLimits(limits),
          mFile(limits.mName, file, "",
                {"title", "tolerance", "event-tolerance", "nominal", "limit"})
    {
    }

    void read();

private:
    using Section = states::TomlSection;

    void readNominal();
    void readLimit(const toml::node& node);
    void readAmounts(const Section& section, Limit& limit) const;
    void readConditions(const Section& section, Limit& limit) const;
    std::optional<Bound> bound(const Section& section, const char* key) const;
    std::optional<Span> span(const Section& section, const char* key) const;
    void addSpan(const Section& section, const char* key, const toml::node& node, Span& span) const;
    std::vector<std::string> knownTexts(const Section& section, const char* key,
                                        const std::vector<std::string>& names) const;

    LimitTable& mLimits;
    Section mFile;
};

void LimitReader::read()
{
    mLimits.mTitle = mFile.text("title").value_or("");
    mLimits.mToleranceSeconds = mFile.requiredNumber("tolerance", kSecondsRange);
    mLimits.mEventToleranceSeconds =
        mFile.number("event-tolerance", kSecondsRange).value_or(mLimits.mEventToleranceSeconds);
    readNominal();
    for (const toml::node& node : mFile.requiredTables("limit")) {
        readLimit(node);
    }
}

void LimitReader::readNominal()
{
    if (const auto nominal = mFile.numbers(
            "nominal", kLimitRange, {3, "expected three numbers: volts, amperes and hertz"})) {
        mLimits.mNominal = {nominal->at(0), nominal->at(1), nominal->at(2)};
    }
}

void LimitReader::readLimit(const toml::node& node)
{
    const Section section(mLimits.mName, *node.as_table(), "",
                          {"quantity", "channel", "absolute", "reading", "nominal", "from", "to",
                           "while", "edge", "after", "clause", "note"});
    if (section.find("quantity") == nullptr) {
        section.fail(section.table(), "quantity", "missing");
    }
    Limit limit;
    std::vector<std::string> names = limitNames();
    for (const std::string& name : measuredNames()) {
        names.push_back(name);
    }
    limit.mChannels = knownTexts(section, "channel", channelNames());
    limit.mClause = section.text("clause").value_or("");
    limit.mNote = section.text("note").value_or("");
    for (const std::string& quantity : knownTexts(section, "quantity", names)) {
        limit.mQuantity = quantity;
        readAmounts(section, limit);
        readConditions(section, limit);
        mLimits.mLimits.push_back(limit);
    }
}

/** Reads a text, or a list of texts, that must be among the names. */
std::vector<std::string> LimitReader::knownTexts(const Section& section, const char* key,
                                                 const std::vector<std::string>& names) const
{
    std::vector<std::string> texts;
    const auto add = [&](const toml::node& node) {
        const std::string text = node.is_string() ? node.as_string()->get() : "";
        const bool hasInterval = isMeasured(text) && names.size() > channelNames().size();
        if (!hasInterval && std::find(names.begin(), names.end(), text) == names.end()) {
            section.fail(node, key,
                         fmt::format("'{}' is unknown; the nearest are {}", text,
                                     fmt::join(base::nearestNames(text, names, 3), ", ")));
        }
        texts.push_back(text);
    };
    const toml::node* const node = section.find(key);
    if (node != nullptr && node->is_array()) {
        for (const toml::node& item : *node->as_array()) {
            add(item);
        }
    } else if (node != nullptr) {
        add(*node);
    }
    return texts;
}

void LimitReader::readAmounts(const Section& section, Limit& limit) const
{
    const bool isFamily = !isMeasured(limit.mQuantity) && !isComputed(limit.mQuantity);
    const SeriesKey key{isFamily ? limit.mQuantity + "-2" : limit.mQuantity,
                        limit.mChannels.empty() ? "UA" : limit.mChannels.front()};
    const toml::node* const absolute = section.find("absolute");
    limit.mAbsolute = 0.0;
    limit.mTime = {};
    if (absolute != nullptr && absolute->is_number()) {
        limit.mAbsolute = section.numberOf(*absolute, "absolute", kLimitRange);
    } else if (absolute != nullptr) {
        if (unitOf(key) != "s") {
            section.fail(*absolute, "absolute",
                         "expected a number above 0: periods or frames are for times only");
        }
        limit.mTime = *span(section, "absolute");
    }
    limit.mReading = section.number("reading", kLimitRange).value_or(0.0);
    limit.mNominal = section.number("nominal", kLimitRange).value_or(0.0);
    const Span& time = limit.mTime;
    const bool hasAny = limit.mAbsolute + limit.mReading + limit.mNominal > 0.0 ||
                        time.mSeconds + time.mPeriods + time.mFrames > 0.0;
    if (!hasAny) {
        section.fail(section.table(), "absolute",
                     "missing; a limit has absolute, reading or nominal");
    }
    if (limit.mNominal > 0.0 && nominalOf(key, {1.0, 1.0, 1.0}) == 0.0) {
        section.fail(*section.find("nominal"), "nominal",
                     limit.mQuantity + " has no nominal value; expected absolute or reading");
    }
}

void LimitReader::readConditions(const Section& section, Limit& limit) const
{
    limit.mFrom = bound(section, "from");
    limit.mTo = bound(section, "to");
    if (limit.mFrom && limit.mTo && limit.mFrom->mIsPercent != limit.mTo->mIsPercent) {
        section.fail(*section.find("to"), "to", "expected percent only if from has it, too");
    }
    if (limit.mFrom && limit.mTo && limit.mFrom->mValue >= limit.mTo->mValue) {
        section.fail(*section.find("to"), "to", "expected a value above from");
    }
    if (const auto state = section.text("while")) {
        if (*state != "steady" && *state != "ramp" && *state != "varying") {
            section.fail(*section.find("while"), "while",
                         R"(expected "steady", "ramp" or "varying")");
        }
        limit.mState = *state == "steady" ? SignalState::Steady
                       : *state == "ramp" ? SignalState::Ramp
                                          : SignalState::Varying;
    }
    limit.mEdge = span(section, "edge");
    limit.mAfter = span(section, "after");
}

/** Reads a number, or a percentage such as "10 %". */
std::optional<Bound> LimitReader::bound(const Section& section, const char* key) const
{
    const toml::node* const node = section.find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    if (!node->is_string()) {
        return Bound{section.numberOf(*node, key, {0.0, kMaxLimit}), false};
    }
    std::string_view text = node->as_string()->get();
    Bound percent{0.0, true};
    const bool isPercent = !text.empty() && text.back() == '%';
    if (!isPercent || !base::parseNumber(text.substr(0, text.size() - 1), &percent.mValue) ||
        percent.mValue < 0.0) {
        section.fail(*node, key,
                     "expected a number, or percent of the nominal value, such as \"10 %\"");
    }
    return percent;
}

std::optional<Span> LimitReader::span(const Section& section, const char* key) const
{
    const toml::node* const node = section.find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    Span span;
    if (node->is_array()) {
        for (const toml::node& item : *node->as_array()) {
            addSpan(section, key, item, span);
        }
    } else {
        addSpan(section, key, *node, span);
    }
    return span;
}

/** Reads a number of seconds, of periods ("2/f0") or of reporting intervals ("7/fr"). */
void LimitReader::addSpan(const Section& section, const char* key, const toml::node& node,
                          Span& span) const
{
    if (!node.is_string()) {
        span.mSeconds = std::max(span.mSeconds, section.numberOf(node, key, kSecondsRange));
        return;
    }
    const std::string_view text = node.as_string()->get();
    const size_t slash = std::min(text.find('/'), text.size());
    const std::string_view per = text.substr(slash);
    double count = 0.0;
    const bool isGood = base::parseNumber(text.substr(0, slash), &count) && count >= 0.0 &&
                        count <= kMaxLimitSeconds && (per == "/f0" || per == "/fr");
    if (!isGood) {
        section.fail(node, key,
                     R"(expected seconds, periods such as "2/f0" or frames such as "7/fr")");
    }
    double& part = per == "/f0" ? span.mPeriods : span.mFrames;
    part = std::max(part, count);
}
} // namespace

LimitTable parseLimits(std::string_view text, const std::string& name)
{
    LimitTable limits;
    limits.mName = name;
    const toml::table table = states::parseTables(text, name);
    LimitReader(limits, table).read();
    return limits;
}

LimitTable readLimits(const std::string& nameOrPath)
{
    const std::string_view text = builtInLimits(nameOrPath);
    return text.empty() ? parseLimits(base::readWholeFile(nameOrPath, kMaxLimitBytes), nameOrPath)
                        : parseLimits(text, nameOrPath);
}

} // namespace assess
