#include "importing/ChannelMap.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "base/CaseError.h"
#include "base/Numbers.h"
#include "channels/ChannelGuess.h"

namespace importing {

namespace {
using channels::Quantity;
using Channels = std::vector<waveform::ChannelDescription>;
constexpr size_t kFirstCurrent = kChannelCount / 2;

std::string listOf(const Channels& channels)
{
    std::string list = channels.empty() ? "\nThere is none." : "\nThere is:";
    for (const waveform::ChannelDescription& channel : channels) {
        list += fmt::format("\n  {} {}", channel.mNumber, channel.mName);
        list += channel.mPhase.empty() ? "" : ", phase " + channel.mPhase;
        list += channel.mUnit.empty() ? ", no unit" : ", unit " + channel.mUnit;
    }
    return list;
}

/** Finds one by its number, if the text is digits, else by its name. */
size_t findChannel(const waveform::SignalDescription& description, const std::string& text)
{
    const Channels& channels = description.mChannels;
    const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos;
    const auto isMeant = [&](const waveform::ChannelDescription& channel) {
        return (isNumber ? std::to_string(channel.mNumber) : base::trimmed(channel.mName)) == text;
    };
    const auto found = std::find_if(channels.begin(), channels.end(), isMeant);
    if (found == channels.end()) {
        throw base::CaseError(
            fmt::format("{}: no channel '{}'{}", description.mFileName, text, listOf(channels)));
    }
    if (std::find_if(found + 1, channels.end(), isMeant) != channels.end()) {
        throw base::CaseError(fmt::format("{}: several channels '{}': expected a number{}",
                                          description.mFileName, text, listOf(channels)));
    }
    return static_cast<size_t>(found - channels.begin());
}

/** Builds the map; a class only to share what all steps need. */
class Mapper
{
public:
    Mapper(const waveform::SignalDescription& description, const MappingOptions& options)
        : mDescription(description),
          mOptions(options),
          mGuessed(channels::guessChannels(description.mChannels))
    {
    }

    ChannelMap map();

private:
    std::optional<size_t> guessed(size_t place) const;
    void assign(size_t place, const Assignment& assignment);
    void add(size_t place, size_t source, double factor);
    double sideFactor(const waveform::ChannelDescription& channel);
    [[noreturn]] void refuseNothing() const;
    void remarkMixed(size_t first);
    bool isUsed(size_t source) const;
    std::string leftOutFor(size_t place) const;
    void remarkMissing();

    const waveform::SignalDescription& mDescription;
    const MappingOptions& mOptions;
    const channels::GuessedSets mGuessed;
    ChannelMap mMap;
};

ChannelMap Mapper::map()
{
    bool hasAny = false;
    for (size_t place = 0; place < kChannelCount; ++place) {
        const auto& assignment = mOptions.mAssignments[place];
        if (assignment) {
            assign(place, *assignment);
        } else if (const auto source = guessed(place)) {
            mMap.mChannels[place].mText = base::trimmed(mDescription.mChannels[*source].mName);
            add(place, *source, 1.0);
        }
        hasAny = hasAny || !mMap.mChannels[place].mTerms.empty();
    }
    if (!hasAny) {
        refuseNothing();
    }
    remarkMixed(0);
    remarkMixed(kFirstCurrent);
    remarkMissing();
    return mMap;
}

/** What is not asked for. */
std::optional<size_t> Mapper::guessed(size_t place) const
{
    return mOptions.mAssignments[place]
               ? std::nullopt
               : mGuessed[place / kFirstCurrent].mSources[place % kFirstCurrent];
}

void Mapper::refuseNothing() const
{
    const auto& assignments = mOptions.mAssignments;
    if (std::all_of(assignments.begin(), assignments.end(),
                    [](const auto& assignment) { return assignment.has_value(); })) {
        throw base::CaseError(
            mDescription.mFileName +
            ": --channels makes all channels 0; expected a source for one at least");
    }
    // A remark may say why, as on the encoding of names.
    throw base::CaseError(
        fmt::format("{}: no channel is known by unit and phase as a voltage or "
                    "current; expected --channels{}{}{}",
                    mDescription.mFileName, listOf(mDescription.mChannels),
                    mDescription.mRemarks.empty() ? "" : "\nremark: ",
                    fmt::join(mDescription.mRemarks, "\nremark: ")));
}

void Mapper::remarkMixed(size_t first)
{
    std::vector<std::string> names;
    for (size_t place = first; place < first + kFirstCurrent; ++place) {
        if (guessed(place)) {
            names.push_back(mMap.mChannels[place].mText);
        }
    }
    if (mGuessed[first / kFirstCurrent].mIsMixed && names.size() > 1) {
        mMap.mRemarks.push_back(
            fmt::format("{} are taken for one object, although their names or components differ",
                        fmt::join(names, ", ")));
    }
}

void Mapper::assign(size_t place, const Assignment& assignment)
{
    mMap.mChannels[place].mText = assignment.mText;
    for (const AssignedTerm& term : assignment.mTerms) {
        add(place, findChannel(mDescription, term.mSource), term.mFactor);
    }
}

/** The first term decides about the unit; what is neither V nor A is what its place is for. */
void Mapper::add(size_t place, size_t source, double factor)
{
    const waveform::ChannelDescription& channel = mDescription.mChannels[source];
    MappedChannel& mapped = mMap.mChannels[place];
    channels::ChannelUnit unit = channels::unitOf(channel);
    if (unit.mQuantity == Quantity::Unknown) {
        unit.mQuantity = place < kFirstCurrent ? Quantity::Voltage : Quantity::Current;
    }
    const double perCount =
        unit.mQuantity == Quantity::Voltage ? mOptions.mCountsPerVolt : mOptions.mCountsPerAmpere;
    const double counts = unit.mFactor * sideFactor(channel) * perCount;
    if (mapped.mTerms.empty()) {
        mapped.mUnit = channel.mUnit;
        mapped.mCounts = counts;
        mapped.mQuantity = unit.mQuantity;
    } else if (mapped.mQuantity != unit.mQuantity) {
        throw base::CaseError(fmt::format("{}: channel {}: '{}' adds volts and amperes",
                                          mDescription.mFileName, place, mapped.mText));
    }
    mapped.mTerms.push_back({source, factor * counts / mapped.mCounts});
}

double Mapper::sideFactor(const waveform::ChannelDescription& channel)
{
    const char wanted = mOptions.mSide == TransformerSide::Primary ? 'P' : 'S';
    if (mOptions.mSide == TransformerSide::AsRecorded || channel.mSide == wanted) {
        return 1.0;
    }
    if (channel.mSide == ' ' || channel.mPrimary <= 0.0 || channel.mSecondary <= 0.0) {
        mMap.mRemarks.push_back(
            fmt::format("channel '{}' is left as recorded: the recording does "
                        "not tell its side or its ratio",
                        channel.mName));
        return 1.0;
    }
    const double ratio = channel.mPrimary / channel.mSecondary;
    return wanted == 'P' ? ratio : 1.0 / ratio;
}

bool Mapper::isUsed(size_t source) const
{
    return std::any_of(mMap.mChannels.begin(), mMap.mChannels.end(), [source](const auto& mapped) {
        return std::any_of(mapped.mTerms.begin(), mapped.mTerms.end(),
                           [source](const auto& term) { return term.mSource == source; });
    });
}

/** The names of channels that might have been meant: not every one tells its phase. */
std::string Mapper::leftOutFor(size_t place) const
{
    const auto wanted = static_cast<channels::ChannelPhase>(place % kFirstCurrent);
    const Quantity quantity = place < kFirstCurrent ? Quantity::Voltage : Quantity::Current;
    std::vector<std::string_view> names;
    for (size_t source = 0; source < mDescription.mChannels.size(); ++source) {
        const waveform::ChannelDescription& channel = mDescription.mChannels[source];
        const channels::ChannelPhase phase = channels::phaseOf(channel);
        const bool fits = wanted == channels::ChannelPhase::Neutral
                              ? phase == channels::ChannelPhase::Neutral
                              : phase < channels::ChannelPhase::Neutral ||
                                    phase == channels::ChannelPhase::Unknown;
        if (fits && channels::unitOf(channel).mQuantity == quantity && !isUsed(source)) {
            names.push_back(base::trimmed(channel.mName));
        }
    }
    constexpr size_t kMaxNames = 6;
    const size_t more = names.size() - std::min(names.size(), kMaxNames);
    names.resize(names.size() - more);
    return fmt::format("{}{}", fmt::join(names, ", "),
                       more > 0 ? fmt::format(" and {} more", more) : "");
}

void Mapper::remarkMissing()
{
    static constexpr const char* kPlaces[kChannelCount] = {
        "voltage A", "voltage B", "voltage C", "neutral voltage",
        "current A", "current B", "current C", "neutral current"};
    for (size_t place = 0; place < kChannelCount; ++place) {
        if (!mMap.mChannels[place].mTerms.empty() || mOptions.mAssignments[place]) {
            continue;
        }
        const std::string leftOut = leftOutFor(place);
        mMap.mRemarks.push_back(fmt::format("channel {} ({}) is 0", place, kPlaces[place]) +
                                (leftOut.empty()
                                     ? ": the recording has none"
                                     : "; not taken for it: " + leftOut + "; see --channels"));
    }
}
} // namespace

ChannelMap mapChannels(const waveform::SignalDescription& description,
                       const MappingOptions& options)
{
    return Mapper(description, options).map();
}

} // namespace importing
