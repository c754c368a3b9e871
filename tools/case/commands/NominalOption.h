#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <array>
#include <functional>
#include <string>
#include <utility>

#include "base/Numbers.h"
#include "base/Text.h"

namespace commands {

/** Volts, amperes and hertz. */
using NominalValues = std::array<double, 3>;

/** "--nominal V,A,HZ", the same in measure and judge. */
inline void addNominalOption(CLI::App& command, std::function<void(const NominalValues&)> take,
                             const std::string& help)
{
    const auto read = [take = std::move(take)](const std::string& text) {
        const auto fields = base::splitText(text, ',');
        NominalValues values{};
        bool isGood = fields.size() == values.size();
        for (size_t i = 0; isGood && i < values.size(); ++i) {
            isGood = base::parseNumber(fields[i], &values[i]) && values[i] > 0.0;
        }
        if (!isGood || (values[2] != 50.0 && values[2] != 60.0)) {
            throw CLI::ValidationError(
                "--nominal",
                fmt::format("'{}': expected V,A,HZ with 50 or 60 Hz, for example 230,5,50", text));
        }
        take(values);
    };
    command.add_option_function<std::string>("--nominal", read, help)->type_name("V,A,HZ");
}

} // namespace commands
