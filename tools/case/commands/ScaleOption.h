#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/Numbers.h"
#include "base/Text.h"

namespace commands {

/** "--scale V,A", the same in import and export. The numbers must outlive the command. */
inline void addScaleOption(CLI::App& command, double* countsPerVolt, double* countsPerAmpere)
{
    const auto read = [=](const std::string& text) {
        const auto parts = base::splitText(text, ',');
        const bool isGood = parts.size() == 2 && base::parseNumber(parts[0], countsPerVolt) &&
                            base::parseNumber(parts[1], countsPerAmpere) && *countsPerVolt > 0.0 &&
                            *countsPerAmpere > 0.0;
        if (!isGood) {
            throw CLI::ValidationError(
                "--scale",
                "'" + text + "': expected V,A, two numbers above 0, for example 1000,1000");
        }
    };
    command
        .add_option_function<std::string>("--scale", read,
                                          "Counts per volt and per ampere (default 1000,1000)")
        ->type_name("V,A");
}

} // namespace commands
