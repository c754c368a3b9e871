#include "channels/ChannelPhase.h"

#include <QRegularExpression>
#include <QString>
#include <map>
#include <set>
#include <tuple>

#include "channels/ChannelKind.h"

namespace channels {

namespace {
using Phase = ChannelPhase;

/** The text in capitals, with Cyrillic letters for phases replaced by the Latin look-alikes. */
QString capitalsOf(std::string_view text)
{
    QString capitals =
        QString::fromUtf8(text.data(), static_cast<int>(text.size())).trimmed().toUpper();
    capitals.replace(QChar(0x0410), 'A').replace(QChar(0x0412), 'B').replace(QChar(0x0421), 'C');
    return capitals;
}

struct Ending
{
    QRegularExpression mPattern; ///< for a text in capitals; the first group is the phase
    Phase mPhase;
};

/**
 * A letter must be at the beginning, after a quantity, or after a non-letter; a digit after
 * something that is neither letter nor digit. A word, which may also end another word, must follow
 * a quantity that stands alone, or something that is neither letter nor digit.
 */
Ending phaseEnding(const QString& letters, const QString& digit, const QString& words, Phase phase)
{
    const QString pattern =
        "(?|(?:^|[^A-Z]|[UVIE])([%1])|(?:^|[^A-Z0-9]|[UVIEL])(%2)|"
        "(?:^|[^A-Z0-9]|(?:^|[^A-Z])[UVIE])(%3))"
        "(?:-?[NGE])?(?:[-_ ]?PH(?:ASE)?)?$";
    return {QRegularExpression(pattern.arg(letters, digit, words)), phase};
}

/** Two different phases of one system in a row. */
constexpr char kPairs[] = "AB|BC|CA|BA|CB|AC|RS|ST|TR|SR|TS|RT|RY|YB|BR|YR|BY|RB";
constexpr char kSeparatedPairs[] =
    "([ABC]) ?[-/] ?(?!\\g{-1})[ABC]|([RST]) ?[-/] ?(?!\\g{-1})[RST]|"
    "([RYB]) ?[-/] ?(?!\\g{-1})[RYB]";

const std::vector<Ending>& endings()
{
    static const QString kBetween =
        QString(
            "(?:^|[^A-Z]|[UVIE])(?:%1|%2)$|L[123][-/ ]?L?[123]$|^[123][-/ ]?[123]$|"
            "[UV][123]{2}$")
            .arg(kPairs, kSeparatedPairs);
    static const std::vector<Ending> kEndings = {
        {QRegularExpression(kBetween), Phase::BetweenPhases},
        phaseEnding("AR", "1", "RD|RED", Phase::A),
        phaseEnding("BS", "2", "Y|YE|YEL|YELLOW", Phase::B),
        phaseEnding("CT", "3", "BU|BLU|BLUE", Phase::C),
        {QRegularExpression("(?|(3?[IUVE]0|NEUTRAL|RES)$|(?:^|[^A-Z0-9]|[UVIL])([NGE4])$|^(0)$)"),
         Phase::Neutral},
    };
    return kEndings;
}

/** A difference of two phases anywhere in the name: "VA-VB", "UL1-UL2", "IA-IB". */
bool isDifference(const QString& capitals)
{
    static const QRegularExpression kPattern(
        "(?<![A-Z0-9])[UVI]_?(?|L?([123]) ?[-/]? ?[UVI]_?L?(?!\\1)[123]|"
        "([ABCRSTY]) ?[-/]? ?[UVI]_?(?!\\1)[ABCRSTY])(?![A-Z0-9])");
    return kPattern.match(capitals).hasMatch();
}

/** A voltage between two phases anywhere in the name: "VAB", "Va-b", "UL1-L2", "U12". */
bool isVoltageBetween(const QString& capitals)
{
    static const QRegularExpression kPattern(
        QString("(?<![A-Z0-9])[UV][_ ]?(?:%1|%2|L[123] ?[-/]? ?L?[123]|[123] ?[-/]? ?[123])"
                "(?![A-Z0-9])")
            .arg(kPairs, kSeparatedPairs));
    return kPattern.match(capitals).hasMatch();
}

/** The phase of a channel, without regard to the other channels. */
PhaseEnding endingOf(const waveform::ChannelDescription& channel)
{
    const QString name = capitalsOf(channel.mName);
    const bool isVoltage = likelyQuantityOf(channel) == Quantity::Voltage;
    if (isDifference(name) || (isVoltage && isVoltageBetween(name))) {
        return {Phase::BetweenPhases, name.toStdString(), ""};
    }
    const PhaseEnding byField = phaseAtEndOf(channel.mPhase);
    return byField.mPhase != Phase::Unknown ? byField : phaseAtEndOf(channel.mName);
}

/** Which naming systems of phases some channels use. */
struct Labels
{
    bool mHasRedOrYellow = false;
    bool mHasOthers = false; ///< labels of another system: A, C, S, T

    void add(const std::string& label)
    {
        static const std::set<std::string> kRedOrYellow = {"R",  "RD",  "RED",   "Y",
                                                           "YE", "YEL", "YELLOW"};
        static const std::set<std::string> kOthers = {"A", "C", "S", "T"};
        mHasRedOrYellow = mHasRedOrYellow || kRedOrYellow.count(label) > 0;
        mHasOthers = mHasOthers || kOthers.count(label) > 0;
    }
};

/**
 * Decides if "B" is phase B or blue: by the channel's set, else by all of its quantity, else by
 * all.
 */
class BlueFinder
{
public:
    void add(const waveform::ChannelDescription& channel, const std::string& stem,
             const std::string& label)
    {
        mBySet[setOf(channel, stem)].add(label);
        mByQuantity[unitOf(channel).mQuantity].add(label);
        mAll.add(label);
    }

    bool isBlue(const waveform::ChannelDescription& channel, const std::string& stem) const
    {
        for (const Labels& labels :
             {mBySet.at(setOf(channel, stem)), mByQuantity.at(unitOf(channel).mQuantity), mAll}) {
            if (labels.mHasOthers || labels.mHasRedOrYellow) {
                return !labels.mHasOthers;
            }
        }
        return false;
    }

private:
    using Set = std::tuple<Quantity, std::string, std::string>;

    static Set setOf(const waveform::ChannelDescription& channel, const std::string& stem)
    {
        return {unitOf(channel).mQuantity, channel.mComponent, stem};
    }

    std::map<Set, Labels> mBySet;
    std::map<Quantity, Labels> mByQuantity;
    Labels mAll;
};
} // namespace

PhaseEnding phaseAtEndOf(std::string_view text)
{
    const QString capitals = capitalsOf(text);
    for (const auto& [pattern, phase] : endings()) {
        const QRegularExpressionMatch match = pattern.match(capitals);
        if (match.hasMatch()) {
            return {phase, capitals.left(match.capturedStart(1)).toStdString(),
                    match.captured(1).toStdString()};
        }
    }
    return {Phase::Unknown, capitals.toStdString(), ""};
}

ChannelPhase phaseOf(const waveform::ChannelDescription& channel)
{
    return endingOf(channel).mPhase;
}

std::vector<PhaseInSet> phasesOf(const std::vector<waveform::ChannelDescription>& channels)
{
    std::vector<PhaseInSet> phases;
    std::vector<std::string> labels;
    BlueFinder finder;
    for (const waveform::ChannelDescription& channel : channels) {
        const PhaseEnding ending = endingOf(channel);
        const PhaseEnding ofName = phaseAtEndOf(channel.mName);
        // If the phase field contradicts the end of the name, that end is not a phase.
        const bool isSame = ending.mPhase < Phase::Neutral && ofName.mPhase == ending.mPhase;
        phases.push_back({ending.mPhase, isSame ? ofName.mStem : ""});
        labels.push_back(ending.mLabel);
        finder.add(channel, phases.back().mStem, ending.mLabel);
    }
    for (size_t i = 0; i < channels.size(); ++i) {
        if (labels[i] == "B" && finder.isBlue(channels[i], phases[i].mStem)) {
            phases[i].mPhase = Phase::C;
        }
    }
    return phases;
}

} // namespace channels
