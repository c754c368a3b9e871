#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "base/TextEncoding.h"

namespace commands {

/** "--encoding NAME", the same for every subcommand that reads recordings. */
inline void addEncodingOption(CLI::App& command, std::string* encoding)
{
    command
        .add_option(
            "--encoding", *encoding,
            "Encoding of the texts in a recording, such as windows-1251 or GB18030 (default: "
            "UTF-8, or Latin-1 for texts that are not UTF-8)")
        ->type_name("NAME")
        ->check([](const std::string& name) {
            return base::isEncoding(name) ? std::string() : "unknown encoding '" + name + "'";
        });
}

} // namespace commands
