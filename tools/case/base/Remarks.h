#pragma once

#include <map>
#include <string>
#include <vector>

namespace base {

/**
 * Collects remarks on oddities in a file. The same remark on many channels becomes one, and the
 * number of remarks is limited.
 */
class Remarks
{
public:
    void add(const std::string& text);

    /** A remark on one channel; channels with the same remark share one. */
    void addFor(const std::string& text, int channel) { mChannels[text].push_back(channel); }

    /** Takes out all remarks, in order. */
    std::vector<std::string> take();

private:
    std::vector<std::string> mTexts;
    std::map<std::string, std::vector<int>> mChannels; ///< by text
};

} // namespace base
