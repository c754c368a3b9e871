#include "channels/ChannelKind.h"

#include <algorithm>
#include <cctype>
#include <regex>
#include <utility>
#include <vector>

#include "base/Numbers.h"

namespace channels {

namespace {
using Phase = ChannelPhase;

struct Replacement
{
    const char* mText;
    const char* mBy;
};

template <size_t Count>
std::string replaced(std::string text, const Replacement (&replacements)[Count])
{
    for (const auto& [from, by] : replacements) {
        for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at)) {
            text.replace(at, std::string_view(from).size(), by);
        }
    }
    return text;
}

std::string inCapitals(std::string_view text)
{
    // Cyrillic letters that stand for the phases look like Latin ones.
    static constexpr Replacement kLookAlikes[] = {{"А", "A"}, {"а", "A"}, {"В", "B"},
                                                  {"в", "B"}, {"С", "C"}, {"с", "C"}};
    std::string result = replaced(std::string(text), kLookAlikes);
    std::transform(result.begin(), result.end(), result.begin(), [](unsigned char c) {
        return static_cast<char>(c < 0x80 ? std::toupper(c) : c);
    });
    return result;
}

Quantity quantityOf(const std::string& word)
{
    static const std::regex kVolt("V|VOLTS?");
    static const std::regex kAmpere("A|AMPS?|AMPERES?");
    if (std::regex_match(word, kVolt)) {
        return Quantity::Voltage;
    }
    return std::regex_match(word, kAmpere) ? Quantity::Current : Quantity::Unknown;
}

/** 0 where the letter is no prefix. */
double factorOf(char prefix)
{
    switch (prefix) {
        case 'k':
        case 'K':
            return 1e3;
        case 'M':
            return 1e6;
        case 'm':
            return 1e-3;
        case 'u':
            return 1e-6;
        default:
            return 0.0;
    }
}

struct Ending
{
    std::regex mPattern; ///< of a text in capitals; its group that matches is the phase
    Phase mPhase;
};

/** A phase letter or number follows nothing, a quantity, or no letter (and no digit). */
Ending phaseEnding(const std::string& letters, const std::string& digit, Phase phase)
{
    const std::string neutral = "-?[NGE]?";
    const std::string end = "(?:[-_ ]?PH(?:ASE)?)?$";
    return {std::regex("(?:^|[^A-Z]|[UVIE])([" + letters + "]" + neutral + ")" + end +
                       "|(?:^|[^A-Z0-9]|[UVIEL])(" + digit + neutral + ")" + end),
            phase};
}

const std::vector<Ending>& endings()
{
    static const std::vector<Ending> kEndings = {
        {std::regex("(?:^|[^A-Z]|[UVIE])(AB|BC|CA|BA|CB|AC|RS|ST|TR|SR|TS|RT|[ABC]-[ABC]|"
                    "[RST]-[RST])$|(L[123][-/ ]?L?[123])$|^([123][-/ ]?[123])$|[UV]([123]{2})$"),
         Phase::BetweenPhases},
        phaseEnding("AR", "1", Phase::A),
        phaseEnding("BS", "2", Phase::B),
        phaseEnding("CT", "3", Phase::C),
        {std::regex("(3?[IUVE]0|NEUTRAL|RES)$|(?:^|[^A-Z0-9]|[UVIL])([NGE4])$|^(0)$"),
         Phase::Neutral},
    };
    return kEndings;
}
} // namespace

ChannelUnit unitOf(std::string_view text)
{
    static constexpr Replacement kOtherLetters[] = {{"µ", "u"}, {"μ", "u"}, {"è", "e"}, {"к", "k"},
                                                    {"м", "m"}, {"В", "V"}, {"А", "A"}};
    const std::string unit = replaced(std::string(base::trimmed(text)), kOtherLetters);
    const auto isNoLetter = [](unsigned char c) { return std::isalpha(c) == 0; };
    const std::string word(unit.begin(), std::find_if(unit.begin(), unit.end(), isNoLetter));
    const Quantity quantity = quantityOf(inCapitals(word));
    if (quantity != Quantity::Unknown || word.empty()) {
        return {quantity, 1.0};
    }
    const double factor = factorOf(word.front());
    if (factor == 0.0) {
        return {};
    }
    return {quantityOf(inCapitals(word.substr(1))), factor};
}

ChannelUnit unitOf(const waveform::ChannelDescription& channel)
{
    if (!base::trimmed(channel.mUnit).empty()) {
        return unitOf(channel.mUnit);
    }
    const std::string name = inCapitals(base::trimmed(channel.mName));
    static const std::regex kVoltage("[UV].*");
    static const std::regex kCurrent("3?I.*");
    if (std::regex_match(name, kVoltage)) {
        return {Quantity::Voltage, 1.0};
    }
    return {std::regex_match(name, kCurrent) ? Quantity::Current : Quantity::Unknown, 1.0};
}

PhaseEnding phaseAtEndOf(std::string_view text)
{
    const std::string capitals = inCapitals(base::trimmed(text));
    std::smatch match;
    for (const auto& [pattern, phase] : endings()) {
        if (!std::regex_search(capitals, match, pattern)) {
            continue;
        }
        const auto group = std::find_if(std::next(match.begin()), match.end(),
                                        [](const auto& sub) { return sub.matched; });
        return {phase, std::string(capitals.cbegin(), group->first)};
    }
    return {Phase::Unknown, capitals};
}

ChannelPhase phaseOf(const waveform::ChannelDescription& channel)
{
    const ChannelPhase phase = phaseAtEndOf(channel.mPhase).mPhase;
    return phase != Phase::Unknown ? phase : phaseAtEndOf(channel.mName).mPhase;
}

} // namespace channels
