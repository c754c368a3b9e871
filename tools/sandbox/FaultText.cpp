#include "FaultText.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "SampleRecord.h"
#include "Seconds.h"

namespace sandbox {

namespace {

/** True for one digit or more and nothing else. */
std::optional<std::uint64_t> parseCount(const std::string& text)
{
    std::uint64_t count = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    return error == std::errc{} && rest == end ? std::optional(count) : std::nullopt;
}

/** Returns at least one part. */
std::vector<std::string> splitAtColons(const std::string& text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text + ':');
    for (std::string part; std::getline(stream, part, ':');) {
        parts.push_back(part);
    }
    return parts;
}

/** The errno with this name; 0 if there is none. */
int errnoOf(const std::string& name)
{
    constexpr int kMaxErrno = 511; // the largest errno that the kernel accepts from a file system
    for (int error = 1; error <= kMaxErrno; ++error) {
        const char* const known = strerrorname_np(error);
        if (known != nullptr && name == known) {
            return error;
        }
    }
    return 0;
}

bool parseWhen(const std::string& text, Fault& fault)
{
    if (!text.empty() && text.back() == 's') {
        fault.mDelayNs = parseSeconds("--fault", text.substr(0, text.size() - 1));
        return true;
    }
    fault.mWrite = parseCount(text).value_or(0);
    return fault.mWrite > 0;
}

bool parseWhat(const std::string& text, Fault& fault)
{
    constexpr char kShort[] = "short=";
    constexpr char kStall[] = "stall=";
    const std::string value = text.substr(std::min(text.size(), std::strlen(kShort)));
    fault.mWhat = text;
    if (text.rfind(kShort, 0) == 0) {
        const std::optional<std::uint64_t> bytes = parseCount(value);
        fault.mKind = FaultKind::Short;
        fault.mBytes = static_cast<std::size_t>(bytes.value_or(0));
        return bytes && (fault.mFile != DriverFile::AdcIn || *bytes % sizeof(SampleRecord) == 0);
    }
    if (text.rfind(kStall, 0) == 0) {
        fault.mKind = FaultKind::Stall;
        fault.mStallNs = parseSeconds("--fault", value);
        return true;
    }
    fault.mKind = text == "vanish" ? FaultKind::Vanish : FaultKind::Error;
    fault.mError = text == "vanish" ? ENODEV : errnoOf(text);
    return fault.mError != 0;
}

bool parseWriteCount(const std::string& text, Fault& fault)
{
    fault.mLeft =
        text == "on" ? std::numeric_limits<std::uint64_t>::max() : parseCount(text).value_or(0);
    return fault.mLeft > 0;
}

} // namespace

Fault parseFault(const std::string& text)
{
    const std::vector<std::string> parts = splitAtColons(text);
    const std::optional<DriverFile> file = driverFileNamed(parts[0]);
    Fault fault;
    fault.mText = text;
    fault.mFile = file.value_or(DriverFile::AdcIn);
    const bool isValid = file && (parts.size() == 3 || parts.size() == 4) &&
                         parseWhen(parts[1], fault) && parseWhat(parts[2], fault) &&
                         (parts.size() == 3 || parseWriteCount(parts[3], fault));
    if (!isValid) {
        throw std::runtime_error(
            "--fault takes FILE:WHEN:WHAT[:COUNT], such as adc-in:100:EIO:3, r2h:2.5s:vanish:on or "
            "adc-in:1:short=4800 (for adc-in a multiple of 48 bytes), not \"" +
            text + "\"");
    }
    return fault;
}

} // namespace sandbox
