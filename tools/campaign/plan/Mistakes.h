#pragma once

#include <string>
#include <vector>

#include "base/CaseError.h"

namespace plan {

/** Collects what is wrong, so that a user mends all of it at once. */
class Mistakes
{
public:
    void add(std::string text) { mTexts.push_back(std::move(text)); }

    void add(const std::vector<std::string>& texts)
    {
        mTexts.insert(mTexts.end(), texts.begin(), texts.end());
    }

    /** Calls what throws a CaseError, and goes on. @return whether it did not throw */
    template <typename Action>
    bool collect(Action action)
    {
        try {
            action();
            return true;
        } catch (const base::CaseError& error) {
            add(error.what());
            return false;
        }
    }

    const std::vector<std::string>& texts() const { return mTexts; }

    /** @throws PlanError with all of them, where there are any */
    void expectNone() const;

private:
    std::vector<std::string> mTexts;
};

} // namespace plan
