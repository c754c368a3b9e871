#include "input/OpenInput.h"

#include <fmt/format.h>

#include <QFileInfo>

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "comtrade/ComtradeConfigParser.h"
#include "comtrade/ComtradeFiles.h"
#include "signal/DriverRecordingSource.h"
#include "signal/ValueFileSource.h"
#include "textfile/TextFileSource.h"

namespace {
constexpr size_t kBeginning = size_t{64} << 10U; ///< bytes that show the form of a file

bool hasSuffix(const std::string& path, const char* suffix)
{
    return QFileInfo(QString::fromStdString(path)).suffix().compare(suffix, Qt::CaseInsensitive) ==
           0;
}

std::string beginningOf(InputFile& file)
{
    file.setPart(0, file.size());
    return std::string(file.peek(kBeginning));
}

std::unique_ptr<SignalSource> openPair(const std::string& named, const std::string& config,
                                       const std::string& data, const InputOptions& options)
{
    ComtradeParts parts = openComtradePair(config, data, options.mEncoding);
    parts.mName = named;
    return std::make_unique<ComtradeSource>(std::move(parts));
}

/** A configuration whose data lie beside it. */
std::unique_ptr<SignalSource> openConfig(const std::string& path, const InputOptions& options)
{
    const std::string data = findBeside(path, "dat");
    if (data.empty()) {
        throw CaseError(path + ": a COMTRADE configuration; expected its data (.dat) beside it");
    }
    return openPair(path, path, data, options);
}

/** The data of a recording, told by the configuration beside them; null when there is none. */
std::unique_ptr<SignalSource> openData(const std::string& path, const InputOptions& options)
{
    const std::string config = hasSuffix(path, "dat") ? findBeside(path, "cfg") : "";
    return config.empty() ? nullptr : openPair(path, config, path, options);
}

[[noreturn]] void refuse(const std::string& path, const std::string& noValues,
                         const std::string& noDriver, const std::string& noText)
{
    const char* const noComtrade =
        hasSuffix(path, "dat")
            ? "it may be the data of one, but no configuration (.cfg) lies beside it"
            : "its second line does not count channels as \"8,8A,0D\" does";
    throw CaseError(
        fmt::format("{}: cannot tell what it is\n"
                    "  no value file: {}\n"
                    "  no recording of the driver: {}\n"
                    "  no COMTRADE recording: {}\n"
                    "  no text file with a heading: {}",
                    path, noValues, noDriver, noComtrade, noText));
}

std::unique_ptr<SignalSource> openOther(const std::string& path, InputFile& file,
                                        const InputOptions& options)
{
    const std::string noDriver = whyNoDriverRecording(file);
    if (noDriver.empty()) {
        return std::make_unique<DriverRecordingSource>(path);
    }
    const std::string noValues = whyNoValueFile(file);
    if (noValues.empty()) {
        return std::make_unique<ValueFileSource>(path);
    }
    const std::string noText = whyNoTextFile(file);
    if (noText.empty()) {
        return std::make_unique<TextFileSource>(path, options.mEncoding);
    }
    refuse(path, noValues, noDriver, noText);
}
} // namespace

std::unique_ptr<SignalSource> openInput(const std::string& path, const InputOptions& options)
{
    InputFile file(path);
    // First, since records of 48 bytes may stand in a recording too.
    if (auto data = openData(path, options)) {
        return data;
    }
    const std::string beginning = beginningOf(file);
    if (looksLikeComtradeSingle(beginning)) {
        return std::make_unique<ComtradeSource>(openComtradeSingle(path, options.mEncoding));
    }
    if (looksLikeComtradeConfig(beginning)) {
        return openConfig(path, options);
    }
    return openOther(path, file, options);
}
