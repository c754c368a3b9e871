#include "states/StateFile.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/CaseError.h"
#include "base/WholeFile.h"
#include "generate/WaveParameters.h"
#include "states/StateRange.h"
#include "states/StateText.h"
#include "states/TomlSection.h"

namespace states {

namespace {
constexpr size_t kMaxBytes = size_t{1} << 20U;
constexpr double kMaxSeconds = 86400.0;
constexpr double kMaxPeriods = 1e7;
constexpr double kMaxTau = 1e6;
constexpr std::array<double, generate::kPhaseCount> kBalancedDegrees{0.0, -120.0, 120.0};
constexpr std::array<const char*, 4> kLetters{"A", "B", "C", "N"};

const Range kAnyDegrees{-kMaxDegrees, kMaxDegrees};
const Range kTaus{0.0, kMaxTau, true};

/** Reads one file. Each state starts as a copy of the state before. */
class Reader
{
public:
    explicit Reader(StatePlan& plan) : mPlan(plan) {}

    void read(const toml::table& file);

private:
    void readScale(const TomlSection& file);
    void readNeutral(const TomlSection& file);
    void expectNeutralGiven(const TomlSection& file) const;
    void readState(const toml::node& node, size_t number);
    void readDuration(const TomlSection& section);
    void readAt(const TomlSection& section);
    void readChannels(const TomlSection& section, const char* key, size_t first);
    void readChannel(const TomlSection& section, const char* key, size_t channel, double turn);
    ValueText valueOf(const TomlSection& section, const toml::node& node, const char* key) const;
    std::optional<Offset> offsetOf(const TomlSection& section) const;
    void readHarmonics(const TomlSection& section);
    void readFrequency(const TomlSection& section);
    void readSwing(const TomlSection& section);
    void readInrush(const TomlSection& section);
    void readSaturation(const TomlSection& section);
    std::vector<StateHarmonic> harmonicsOf(const TomlSection& section, const char* key) const;

    StatePlan& mPlan;
    State mState;
    size_t mNumber = 0; ///< of the state that is read
    bool mHasCurrentRule = false;
    bool mHasVoltageRule = false;
};

void Reader::read(const toml::table& table)
{
    const TomlSection file(mPlan.mFileName, table, "", {"frequency", "scale", "neutral", "state"});
    mPlan.mHertz = file.number("frequency", {kMinHertz, kMaxHertz}).value_or(mPlan.mHertz);
    readScale(file);
    readNeutral(file);
    for (const toml::node& node : file.requiredTables("state")) {
        readState(node, mPlan.mStates.size());
    }
    expectNeutralGiven(file);
}

void Reader::readScale(const TomlSection& file)
{
    if (const auto scale = file.numbers("scale", {0.0, kMaxValue, true}, kExpectedScale)) {
        mPlan.mCountsPerVolt = scale->at(0);
        mPlan.mCountsPerAmpere = scale->at(1);
    }
}

void Reader::readNeutral(const TomlSection& file)
{
    const toml::node* const node = file.find("neutral");
    if (node == nullptr) {
        return;
    }
    const TomlSection neutral = file.section(*node, "neutral", {"current", "voltage"});
    const auto readRule = [&neutral](const char* key, generate::NeutralRule& rule, bool& isNamed) {
        if (const std::optional<std::string> text = neutral.text(key)) {
            const auto named = generate::neutralRuleNamed(*text);
            if (!named) {
                neutral.fail(*neutral.find(key), key, "expected \"sum\", \"zero\" or \"given\"");
            }
            rule = *named;
            isNamed = true;
        }
    };
    readRule("current", mPlan.mNeutral.mCurrent, mHasCurrentRule);
    readRule("voltage", mPlan.mNeutral.mVoltage, mHasVoltageRule);
}

/** Requires neutral values in some state if the rule is "given": only then they have a location. */
void Reader::expectNeutralGiven(const TomlSection& file) const
{
    const auto expect = [this, &file](const std::string& key, generate::NeutralRule rule,
                                      size_t channel) {
        if (rule == generate::NeutralRule::Given &&
            mState.mChannels[channel].mLocation.mLine == 0) {
            file.fail(*file.find("neutral")->as_table()->get(key), "neutral." + key,
                      "no state has " + key + ".N; expected it in a state, or \"zero\" here");
        }
    };
    expect("voltage", mPlan.mNeutral.mVoltage, generate::kNeutralVoltage);
    expect("current", mPlan.mNeutral.mCurrent, generate::kNeutralCurrent);
}

void Reader::readState(const toml::node& node, size_t number)
{
    mNumber = number;
    const TomlSection section(mPlan.mFileName, *node.as_table(), "",
                              {"name", "periods", "seconds", "at", "voltage", "current",
                               "harmonics", "frequency", "swing", "inrush", "ct"});
    mState.mName = section.text("name").value_or(std::to_string(number + 1));
    mState.mLocation = locationOf(node);
    readDuration(section);
    readAt(section);
    readChannels(section, "voltage", generate::kFirstVoltage);
    readChannels(section, "current", generate::kFirstCurrent);
    readHarmonics(section);
    readFrequency(section);
    readSwing(section);
    readInrush(section);
    readSaturation(section);
    mPlan.mStates.push_back(mState);
}

void Reader::readDuration(const TomlSection& section)
{
    mState.mPeriods = section.number("periods", {0.0, kMaxPeriods, true});
    mState.mSeconds = section.number("seconds", {0.0, kMaxSeconds, true});
    if (mState.mPeriods && mState.mSeconds) {
        section.fail(*section.find("seconds"), "seconds",
                     "periods is given, too; expected one of the two");
    }
    if (!mState.mPeriods && !mState.mSeconds) {
        section.fail(section.table(), "seconds", "missing; a state has seconds or periods");
    }
    mState.mDuration = locationOf(*section.find(mState.mPeriods ? "periods" : "seconds"));
}

void Reader::readAt(const TomlSection& section)
{
    mState.mAt.reset();
    const std::optional<std::string> text = section.text("at");
    if (!text) {
        return;
    }
    const toml::node& node = *section.find("at");
    if (mNumber == 0) {
        section.fail(node, "at", "not allowed in the first state, which begins with the file");
    }
    mState.mAt = parsePoint(*text);
    if (!mState.mAt) {
        section.fail(node, "at", "expected a phase and an angle of its voltage, such as \"A@90\"");
    }
}

void Reader::readChannels(const TomlSection& section, const char* key, size_t first)
{
    const toml::node* const node = section.find(key);
    if (node == nullptr) {
        return;
    }
    const TomlSection channels = section.section(*node, key, {"balanced", "A", "B", "C", "N"});
    const toml::node* const balanced = channels.find("balanced");
    for (size_t i = 0; i < kLetters.size(); ++i) {
        const toml::node* const own = channels.find(kLetters[i]);
        const bool isPhase = i < generate::kPhaseCount;
        if (isPhase && balanced != nullptr && own != nullptr) {
            channels.fail(*own, kLetters[i],
                          "balanced gives it a value already; expected one of the two");
        }
        if (own != nullptr) {
            readChannel(channels, kLetters[i], first + i, 0.0);
        } else if (isPhase && balanced != nullptr) {
            readChannel(channels, "balanced", first + i, kBalancedDegrees[i]);
        }
    }
    if (const toml::node* const neutral = channels.find("N")) {
        const bool isVoltage = first == generate::kFirstVoltage;
        auto& rule = isVoltage ? mPlan.mNeutral.mVoltage : mPlan.mNeutral.mCurrent;
        const bool isNamed = isVoltage ? mHasVoltageRule : mHasCurrentRule;
        if (isNamed && rule != generate::NeutralRule::Given) {
            channels.fail(*neutral, "N",
                          "expected neutral." + std::string(key) + " = \"given\" with it");
        }
        rule = generate::NeutralRule::Given;
    }
}

/** @param turn degrees, added to the angle of the text */
void Reader::readChannel(const TomlSection& section, const char* key, size_t channel, double turn)
{
    const toml::node& node = *section.find(key);
    ChannelWave& wave = mState.mChannels[channel];
    ValueText value{};
    wave.mOffset.reset();
    if (node.is_table()) {
        const TomlSection parts = section.section(node, key, {"value", "offset", "tau"});
        const toml::node* const inner = parts.find("value");
        if (inner == nullptr) {
            parts.fail(node, "value", "missing");
        }
        value = valueOf(parts, *inner, "value");
        wave.mOffset = offsetOf(parts);
    } else {
        value = valueOf(section, node, key);
    }
    wave.mRms = value.mValue;
    // A balanced value without an angle keeps the angles of the state before, if there is one.
    if (value.mDegrees || mNumber == 0) {
        wave.mDegrees = value.mDegrees.value_or(0.0) + turn;
    }
    wave.mSince = mNumber;
    wave.mLocation = locationOf(node);
}

ValueText Reader::valueOf(const TomlSection& section, const toml::node& node, const char* key) const
{
    if (node.is_number()) {
        return {section.numberOf(node, key, {0.0, kMaxValue}), std::nullopt};
    }
    const std::optional<ValueText> value =
        node.is_string() ? parseValue(node.as_string()->get()) : std::nullopt;
    if (!value) {
        section.fail(node, key,
                     "expected an rms value of 0 or more, and an angle where it changes, such as "
                     "\"230@-120\" or 230");
    }
    return *value;
}

std::optional<Offset> Reader::offsetOf(const TomlSection& section) const
{
    const toml::node* const node = section.find("offset");
    const std::optional<double> tau = section.number("tau", kTaus);
    if (node == nullptr) {
        if (tau) {
            section.fail(*section.find("tau"), "tau", "expected offset beside it");
        }
        return std::nullopt;
    }
    if (!tau) {
        section.fail(*node, "offset", "expected tau beside it, in seconds");
    }
    if (node->is_string() && node->as_string()->get() == "auto") {
        return Offset{std::nullopt, *tau};
    }
    if (!node->is_number()) {
        section.fail(*node, "offset",
                     "expected \"auto\" or the value at the start of the state in amperes");
    }
    return Offset{section.numberOf(*node, "offset", {-kMaxValue, kMaxValue}), *tau};
}

void Reader::readHarmonics(const TomlSection& section)
{
    const toml::node* const node = section.find("harmonics");
    if (node == nullptr) {
        return;
    }
    const TomlSection harmonics = section.section(*node, "harmonics", {"voltage", "current"});
    if (harmonics.find("voltage") != nullptr) {
        mState.mVoltageHarmonics = harmonicsOf(harmonics, "voltage");
    }
    if (harmonics.find("current") != nullptr) {
        mState.mCurrentHarmonics = harmonicsOf(harmonics, "current");
    }
}

std::vector<StateHarmonic> Reader::harmonicsOf(const TomlSection& section, const char* key) const
{
    const toml::node& node = *section.find(key);
    const toml::array* const list = node.as_array();
    if (list == nullptr) {
        section.fail(node, key, "expected a list such as [\"5:3%@0\", \"7:2%\"]");
    }
    std::vector<StateHarmonic> harmonics;
    for (const toml::node& entry : *list) {
        const std::optional<StateHarmonic> harmonic =
            entry.is_string() ? parseHarmonic(entry.as_string()->get()) : std::nullopt;
        if (!harmonic) {
            section.fail(entry, key,
                         fmt::format("expected \"ORDER:PERCENT%@DEGREES\", such as \"5:3%@0\", of "
                                     "an order from 2 to {}",
                                     generate::kMaxOrder));
        }
        if (std::any_of(harmonics.begin(), harmonics.end(),
                        [&harmonic](const StateHarmonic& other) {
                            return other.mOrder == harmonic->mOrder;
                        })) {
            section.fail(entry, key, fmt::format("order {} is listed twice", harmonic->mOrder));
        }
        harmonics.push_back(*harmonic);
    }
    return harmonics;
}

void Reader::readFrequency(const TomlSection& section)
{
    mState.mFrequency.reset();
    const toml::node* const node = section.find("frequency");
    if (node == nullptr) {
        return;
    }
    const Range hertz{kMinHertz, kMaxHertz};
    FrequencyTarget target{};
    if (node->is_table()) {
        const TomlSection parts = section.section(*node, "frequency", {"to", "rate"});
        target.mHertz = parts.requiredNumber("to", hertz);
        const std::optional<double> rate = parts.number("rate", {-kMaxHertz, kMaxHertz});
        if (rate == 0.0) {
            parts.fail(*parts.find("rate"), "rate",
                       "expected a rate other than 0; leave it out for a step");
        }
        target.mRate = rate.value_or(0.0);
    } else {
        target.mHertz = section.numberOf(*node, "frequency", hertz);
    }
    target.mLocation = locationOf(*node);
    mState.mFrequency = target;
}

void Reader::readSwing(const TomlSection& section)
{
    const toml::node* const node = section.find("swing");
    if (node == nullptr) {
        return;
    }
    mState.mSwing.reset();
    if (!isOff(*node)) {
        const TomlSection parts =
            section.section(*node, "swing", {"hz", "voltage", "current", "degrees"});
        const Range depth{-1.0, 1.0};
        mState.mSwing = Swing{parts.requiredNumber("hz", {0.0, kMaxHertz, true}),
                              parts.number("voltage", depth).value_or(0.0),
                              parts.number("current", depth).value_or(0.0),
                              parts.number("degrees", kAnyDegrees).value_or(0.0), mNumber};
    }
}

void Reader::readInrush(const TomlSection& section)
{
    const toml::node* const node = section.find("inrush");
    if (node == nullptr) {
        return;
    }
    mState.mInrush.reset();
    if (isOff(*node)) {
        return;
    }
    constexpr double kDefaultKnee = 1.2;
    const TomlSection parts =
        section.section(*node, "inrush", {"peak", "tau", "knee", "remanence"});
    Inrush inrush{parts.requiredNumber("peak", {0.0, kMaxValue}),
                  parts.requiredNumber("tau", kTaus),
                  parts.number("knee", {1.0, 1.9}).value_or(kDefaultKnee),
                  {},
                  mNumber};
    if (const auto remanence = parts.numbers("remanence", {-1.0, 1.0},
                                             {3, "expected three numbers, one for each phase"})) {
        std::copy(remanence->begin(), remanence->end(), inrush.mRemanence.begin());
    }
    mState.mInrush = inrush;
}

void Reader::readSaturation(const TomlSection& section)
{
    const toml::node* const node = section.find("ct");
    if (node == nullptr) {
        return;
    }
    mState.mSaturation.reset();
    if (!isOff(*node)) {
        const TomlSection parts = section.section(*node, "ct", {"knee", "burden", "remanence"});
        mState.mSaturation =
            Saturation{parts.requiredNumber("knee", {0.0, kMaxValue, true}),
                       parts.requiredNumber("burden", {0.0, kMaxValue, true}),
                       parts.number("remanence", {-1.0, 1.0}).value_or(0.0), mNumber};
    }
}
} // namespace

StatePlan parseStates(std::string_view text, const std::string& name)
{
    StatePlan plan;
    plan.mFileName = name;
    Reader(plan).read(parseTables(text, name));
    expectValuesInRange(plan);
    return plan;
}

StatePlan readStates(const std::string& path)
{
    return parseStates(base::readWholeFile(path, kMaxBytes), path);
}

} // namespace states
