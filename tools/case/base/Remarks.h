#pragma once

#include <map>
#include <string>
#include <vector>

namespace base {

/**
 * Collects remarks on what is odd in a file. The same remark on many channels becomes one, and
 * their number is limited.
 */
class Remarks
{
public:
    void add(const std::string& text);

    /** A remark on one channel; channels with the same remark share one. */
    void addFor(const std::string& text, int channel) { mChannels[text].push_back(channel); }

    /** All of them, in order; none is left. */
    std::vector<std::string> take();

private:
    std::vector<std::string> mTexts;
    std::map<std::string, std::vector<int>> mChannels; ///< by text
};

} // namespace base
