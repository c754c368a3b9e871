#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "base/StandardOutput.h"
#include "base/TextTable.h"
#include "commands/Commands.h"
#include "commands/EncodingOption.h"
#include "input/OpenInput.h"
#include "waveform/Measures.h"

namespace commands {

namespace {
using Json = nlohmann::ordered_json;

constexpr char kInfoFooter[] =
    R"(Reads value files, COMTRADE recordings (.cfg, .dat or .cff), recordings of the
driver and text files with a heading; the format is recognized by the content.
rms gives all samples the same weight; times are seconds from the first sample.

Example:
  vx-case generate --duration 1 -o sine.csv && vx-case info sine.csv)";

/** Max changes of a status channel in the text; JSON has all of them. */
constexpr size_t kShownChanges = 8;

struct InfoOptions
{
    std::string mFile;
    input::InputOptions mInput;
    bool mJson = false;
};

std::string number(double value)
{
    return fmt::format("{:.6g}", value);
}

std::string ratioOf(const waveform::ChannelDescription& channel)
{
    return channel.mPrimary == 0.0 || channel.mPrimary == channel.mSecondary
               ? ""
               : number(channel.mPrimary) + ":" + number(channel.mSecondary);
}

std::string sideOf(const waveform::ChannelDescription& channel)
{
    return channel.mSide == ' ' ? "" : std::string(1, channel.mSide);
}

std::string generalText(const waveform::SignalDescription& signal,
                        const waveform::Measures& measures)
{
    std::string text;
    const auto add = [&text](const char* name, const std::string& value) {
        text += value.empty() ? "" : fmt::format("{:<10}{}\n", name, value);
    };
    add("file", signal.mFileName);
    add("format", signal.mFormat);
    add("station", signal.mStation);
    add("device", signal.mDevice);
    add("start", signal.mStartTime);
    add("trigger", signal.mTriggerTime);
    add("samples", std::to_string(measures.samples()));
    add("duration", fmt::format("{:.9g} s", measures.seconds()));
    for (const waveform::SampleRate& rate : signal.mRates) {
        add("rate", fmt::format("{:.10g} Hz up to sample {}", rate.mHz, rate.mEnd));
    }
    add("nominal", signal.mNominalHz > 0.0 ? number(signal.mNominalHz) + " Hz" : "");
    const waveform::FrequencyMeter::Result measured = measures.frequency();
    add("measured", measured.mHertz > 0.0
                        ? fmt::format("{:.6g} Hz, steady from {:.3f} to {:.3f} s", measured.mHertz,
                                      measured.mFrom, measured.mTo)
                        : "");
    return text;
}

std::string channelText(const waveform::SignalDescription& signal,
                        const waveform::Measures& measures)
{
    base::TextTable table({">channel", "name", "phase", "unit", "side", "ratio", ">rms",
                           ">smallest", ">largest", ">missing"});
    for (size_t i = 0; i < signal.mChannels.size(); ++i) {
        const waveform::ChannelDescription& channel = signal.mChannels[i];
        const waveform::Measures::Channel measured = measures.channel(i);
        table.add({std::to_string(channel.mNumber), channel.mName, channel.mPhase, channel.mUnit,
                   sideOf(channel), ratioOf(channel), number(measured.mRms),
                   number(measured.mSmallest), number(measured.mLargest),
                   channel.mMissing == 0 ? "" : std::to_string(channel.mMissing)});
    }
    return table.text();
}

std::string changesText(const waveform::StatusChannel& status)
{
    std::string text;
    for (size_t i = 0; i < std::min(kShownChanges, status.mChanges.size()); ++i) {
        text += fmt::format("{}{:d} at {:.6f} s", i == 0 ? "" : ", ", status.mChanges[i].mState,
                            status.mChanges[i].mSeconds);
    }
    const size_t shown = std::min(kShownChanges, status.mChanges.size());
    return text + (status.mChangeCount > shown
                       ? fmt::format(" and {} more", status.mChangeCount - shown)
                       : "");
}

/** The changes of the status channels. */
std::string statusText(const waveform::SignalDescription& signal)
{
    base::TextTable table({">status", "name", ">first", "then"});
    size_t changing = 0;
    for (const waveform::StatusChannel& status : signal.mStatusChannels) {
        if (status.mChangeCount > 0) {
            ++changing;
            table.add({std::to_string(status.mNumber), status.mName, status.mFirstState ? "1" : "0",
                       changesText(status)});
        }
    }
    if (signal.mStatusChannels.empty()) {
        return "";
    }
    return "\n" + (changing > 0 ? table.text() : "") +
           fmt::format("{} of {} status channels change\n", changing,
                       signal.mStatusChannels.size());
}

std::string infoText(const waveform::SignalDescription& signal, const waveform::Measures& measures)
{
    std::string text =
        generalText(signal, measures) + "\n" + channelText(signal, measures) + statusText(signal);
    text += signal.mRemarks.empty() ? "" : "\n";
    for (const std::string& remark : signal.mRemarks) {
        text += "remark: " + remark + "\n";
    }
    return text;
}

Json channelJson(const waveform::ChannelDescription& channel,
                 const waveform::Measures::Channel& measured)
{
    return {{"number", channel.mNumber},
            {"name", channel.mName},
            {"phase", channel.mPhase},
            {"unit", channel.mUnit},
            {"side", sideOf(channel)},
            {"primary", channel.mPrimary},
            {"secondary", channel.mSecondary},
            {"skewUs", channel.mSkewMicroseconds},
            {"rms", measured.mRms},
            {"smallest", measured.mSmallest},
            {"largest", measured.mLargest},
            {"missing", channel.mMissing}};
}

Json statusJson(const waveform::StatusChannel& status)
{
    Json changes = Json::array();
    for (const waveform::StatusChannel::Change& change : status.mChanges) {
        changes.push_back({{"seconds", change.mSeconds}, {"state", change.mState ? 1 : 0}});
    }
    return {{"number", status.mNumber},
            {"name", status.mName},
            {"first", status.mFirstState ? 1 : 0},
            {"changeCount", status.mChangeCount},
            {"changes", changes}};
}

std::string infoJson(const waveform::SignalDescription& signal, const waveform::Measures& measures)
{
    const waveform::FrequencyMeter::Result measured = measures.frequency();
    Json info = {{"file", signal.mFileName},        {"format", signal.mFormat},
                 {"station", signal.mStation},      {"device", signal.mDevice},
                 {"start", signal.mStartTime},      {"trigger", signal.mTriggerTime},
                 {"samples", measures.samples()},   {"seconds", measures.seconds()},
                 {"nominalHz", signal.mNominalHz},  {"measuredHz", measured.mHertz},
                 {"measuredFrom", measured.mFrom},  {"measuredTo", measured.mTo},
                 {"rates", Json::array()},          {"channels", Json::array()},
                 {"statusChannels", Json::array()}, {"remarks", signal.mRemarks}};
    for (const waveform::SampleRate& rate : signal.mRates) {
        info["rates"].push_back({{"hz", rate.mHz}, {"lastSample", rate.mEnd}});
    }
    for (size_t i = 0; i < signal.mChannels.size(); ++i) {
        info["channels"].push_back(channelJson(signal.mChannels[i], measures.channel(i)));
    }
    for (const waveform::StatusChannel& status : signal.mStatusChannels) {
        info["statusChannels"].push_back(statusJson(status));
    }
    // Text that is not UTF-8, such as a file name, is shown with replacement characters.
    return info.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void runInfo(const InfoOptions& options)
{
    const auto source = input::openInput(options.mFile, options.mInput);
    waveform::Measures measures(source->description());
    waveform::measure(*source, &measures);
    base::writeToStandardOutput(options.mJson ? infoJson(source->description(), measures)
                                              : infoText(source->description(), measures));
}
} // namespace

void addInfoCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand("info", "Shows what is in a recording or value file");
    command.footer(kInfoFooter);
    const auto options = std::make_shared<InfoOptions>();
    command.add_option("FILE", options->mFile, "The recording or value file")
        ->required()
        ->type_name("");
    command.add_flag("--json", options->mJson, "Prints one JSON object instead of text");
    addEncodingOption(command, &options->mInput.mEncoding);
    command.callback([options] { runInfo(*options); });
}

} // namespace commands
