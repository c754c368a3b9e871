#include "assess/QuantityNames.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/Numbers.h"
#include "measure/Quantities.h"
#include "waveform/RecordStamp.h"

namespace assess {

namespace {
constexpr std::array<std::pair<std::string_view, const char*>, 10> kComputed{
    {{kTve, "%"},
     {"step-response-tve", "s"},
     {"step-response-frequency", "s"},
     {"step-response-rocof", "s"},
     {kStepDelay, "s"},
     {kStepOvershoot, "%"},
     {"dip-start", "s"},
     {"swell-start", "s"},
     {"interruption-start", "s"},
     {"rapid-change-start", "s"}}};

constexpr std::array<std::string_view, 4> kEventKinds{"dip", "swell", "interruption",
                                                      "rapid-change"};
constexpr std::array<std::pair<char, double>, 6> kPrefixes{
    {{'n', 1e-9}, {'u', 1e-6}, {'m', 1e-3}, {'k', 1e3}, {'M', 1e6}, {'G', 1e9}}};

/** Two units and the factor between them, which is not that of a prefix. */
struct UnitPair
{
    std::string_view mFrom;
    std::string_view mTo;
    double mFactor;
};
constexpr std::array<UnitPair, 7> kUnitPairs{{{"rad", "deg", 1.0 / base::kRadiansPerDegree},
                                              {"\xC2\xB0", "deg", 1.0},
                                              {"1", "%", 100.0},
                                              {"pu", "%", 100.0},
                                              {"1", "", 1.0},
                                              {"%", "", 0.01},
                                              {"min", "s", 60.0}}};

const auto* findComputed(std::string_view quantity)
{
    return std::find_if(kComputed.begin(), kComputed.end(),
                        [quantity](const auto& it) { return it.first == quantity; });
}

/** Names of all quantities except events, one for each order, without intervals. */
std::vector<std::string> namesWithOrders()
{
    std::vector<std::string> names;
    for (const measure::Quantity& quantity : measure::quantities()) {
        if (quantity.mFirstOrder == 0) {
            names.emplace_back(quantity.mName);
        }
        for (int order = quantity.mFirstOrder; order > 0 && order <= quantity.mLastOrder; ++order) {
            names.push_back(measure::nameOf(measure::RowKind{quantity.mId, order}));
        }
    }
    return names;
}
} // namespace

std::optional<std::string> eventKindOf(std::string_view quantity)
{
    for (const std::string_view kind : kEventKinds) {
        if (quantity.substr(0, kind.size()) == kind && quantity.size() > kind.size() &&
            quantity[kind.size()] == '-') {
            return std::string(kind);
        }
    }
    return std::nullopt;
}

std::string startOf(const std::string& eventKind)
{
    return eventKind + "-start";
}

bool isMeasured(std::string_view quantity)
{
    return measure::findRowKind(quantity).has_value();
}

bool isComputed(std::string_view quantity)
{
    return findComputed(quantity) != kComputed.end();
}

bool isChannel(std::string_view channel)
{
    return measure::findChannel(channel).has_value();
}

bool isAngle(std::string_view quantity)
{
    return quantity == kAngle || quantity == kPositiveAngle;
}

std::string unitOf(const SeriesKey& key)
{
    if (isComputed(key.mQuantity)) {
        return findComputed(key.mQuantity)->second;
    }
    const auto channel = measure::findChannel(key.mChannel);
    return measure::unitOf(measure::findRowKind(key.mQuantity)->mId,
                           channel.value_or(measure::Channel::None));
}

std::string familyOf(const std::string& quantity)
{
    const auto kind = measure::findRowKind(quantity);
    return kind ? measure::quantityOf(kind->mId).mName : quantity;
}

bool isOneOf(const std::string& quantity, const std::set<std::string>& names)
{
    const auto kind = measure::findRowKind(quantity);
    const char* const group = kind                    ? measure::quantityOf(kind->mId).mGroup
                              : eventKindOf(quantity) ? "events"
                                                      : "phasors";
    return names.count(quantity) + names.count(familyOf(quantity)) + names.count(group) > 0;
}

qint64 intervalNsOf(const std::string& quantity)
{
    constexpr std::array<std::pair<std::string_view, int>, 3> kSeconds{
        {{"frequency-10s", 10}, {"pst", 600}, {"plt", 7200}}};
    for (const auto& [name, seconds] : kSeconds) {
        if (name == quantity) {
            return seconds * waveform::kSecondInNs;
        }
    }
    const auto kind = measure::findRowKind(quantity);
    if (!kind || !measure::quantityOf(kind->mId).mHasIntervals) {
        return 0;
    }
    switch (kind->mInterval) {
        case measure::Interval::TenMinutes:
            return 600 * waveform::kSecondInNs;
        case measure::Interval::ThreeSeconds:
            return 3 * waveform::kSecondInNs;
        case measure::Interval::Basic:
            break;
    }
    return waveform::kSecondInNs / 5; // 10 periods at 50 Hz, 12 at 60 Hz
}

std::vector<std::string> limitNames()
{
    std::vector<std::string> names;
    names.reserve(measure::quantities().size() + kComputed.size());
    for (const measure::Quantity& quantity : measure::quantities()) {
        names.emplace_back(quantity.mName);
    }
    for (const auto& [name, unit] : kComputed) {
        names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> measuredNames()
{
    return namesWithOrders();
}

std::vector<std::string> channelNames()
{
    std::vector<std::string> names;
    names.reserve(static_cast<size_t>(measure::Channel::None));
    for (int i = 0; i < static_cast<int>(measure::Channel::None); ++i) {
        names.emplace_back(measure::nameOf(static_cast<measure::Channel>(i)));
    }
    return names;
}

std::optional<double> unitFactor(std::string_view from, std::string_view to)
{
    if (from == to) {
        return 1.0;
    }
    for (const UnitPair& pair : kUnitPairs) {
        if (pair.mFrom == from && pair.mTo == to) {
            return pair.mFactor;
        }
    }
    for (const auto& [prefix, factor] : kPrefixes) {
        if (from.size() == to.size() + 1 && !to.empty() && to != "%" && from.front() == prefix &&
            from.substr(1) == to) {
            return factor;
        }
    }
    return std::nullopt;
}

} // namespace assess
