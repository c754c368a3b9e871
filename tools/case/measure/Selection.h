#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "measure/Quantities.h"

namespace measure {

/** The selected groups of quantities. */
class Selection
{
public:
    explicit Selection(std::vector<std::string> groups) : mGroups(std::move(groups)) {}

    bool has(const std::string& group) const
    {
        return std::find(mGroups.begin(), mGroups.end(), group) != mGroups.end();
    }
    bool has(QuantityId id) const { return has(quantityOf(id).mGroup); }

private:
    std::vector<std::string> mGroups;
};

} // namespace measure
