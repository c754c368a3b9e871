#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>

#include "assess/TablePicture.h"
#include "base/CaseError.h"
#include "base/Numbers.h"
#include "base/ResultFile.h"
#include "base/Text.h"
#include "commands/CommandFiles.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/EncodingOption.h"
#include "commands/PictureFile.h"
#include "measure/UtcText.h"
#include "plot/Gnuplot.h"
#include "plot/GnuplotScript.h"
#include "plot/PictureMaker.h"

namespace commands {

namespace {
constexpr char kPlotFooter[] =
    R"(INPUT is a value file, a recording of the driver, a COMTRADE recording or a text file
with a heading, or a table of vx-case measure. A second signal is drawn over the
first, dashed. FILE ends in .svg or .png; without it the picture is drawn on the
terminal.

Examples:
  vx-case plot fault.cfg
  vx-case plot expected.csv --quantity rms -o rms.svg
  vx-case plot recording.bin --events events.jsonl --config vx-simulator.conf -o run.svg)";

// Widths of a terminal, in characters.
constexpr int kUsualColumns = 80;
constexpr int kMinColumns = 40;

struct PlotOptions
{
    plot::PictureRequest mRequest;
    std::string mOutput;   ///< empty for the terminal
    std::string mQuantity; ///< of a table; empty for its first
    std::string mAt;       ///< seconds; for a table also UTC
    bool mIsTable = false;
};

int terminalColumns()
{
    winsize size{};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? std::max<int>(size.ws_col, kMinColumns) : kUsualColumns;
}

/** Text above the panels: what the panels on a terminal cannot show. */
std::string headOf(const plot::Picture& picture)
{
    std::string head = picture.mTitle + "\n" + picture.mCaption + "\n";
    for (const plot::PlayedPart& part : picture.mPlayed) {
        head += fmt::format("{:>10.3f} s  playing {}\n", part.mFrom, part.mText);
    }
    for (const plot::GivenCommand& command : picture.mCommands) {
        head += fmt::format("{:>10.3f} s  {}\n", command.mSeconds, command.mText);
    }
    return head;
}

std::string reasonNotSeconds(const std::string& text)
{
    double seconds = 0.0;
    return base::parseNumber(text, &seconds) && seconds >= 0.0
               ? ""
               : "'" + text + "': expected seconds, 0 or more";
}

std::string reasonNotMoment(const std::string& text)
{
    const std::string reason = reasonNotSeconds(text);
    return reason.empty() || measure::parseUtc(text)
               ? ""
               : reason + "; for a table also UTC, for example 2026-01-01T00:00:00Z";
}

/**
 * Removes the lines of blanks with a form feed with which gnuplot begins each panel. The last line
 * has no line end and may reset the colours; of it only the blanks are removed.
 */
std::string withoutPages(const std::string& text)
{
    std::vector<std::string_view> lines = base::splitText(text, '\n');
    const std::string_view end = lines.back();
    lines.pop_back();
    std::string result;
    for (const std::string_view line : lines) {
        if (line.find('\f') == std::string_view::npos) {
            result += line.substr(0, line.find_last_not_of(' ') + 1);
            result += '\n';
        }
    }
    std::copy_if(end.begin(), end.end(), std::back_inserter(result),
                 [](char c) { return c != ' '; });
    return result;
}

void expectNoConflict(const PlotOptions& options)
{
    const plot::PictureRequest& request = options.mRequest;
    CommandFiles files;
    for (const std::string& input : request.mInputs) {
        files.addSignal("the input", input);
    }
    files.addInput("--events", request.mEvents);
    files.addCases(request.mConfiguration, request.mDirectory);
    files.addOutput("-o", options.mOutput);
    files.expectNoConflict();
}

void expectTableOptions(const CLI::App& command, const PlotOptions& options)
{
    if (options.mRequest.mInputs.size() > 1) {
        throw CLI::ValidationError("INPUT", "a table of measure must be the only input");
    }
    for (const char* const name :
         {"--events", "--config", "--directory", "--from", "--to", "--encoding"}) {
        if (command.count(name) > 0) {
            throw CLI::ValidationError(name, "does not apply to a table of measure");
        }
    }
    if (!options.mAt.empty() && !assess::isShownAtMoment(options.mQuantity)) {
        throw CLI::ValidationError("--at",
                                   "for a table, expected --quantity harmonics or phasors, too");
    }
    // Characters are taller than wide, so angles would look wrong.
    if (options.mOutput.empty() && options.mQuantity == assess::kPhasors) {
        throw CLI::ValidationError("--quantity", "phasors need a picture: expected -o FILE");
    }
}

/** Finds out if the input is a table, and checks the options that depend on it. */
void findTable(const CLI::App& command, PlotOptions& options)
{
    std::vector<std::string>& inputs = options.mRequest.mInputs;
    options.mIsTable = std::any_of(inputs.begin(), inputs.end(), assess::isMeasuredTable);
    if (options.mIsTable) {
        expectTableOptions(command, options);
        return;
    }
    if (!options.mQuantity.empty()) {
        throw CLI::ValidationError("--quantity",
                                   "'" + inputs.front() + "' is not a table of measure");
    }
    if (!options.mAt.empty()) {
        const std::string reason = reasonNotSeconds(options.mAt);
        if (!reason.empty()) {
            throw CLI::ValidationError("--at", reason);
        }
        base::parseNumber(options.mAt, &options.mRequest.mMoments.mAt.emplace());
    }
}

plot::Picture readPicture(const PlotOptions& options)
{
    const plot::PictureRequest& request = options.mRequest;
    if (options.mIsTable) {
        return assess::pictureOfTable({request.mInputs.front(), options.mQuantity, options.mAt});
    }
    base::ProgressLine progress("reading");
    plot::Picture picture = plot::makePicture(request, progress);
    for (const std::string& remark : picture.mRemarks) {
        fmt::print(stderr, "remark: {}\n", remark);
    }
    return picture;
}

void plotIntoFile(const PlotOptions& options)
{
    const plot::PictureFormat format = pictureFormatOf("-o", options.mOutput);
    expectNoConflict(options);
    base::ResultFile result(options.mOutput);
    expectDrawable(format);
    result.write(drawn(readPicture(options), format));
    result.commit();
}

void plotOnTerminal(PlotOptions options)
{
    const int columns = terminalColumns();
    options.mRequest.mMoments.mMax = 1;
    options.mRequest.mColumns = static_cast<size_t>(columns);
    base::ResultFile result("");
    const plot::Picture picture = readPicture(options);
    const std::string script = plot::gnuplotScript(plot::layOutOnTerminal(picture, columns),
                                                   columns, isatty(STDOUT_FILENO) != 0);
    result.write(headOf(picture) + withoutPages(plot::runGnuplot(script)));
    result.commit();
}

/** Options for the part of the time that is shown. */
void addMomentOptions(CLI::App& command, PlotOptions& options)
{
    plot::MomentRequest& moments = options.mRequest.mMoments;
    command
        .add_option("--quantity", options.mQuantity,
                    "Quantity of a table over time, or harmonics or phasors at one time (default: "
                    "that of the first row)")
        ->type_name("NAME")
        ->check(assess::reasonNotDrawn);
    CLI::Option* const at =
        command
            .add_option("--at", options.mAt,
                        "Waveforms around this time; for a table: time of the harmonics or phasors")
            ->type_name("SECONDS|UTC")
            ->check(reasonNotMoment);
    command.add_option("--from", moments.mFrom, "Waveforms from this time on")
        ->type_name("SECONDS")
        ->check(reasonNotSeconds)
        ->excludes(at);
    command.add_option("--to", moments.mTo, "Waveforms up to this time")
        ->type_name("SECONDS")
        ->check(reasonNotSeconds)
        ->excludes(at);
}
} // namespace

void addPlotCommand(CLI::App& app)
{
    CLI::App& command = *app.add_subcommand("plot",
                                            "Draws a signal: rms and frequency, and the "
                                            "waveforms where it changes");
    command.footer(kPlotFooter);
    const auto options = std::make_shared<PlotOptions>();
    plot::PictureRequest& request = options->mRequest;
    command.add_option("INPUT", request.mInputs, "Signal to draw; a second one is drawn over it")
        ->required()
        ->type_name("")
        ->expected(1, 2);
    command
        .add_option("-o", options->mOutput,
                    "Picture to write, .svg or .png (default: the terminal)")
        ->type_name("FILE");
    command.add_option("--events", request.mEvents, "Events of vx-sandbox: shows the commands")
        ->type_name("FILE");
    command
        .add_option("--config", request.mConfiguration,
                    "Case configuration that was played; shows what was played when")
        ->type_name("FILE");
    addDirectoryOption(command, request.mDirectory);
    addMomentOptions(command, *options);
    addEncodingOption(command, &request.mInputOptions.mEncoding);
    command.callback([options, &command] {
        findTable(command, *options);
        options->mOutput.empty() ? plotOnTerminal(*options) : plotIntoFile(*options);
    });
}

} // namespace commands
