#pragma once

#include "app/ui/Form1.h"
#include "common/core/ErrorTrap.h"

namespace kesta {

template <typename Body>
void Form1::trap(const char* routine, Body&& body, std::string details)
{
    trapFatal(app_.reporter, "Form1", routine, std::forward<Body>(body), std::move(details));
}

} // namespace kesta
