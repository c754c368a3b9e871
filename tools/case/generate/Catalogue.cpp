#include "generate/Catalogue.h"

#include <fmt/format.h>

#include <QDir>

#include "base/CaseError.h"
#include "base/ConfigurationPath.h"
#include "base/ProgressLine.h"
#include "generate/SignalTable.h"
#include "generate/TruthFile.h"
#include "generate/Wave.h"
#include "generate/WaveFile.h"

namespace generate {

namespace {
constexpr char kConfigurationName[] = "vx-simulator.conf";

/** The first one is always the steady signal. */
std::vector<const Signal*> signalsOf(const std::vector<std::string>& names)
{
    std::vector<const Signal*> rows;
    for (const Signal& signal : signalTable()) {
        if (names.empty() && signal.mIsInCatalogue) {
            rows.push_back(&signal);
        }
    }
    if (!names.empty()) {
        rows.push_back(&signalTable().front());
    }
    for (const std::string& name : names) {
        if (name == rows.front()->mName) {
            continue;
        }
        rows.push_back(findSignal(name));
        if (rows.back() == nullptr) {
            throw base::CaseError(unknownSignal(name));
        }
    }
    return rows;
}

/** The absolute path: the simulator takes a relative one from its own working directory. */
std::string pathOf(const std::string& directory)
{
    const QDir folder(QString::fromStdString(directory));
    const std::string path = base::configurationPath(folder.absolutePath().toStdString());
    if (!folder.mkpath(".")) {
        throw base::CaseError(path + ": cannot be made as a directory");
    }
    return path;
}

std::string stemOf(const Signal& signal, const std::string& path)
{
    return path + '/' + signal.mName;
}

std::string configurationOf(const std::vector<const Signal*>& rows, const std::string& path)
{
    std::string text = "# number of the configuration, how often in a row, value file\n";
    for (size_t number = 0; number < rows.size(); ++number) {
        text += fmt::format("\n# {}\n{},1,{}.csv\n", rows[number]->mText, number,
                            stemOf(*rows[number], path));
    }
    return text + "\n-1,0,\n";
}

void writeSignal(const Signal& signal, const std::string& stem)
{
    WaveParameters wave;
    wave.mNeutral = kCatalogueNeutral;
    signal.applyTo(wave);
    const ReferenceValues reference = referenceValuesOf(wave);
    SampleMeter meter = sampleMeterFor(reference);
    Wave lines(wave);
    base::ResultFile values(stem + ".csv", base::ResultFile::Existing::Keep);
    writeLines(lines, {signal.mName + ": " + signal.mText}, values, &meter);
    base::ResultFile truth(stem + ".json", base::ResultFile::Existing::Keep);
    writeTruth(signal, reference, meter.values(lines.timeline()), truth);
    values.commit();
    truth.commit();
}
} // namespace

void writeCatalogue(const std::string& directory, const std::vector<std::string>& names)
{
    const std::vector<const Signal*> rows = signalsOf(names);
    const std::string path = pathOf(directory);
    base::ResultFile configuration(path + '/' + kConfigurationName,
                                   base::ResultFile::Existing::Keep);
    configuration.write(configurationOf(rows, path));
    configuration.flush(); // compares an existing file before anything is written
    base::ProgressLine progress("writing");
    for (size_t number = 0; number < rows.size(); ++number) {
        progress.show(double(number) / double(rows.size()));
        writeSignal(*rows[number], stemOf(*rows[number], path));
    }
    configuration.commit();
}

} // namespace generate
