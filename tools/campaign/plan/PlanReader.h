#pragma once

#include <map>
#include <optional>
#include <string>

#include "plan/Mistakes.h"
#include "plan/Plan.h"
#include "states/TomlSection.h"

namespace plan {

/**
 * Fills a plan from its tables. A mistake in one part does not stop the reading of the others.
 * Borrows the plan, whose file name is set, and the mistakes.
 */
class PlanReader
{
public:
    PlanReader(Plan& plan, Mistakes& mistakes);

    void read(const toml::table& table);

private:
    void readHead(const states::TomlSection& file);
    void readMeasuring(const states::TomlSection& file);
    void readSteady(const states::TomlSection& file);
    void readCases(const states::TomlSection& file);
    void readCase(const toml::table& table);
    void readName(const states::TomlSection& section, const std::optional<std::string>& defaultName,
                  Case& it);
    void readNumbers(const states::TomlSection& section, Case& it);
    void expectFewPlays();
    void readGroups(const states::TomlSection& file);
    void readGroup(const states::TomlSection& section, const std::string& name);

    Plan& mPlan;
    std::string mFolder;
    Mistakes& mMistakes;
    std::map<std::string, unsigned> mLineOfName; ///< of all cases, also of faulty ones
};

} // namespace plan
