#include "comtrade/ComtradeHeader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace comtrade {

namespace {
constexpr std::array<std::pair<const char*, ComtradeKind>, 4> kKinds{{
    {"ASCII", ComtradeKind::kAscii},
    {"BINARY", ComtradeKind::kBinary},
    {"BINARY32", ComtradeKind::kBinary32},
    {"FLOAT32", ComtradeKind::kFloat32},
}};
} // namespace

const char* nameOf(ComtradeKind kind)
{
    return kKinds.at(static_cast<size_t>(kind)).first;
}

bool parseKind(std::string_view name, ComtradeKind* kind)
{
    std::string upper(name);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    const auto* const found = std::find_if(kKinds.begin(), kKinds.end(),
                                           [&](const auto& known) { return known.first == upper; });
    if (found == kKinds.end()) {
        return false;
    }
    *kind = found->second;
    return true;
}

} // namespace comtrade
