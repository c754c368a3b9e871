#pragma once

#include "base/CaseError.h"

namespace base {

/** Like CaseError, for commands whose status is 2 for a wrong file and 1 for a bad verdict. */
class WrongInput : public CaseError
{
public:
    using CaseError::CaseError;
};

} // namespace base
