#pragma once

#include <string>
#include <vector>

#include "base/CaseError.h"

namespace plan {

/** Collects all mistakes, so that the user can correct them in one go. */
class Mistakes
{
public:
    void add(std::string text) { mTexts.push_back(std::move(text)); }

    void add(const std::vector<std::string>& texts)
    {
        mTexts.insert(mTexts.end(), texts.begin(), texts.end());
    }

    /** Runs the action and collects its CaseError. @return whether it succeeded */
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

    /** @throws PlanError with all mistakes, if there are any */
    void throwIfAny() const;

private:
    std::vector<std::string> mTexts;
};

} // namespace plan
