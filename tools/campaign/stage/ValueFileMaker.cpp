#include "stage/ValueFileMaker.h"

#include "base/CaseError.h"
#include "base/InputFile.h"
#include "generate/Wave.h"
#include "generate/WaveFile.h"
#include "importing/Importer.h"
#include "input/OpenInput.h"
#include "states/StateFile.h"
#include "states/StateSignal.h"

namespace stage {

namespace {
using plan::Source;
using plan::SourceKind;

constexpr size_t kCopiedBytes = size_t{1} << 20U; ///< at a time

std::string madeBy(const Source& source)
{
    return "vx-campaign from the " + source.mText;
}

std::vector<std::string> makeSignal(const Source& source, base::ResultFile& output)
{
    generate::WaveParameters parameters;
    parameters.mNeutral = generate::kCatalogueNeutral;
    source.mSignal.applyTo(parameters);
    const std::string problem = generate::problemOf(parameters);
    if (!problem.empty()) {
        throw base::CaseError(problem);
    }
    generate::Wave wave(parameters);
    generate::writeLines(wave, {"made by " + madeBy(source)}, output);
    return {};
}

std::vector<std::string> makeStates(const Source& source, base::ResultFile& output)
{
    const states::StatePlan plan = states::readStates(source.mPath);
    const states::StateLayout layout(plan, source.mIsAligned);
    states::StateSignal signal(plan, layout);
    generate::writeLines(signal, {"made by " + madeBy(source)}, output);
    return layout.remarks();
}

std::vector<std::string> importRecording(const Source& source, base::ResultFile& output)
{
    const auto signal = input::openInput(source.mPath, {source.mEncoding});
    if (signal->description().mFormat == "value file") {
        throw base::CaseError(source.mPath + ": is a value file already; use the key file");
    }
    importing::ImportOptions options = source.mImport;
    options.mMadeBy = madeBy(source);
    return importing::importSignal(*signal, options, output).mRemarks;
}

std::vector<std::string> copyFile(const Source& source, base::ResultFile& output)
{
    base::InputFile file(source.mPath);
    for (std::string_view bytes = file.peek(kCopiedBytes); !bytes.empty();
         bytes = file.peek(kCopiedBytes)) {
        output.write(bytes);
        file.skip(bytes.size());
    }
    return {};
}

std::vector<std::string> make(const Source& source, base::ResultFile& output)
{
    switch (source.mKind) {
        case SourceKind::Signal:
            return makeSignal(source, output);
        case SourceKind::Recording:
            return importRecording(source, output);
        case SourceKind::States:
            return makeStates(source, output);
        case SourceKind::File:
            break;
    }
    return copyFile(source, output);
}
} // namespace

std::vector<std::string> makeValueFile(const Source& source, const std::string& path)
{
    base::ResultFile output(path);
    std::vector<std::string> remarks = make(source, output);
    output.commit();
    return remarks;
}

} // namespace stage
