#include "input/OpenInput.h"

#include <fmt/format.h>

#include <QFileInfo>
#include <optional>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "comtrade/ComtradeConfigParser.h"
#include "comtrade/ComtradeFiles.h"
#include "textfile/TextFileSource.h"
#include "waveform/DriverRecordingSource.h"
#include "waveform/ValueFileSource.h"

namespace input {

namespace {
constexpr size_t kBeginning = size_t{64} << 10U; ///< bytes that identify the kind of file

bool hasSuffix(const std::string& path, const char* suffix)
{
    return QFileInfo(QString::fromStdString(path)).suffix().compare(suffix, Qt::CaseInsensitive) ==
           0;
}

std::string beginningOf(base::InputFile& file)
{
    file.setPart(0, file.size());
    return std::string(file.peek(kBeginning));
}

/** The two files of a COMTRADE recording. */
struct ComtradePair
{
    std::string mConfig;
    std::string mData;
};

/** The pair of a data file that has a configuration beside it. */
std::optional<ComtradePair> pairOfData(const std::string& path)
{
    const std::string config = hasSuffix(path, "dat") ? comtrade::findBeside(path, "cfg") : "";
    return config.empty() ? std::nullopt : std::optional(ComtradePair{config, path});
}

/** The pair of a configuration. Throws if there is no data file beside it. */
ComtradePair pairOfConfig(const std::string& path)
{
    const std::string data = comtrade::findBeside(path, "dat");
    if (data.empty()) {
        throw base::CaseError(path +
                              ": a COMTRADE configuration; expected its data (.dat) beside it");
    }
    return {path, data};
}

std::unique_ptr<waveform::SignalSource> openPair(const std::string& named, const ComtradePair& pair,
                                                 const InputOptions& options)
{
    comtrade::ComtradeParts parts =
        comtrade::openComtradePair(pair.mConfig, pair.mData, options.mEncoding);
    parts.mName = named;
    return std::make_unique<comtrade::ComtradeSource>(std::move(parts));
}

[[noreturn]] void refuse(const std::string& path, const std::string& noValues,
                         const std::string& noDriver, const std::string& noText)
{
    const char* const noComtrade =
        hasSuffix(path, "dat")
            ? "it may be the data of one, but no configuration (.cfg) lies beside it"
            : "its second line does not count channels as \"8,8A,0D\" does";
    throw base::CaseError(
        fmt::format("{}: cannot tell what it is\n"
                    "  not a value file: {}\n"
                    "  not a recording of the driver: {}\n"
                    "  not a COMTRADE recording: {}\n"
                    "  not a text file with a heading: {}",
                    path, noValues, noDriver, noComtrade, noText));
}

std::unique_ptr<waveform::SignalSource> openOther(const std::string& path, base::InputFile& file,
                                                  const InputOptions& options)
{
    const std::string noDriver = waveform::reasonNotDriverRecording(file);
    if (noDriver.empty()) {
        return std::make_unique<waveform::DriverRecordingSource>(path);
    }
    const std::string noValues = waveform::reasonNotValueFile(file);
    if (noValues.empty()) {
        return std::make_unique<waveform::ValueFileSource>(path);
    }
    const std::string noText = textfile::reasonNotTextFile(file);
    if (noText.empty()) {
        return std::make_unique<textfile::TextFileSource>(path, options.mEncoding);
    }
    refuse(path, noValues, noDriver, noText);
}
} // namespace

std::unique_ptr<waveform::SignalSource> openInput(const std::string& path,
                                                  const InputOptions& options)
{
    base::InputFile file(path);
    // Checked first: COMTRADE data may have records of 48 bytes, too.
    if (const auto pair = pairOfData(path)) {
        return openPair(path, *pair, options);
    }
    const std::string beginning = beginningOf(file);
    if (comtrade::looksLikeComtradeSingle(beginning)) {
        return std::make_unique<comtrade::ComtradeSource>(
            comtrade::openComtradeSingle(path, options.mEncoding));
    }
    if (comtrade::looksLikeComtradeConfig(beginning)) {
        return openPair(path, pairOfConfig(path), options);
    }
    return openOther(path, file, options);
}

std::string otherFileOf(const std::string& path)
{
    if (const auto pair = pairOfData(path)) {
        return pair->mConfig;
    }
    base::InputFile file(path);
    return comtrade::looksLikeComtradeConfig(beginningOf(file)) ? pairOfConfig(path).mData : "";
}

} // namespace input
