#pragma once

#include <string>
#include <vector>

#include "importing/ImportOptions.h"
#include "plan/Mistakes.h"
#include "states/TomlSection.h"

namespace plan {

/**
 * Reads the import options of a recording, which have the names of those of vx-case import.
 * Borrows the section, and the mistakes that it adds to.
 */
class ImportReader
{
public:
    static std::vector<std::string> keys();

    ImportReader(const states::TomlSection& section, Mistakes& mistakes)
        : mSection(section), mMistakes(mistakes)
    {
    }

    /** @return the options that were set, as text: ", before=10, loop" */
    std::string read(importing::ImportOptions& options, std::string& encoding);

private:
    void readChannels(importing::MappingOptions& mapping);
    void readScale(importing::MappingOptions& mapping);
    void readSide(importing::MappingOptions& mapping);
    void readFrequency(importing::ImportOptions& options);
    void readEncoding(std::string& encoding);
    void readSeconds(const char* key, std::optional<double>& seconds);
    void readPeriods(const char* key, size_t& periods);
    void readFlag(const char* key, bool& isSet);
    void describe(const char* key, const std::string& value);

    const states::TomlSection& mSection;
    Mistakes& mMistakes;
    std::string mText;
};

} // namespace plan
