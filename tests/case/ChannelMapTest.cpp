#include "importing/ChannelMap.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "base/CaseError.h"
#include "channels/ChannelKind.h"
#include "channels/ChannelPhase.h"

using testing::HasSubstr;

namespace {
waveform::ChannelDescription channel(const char* name, const char* phase, const char* unit,
                                     const char* component = "")
{
    waveform::ChannelDescription result;
    result.mName = name;
    result.mPhase = phase;
    result.mUnit = unit;
    result.mComponent = component;
    return result;
}

waveform::SignalDescription recordingOf(std::vector<waveform::ChannelDescription> channels)
{
    waveform::SignalDescription description;
    description.mFileName = "fault.cfg";
    for (size_t i = 0; i < channels.size(); ++i) {
        channels[i].mNumber = static_cast<int>(i) + 1;
    }
    description.mChannels = std::move(channels);
    return description;
}

/** "UA UB - ..." */
std::string sourcesOf(const importing::ChannelMap& map)
{
    std::string text;
    for (const importing::MappedChannel& mapped : map.mChannels) {
        text += (text.empty() ? "" : " ") + mapped.mText;
    }
    return text;
}

std::string errorOf(const waveform::SignalDescription& description,
                    const importing::MappingOptions& options)
{
    try {
        importing::mapChannels(description, options);
    } catch (const base::CaseError& error) {
        return error.what();
    }
    return "";
}
} // namespace

/** Phase fields and ends of names in real recordings. */
TEST(ChannelMapTest, KnowsPhases)
{
    const std::pair<channels::ChannelPhase, std::vector<const char*>> rows[] = {
        {channels::ChannelPhase::A,
         {"A", "a", "R", "L1", "1", "V1", "IA ", "I_A", "UL1", "VAN", "L1-N", "Bus 1 Ua", "А",
          "VRD"}},
        {channels::ChannelPhase::B,
         {"B", "S", "L2", "2", "IB", "I.B", "V2", "VBG", "BUS B-PHASE", "VY", "Ye", "IYN"}},
        {channels::ChannelPhase::C, {"C", "T", "L3", "3", "IL3", "UC", "VCN", "BU", "I_blue"}},
        {channels::ChannelPhase::Neutral,
         {"N", "4", "3I0", "3U0", "I0", "IN", "U4", "VG", "neutral"}},
        {channels::ChannelPhase::BetweenPhases,
         {"AB", "UCA", "L1-L2", "L12", "V_BC", "RS", "U31", "VRY", "YB", "A - B"}},
        {channels::ChannelPhase::Unknown,
         {"", "VDC_G1", "TRIP", "PHASE ABC", "I12", "DELTA", "LINE", "3RD", "ENERGY", "I_TABU"}},
    };
    for (const auto& [phase, texts] : rows) {
        for (const char* const text : texts) {
            EXPECT_EQ(channels::phaseAtEndOf(text).mPhase, phase) << text;
        }
    }
}

/** By their names, whatever the phase field is, at any position in the name. */
TEST(ChannelMapTest, VoltagesBetweenPhasesAreNotPhaseVoltages)
{
    for (const char* const name : {"VA-VB", "UL1-UL2", "Va-b", "UAB", "VAB BUS 1", "U12", "UL1L2",
                                   "VA/VB", "Vb - Vc", "V_CA", "VR-VY", "U1-U2", "U3-1", "UL31"}) {
        const auto map = importing::mapChannels(
            recordingOf({channel(name, "A", "kV"), channel("IA", "A", "A")}), {});
        EXPECT_EQ(sourcesOf(map), "- - - - IA - - -") << name;
        EXPECT_THAT(map.mRemarks, testing::Contains(fmt::format(
                                      "channel 0 (voltage A) is 0; not used for it: {} (between "
                                      "phases); see --channels",
                                      name)));
    }
    for (const char* const name : {"VA", "VA-N", "UL1-E", "A-VA", "VA BUS B", "LINE A VA", "U1"}) {
        EXPECT_EQ(sourcesOf(importing::mapChannels(recordingOf({channel(name, "A", "kV")}), {})),
                  std::string(name) + " - - - - - - -");
    }
    const auto difference = importing::mapChannels(
        recordingOf({channel("IA-IB", "", "A"), channel("IC", "", "A")}), {});
    EXPECT_EQ(sourcesOf(difference), "- - - - - - IC -");
}

TEST(ChannelMapTest, KnowsUnits)
{
    const std::tuple<const char*, channels::Quantity, double> rows[] = {
        {"kV", channels::Quantity::Voltage, 1e3},  {"KV", channels::Quantity::Voltage, 1e3},
        {"volt", channels::Quantity::Voltage, 1},  {" mV ", channels::Quantity::Voltage, 1e-3},
        {"кВ", channels::Quantity::Voltage, 1e3},  {"A", channels::Quantity::Current, 1},
        {"kA", channels::Quantity::Current, 1e3},  {"ampere", channels::Quantity::Current, 1},
        {"µA", channels::Quantity::Current, 1e-6}, {"VA", channels::Quantity::Unknown, 1},
        {"Hz", channels::Quantity::Unknown, 1},    {"", channels::Quantity::Unknown, 1},
    };
    for (const auto& [text, quantity, factor] : rows) {
        EXPECT_EQ(channels::unitOf(text).mQuantity, quantity) << text;
        EXPECT_TRUE(quantity == channels::Quantity::Unknown ||
                    channels::unitOf(text).mFactor == factor)
            << text;
    }
}

/** The first complete set of each quantity; the neutral of another object is not used. */
TEST(ChannelMapTest, TakesTheFirstCompleteSet)
{
    const std::pair<std::vector<waveform::ChannelDescription>, const char*> rows[] = {
        {{channel("I1", "I1", "A"), channel("I4", "I4", "A"), channel("U1", "V1", "volt"),
          channel("U2", "V2", "volt"), channel("U3", "V3", "volt")},
         "U1 U2 U3 - I1 - - I4"},
        {{channel("IN_T", "N", "A", "T"), channel("IA_G", "A", "A", "G1"),
          channel("IB_G", "B", "A", "G1"), channel("IC_G", "C", "A", "G1"),
          channel("VDC", "", "V", "G1")},
         "- - - - IA_G IB_G IC_G -"},
        {{channel("X Ua", "", "kV"), channel("Y Ua", "", "kV"), channel("X Ub", "", "kV"),
          channel("Y Ub", "", "kV"), channel("Y Uc", "", "kV"), channel("3U0", "", "kV")},
         "Y Ua Y Ub Y Uc 3U0 - - - -"},
        {{channel("Uab", "", "V"), channel("IL1", "", ""), channel("IL2", "", ""),
          channel("IL1", "", ""), channel("IL2", "", ""), channel("IL3", "", "")},
         "- - - - IL1 IL2 IL3 -"},
        {{channel("UA", "A", "V", "PT_A"), channel("UB", "B", "V", "PT_B"),
          channel("UC", "C", "V", "PT_C"), channel("01-IA", "", "A"), channel("02-IB", "", "A"),
          channel("03-IC", "", "A")},
         "UA UB UC - 01-IA 02-IB 03-IC -"},
        {{channel("VA BUS 1", "A", "V"), channel("VB BUS 1", "B", "V"),
          channel("VC BUS 1", "C", "V"), channel("IA_1", "A", "A"), channel("IB_1", "B", "A"),
          channel("IC_1", "C", "A"), channel("IA_2", "A", "A"), channel("IB_2", "B", "A")},
         "VA BUS 1 VB BUS 1 VC BUS 1 - IA_1 IB_1 IC_1 -"},
        {{channel("U-L1", "", "V"), channel("U L2", "", "V"), channel("UL3", "", "V")},
         "U-L1 U L2 UL3 - - - - -"},
        {{channel("VR", "", "V"), channel("VY", "", "V"), channel("VB", "", "V"),
          channel("IA", "", "A"), channel("IB", "", "A"), channel("IC", "", "A")},
         "VR VY VB - IA IB IC -"},
        {{channel("Bus", "R", "kV"), channel("Bus", "Y", "kV"), channel("Bus", "B", "kV"),
          channel("IRD", "", "A"), channel("IYE", "", "A"), channel("IBU", "", "A")},
         "Bus Bus Bus - IRD IYE IBU -"},
        {{channel("01-IB", "", "A"), channel("02-IR", "", "A"), channel("03-IY", "", "A")},
         "- - - - 02-IR 03-IY 01-IB -"},
        {{channel("IR", "", "A"), channel("IS", "", "A"), channel("IB", "", "A")},
         "- - - - IR IS - -"},
    };
    for (const auto& [channels, sources] : rows) {
        EXPECT_EQ(sourcesOf(importing::mapChannels(recordingOf(channels), {})), sources);
    }
    EXPECT_THAT(importing::mapChannels(recordingOf(rows[4].first), {}).mRemarks,
                testing::Contains(HasSubstr("UA, UB, UC are treated as one object, although")));
    EXPECT_THAT(importing::mapChannels(recordingOf(rows[1].first), {}).mRemarks,
                testing::Contains("channel 7 (neutral current) is 0; not used for it: IN_T (of "
                                  "another set); see --channels"));
    const importing::ChannelMap map = importing::mapChannels(recordingOf(rows[0].first), {});
    EXPECT_THAT(map.mRemarks,
                testing::ElementsAre("channel 3 (neutral voltage) is 0: the recording has none",
                                     "channel 5 (current B) is 0: the recording has none",
                                     "channel 6 (current C) is 0: the recording has none"));
}

/** Unless the user decides about either, or names tell no object. */
TEST(ChannelMapTest, VoltagesAndCurrentsOfDifferentObjectsAreNamed)
{
    const auto remark = [](const std::string& voltages, const std::string& currents) {
        return "the voltages are of " + voltages + ", the currents of " + currents +
               ": treated as one object; see --channels";
    };
    const std::tuple<std::vector<waveform::ChannelDescription>, const char*, std::string> rows[] = {
        {{channel("UA", "A", "V", "BUS 1"), channel("IA", "A", "A", "LINE 2")},
         "7=0",
         remark("BUS 1", "LINE 2")},
        {{channel("UA", "A", "V", "BUS 1"), channel("IA", "A", "A", "BUS 1")}, "7=0", ""},
        {{channel("Bus_UL1", "", "V"), channel("Line IL1", "", "A")}, "7=0", remark("BUS", "LINE")},
        {{channel("Bus UL1", "", "V"), channel("Bus-IL1", "", "A")}, "7=0", ""},
        {{channel("1-UA", "", "V"), channel("2-IA", "", "A")}, "7=0", ""},
        {{channel("UA", "A", "V", "BUS 1"), channel("IA", "A", "A", "LINE 2")}, "4=IA", ""},
    };
    for (const auto& [channels, assigned, expected] : rows) {
        importing::MappingOptions options;
        ASSERT_EQ(importing::readAssignments(assigned, options.mAssignments), "");
        const auto remarks = importing::mapChannels(recordingOf(channels), options).mRemarks;
        EXPECT_THAT(remarks, expected.empty()
                                 ? testing::Not(testing::Contains(HasSubstr("one object")))
                                 : testing::Matcher<const std::vector<std::string>&>(
                                       testing::Contains(expected)));
    }
}

/** Candidates that were not used, with the reason. */
TEST(ChannelMapTest, CandidatesAreNamed)
{
    const waveform::SignalDescription unclear =
        recordingOf({channel("IA1", "", "A"), channel("IB1", "", "A"), channel("IN", "", "A"),
                     channel("UEN", "", "V"), channel("IEE", "", "mA"), channel("UA", "", "Vrms"),
                     channel("PA", "", "VA"), channel("T", "", "%"), channel("UC", "", "V")});
    EXPECT_THAT(
        importing::mapChannels(unclear, {}).mRemarks,
        testing::ElementsAre(
            "channel 0 (voltage A) is 0; not used for it: UEN (phase not known), UA (unit Vrms); "
            "see --channels",
            "channel 1 (voltage B) is 0; not used for it: UEN (phase not known); see --channels",
            "channel 3 (neutral voltage) is 0; not used for it: UEN (phase not known); see "
            "--channels",
            "channel 4 (current A) is 0; not used for it: IA1, IB1, IEE (phase not known); see "
            "--channels",
            "channel 5 (current B) is 0; not used for it: IA1, IB1, IEE (phase not known); see "
            "--channels",
            "channel 6 (current C) is 0; not used for it: IA1, IB1, IEE (phase not known); see "
            "--channels"));
}

/** The choice between two channels of one phase is reported, unless the user decided. */
TEST(ChannelMapTest, SkippedChannelsAreNamed)
{
    const std::tuple<std::vector<waveform::ChannelDescription>, const char*, std::string> rows[] = {
        {{channel("UA", "A", "V"), channel("UB", "A", "V"), channel("UC", "A", "V")},
         "3=0,4=0,5=0,6=0,7=0",
         "channel 1 (voltage B) is 0; not used for it: UB (phase A by its field); see --channels|"
         "channel 2 (voltage C) is 0; not used for it: UC (phase A by its field); see "
         "--channels|"},
        {{channel("VA", "", "V"), channel("VB", "", "V"), channel("VC", "", "V"),
          channel("VR", "", "V"), channel("VAB", "", "V"), channel("PA", "", "W")},
         "3=0,4=0,5=0,6=0,7=0",
         "not taken: VR (of another set); see --channels|"},
        {{channel("VA", "", "V"), channel("VB", "", "V"), channel("VC", "", "V"),
          channel("VR", "", "V")},
         "0=VA,3=0,4=0,5=0,6=0,7=0",
         ""},
    };
    for (const auto& [channels, assigned, expected] : rows) {
        importing::MappingOptions options;
        ASSERT_EQ(importing::readAssignments(assigned, options.mAssignments), "");
        std::string remarks;
        for (const std::string& remark :
             importing::mapChannels(recordingOf(channels), options).mRemarks) {
            remarks += remark + "|";
        }
        EXPECT_EQ(remarks, expected);
    }
}

TEST(ChannelMapTest, AppliesTheOptionsOfTheUser)
{
    waveform::SignalDescription recording =
        recordingOf({channel("IA", "A", "A"), channel("IB", "B", "mA"), channel("UA", "A", "kV"),
                     channel("UA", "A", "V"), channel("a,b", "", "%")});
    recording.mChannels[2].mSide = 'S';
    recording.mChannels[2].mPrimary = 20'000;
    recording.mChannels[2].mSecondary = 100;
    importing::MappingOptions options;
    options.mCountsPerVolt = 10;
    options.mSide = importing::TransformerSide::Primary;
    ASSERT_EQ(importing::readAssignments("0 = 3 , 1=5*-2,4=IA*0.5+ IB,5=0", options.mAssignments),
              "");
    const importing::ChannelMap map = importing::mapChannels(recording, options);
    EXPECT_EQ(sourcesOf(map), "3 5*-2 - - IA*0.5+ IB 0 - -");
    EXPECT_DOUBLE_EQ(map.mChannels[0].mCounts, 10 * 1000 * 200.0);
    EXPECT_EQ(map.mChannels[1].mTerms[0].mFactor, -2);
    EXPECT_EQ(map.mChannels[4].mCounts, 1000);
    EXPECT_EQ(map.mChannels[4].mTerms[0].mFactor, 0.5);
    EXPECT_DOUBLE_EQ(map.mChannels[4].mTerms[1].mFactor, 1e-3); // mA in A
    EXPECT_TRUE(map.mChannels[5].mTerms.empty());

    const std::pair<const char*, const char*> errors[] = {
        {"0=UX", "fault.cfg: no channel 'UX'\nThere is:\n  1 IA, phase A, unit A\n"},
        {"0=9", "no channel '9'"},
        {"0=UA", "several channels 'UA': expected a number"},
        {"0=IA+3", "'IA+3' adds volts and amperes"},
        {"0=0,4=0,5=0", "no channel is known by unit and phase"},
        {"0=0,1=0,2=0,3=0,4=0,5=0,6=0,7=0", "--channels makes all channels 0"}};
    for (const auto& [text, message] : errors) {
        options.mAssignments = {};
        ASSERT_EQ(importing::readAssignments(text, options.mAssignments), "");
        EXPECT_THAT(errorOf(recording, options), HasSubstr(message));
    }
    for (const char* const text : {"", "8=IA", "0", "0=IA,0=IB", "0=", "0=IA+", "0=IA*x", "0=1*2*3",
                                   "0=IA,", "x=IA", "0=IA*nan"}) {
        importing::Assignments assignments;
        EXPECT_THAT(importing::readAssignments(text, assignments), HasSubstr("expected")) << text;
    }
}

/** Values of the requested side; an unknown ratio is reported and changes nothing. */
TEST(ChannelMapTest, ValuesAreOfTheRequestedSide)
{
    using Side = importing::TransformerSide;
    const struct
    {
        char mRecorded;
        double mPrimary;
        double mSecondary;
        Side mWanted;
        double mFactor;
        bool mIsRemarked;
    } rows[] = {
        {'P', 20'000, 100, Side::Secondary, 1.0 / 200.0, false},
        {'S', 20'000, 100, Side::Primary, 200.0, false},
        {'P', 20'000, 100, Side::Primary, 1.0, false},
        {'S', 20'000, 100, Side::Secondary, 1.0, false},
        {'S', 20'000, 100, Side::AsRecorded, 1.0, false},
        {' ', 20'000, 100, Side::Primary, 1.0, true},
        {'S', 0, 100, Side::Primary, 1.0, true},
        {'P', 20'000, 0, Side::Secondary, 1.0, true},
    };
    for (const auto& row : rows) {
        waveform::SignalDescription recording =
            recordingOf({channel("UA", "A", "kV"), channel("UB", "B", "V"), channel("UC", "C", "V"),
                         channel("IA", "A", "A"), channel("IB", "B", "A"), channel("IC", "C", "A"),
                         channel("UN", "N", "V"), channel("IN", "N", "A")});
        for (waveform::ChannelDescription& each : recording.mChannels) {
            each.mSide = row.mWanted == Side::Primary ? 'P' : 'S';
        }
        recording.mChannels[0].mSide = row.mRecorded;
        recording.mChannels[0].mPrimary = row.mPrimary;
        recording.mChannels[0].mSecondary = row.mSecondary;
        importing::MappingOptions options;
        options.mCountsPerVolt = 10;
        options.mSide = row.mWanted;
        const importing::ChannelMap map = importing::mapChannels(recording, options);
        EXPECT_DOUBLE_EQ(map.mChannels[0].mCounts, 10 * 1000 * row.mFactor) << row.mRecorded;
        EXPECT_EQ(
            !map.mRemarks.empty() && map.mRemarks[0] ==
                                         "channel 'UA' is left as recorded: the recording does not "
                                         "tell its side or its ratio",
            row.mIsRemarked)
            << row.mRecorded;
    }
}
