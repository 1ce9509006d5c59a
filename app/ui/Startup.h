#pragma once

#include "common/core/Host.h"

#include <string>

namespace kesta {

// Runs the program from its splash window to the end of the event loop;
// errors no routine traps take the default failure path.
int runProgram(Host& host, const std::string& programDir);

} // namespace kesta
