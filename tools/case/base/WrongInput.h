#pragma once

#include "base/CaseError.h"

namespace base {

/** As CaseError, where the status of a command tells a wrong file (2) from a bad verdict (1). */
class WrongInput : public CaseError
{
public:
    using CaseError::CaseError;
};

} // namespace base
