#pragma once

#include "common/core/RuntimeError.h"

#include <string>

namespace kesta::test {

// The number of the run-time error `body` raises; 0 when it raises none.
template <typename Body>
int errorOf(Body&& body)
{
    try {
        body();
    } catch (const RuntimeError& error) {
        return error.number();
    }
    return 0;
}

// What `body` returns, or "error N" for the run-time error it raises.
template <typename Body>
std::string outcome(Body&& body)
{
    try {
        return body();
    } catch (const RuntimeError& error) {
        return "error " + std::to_string(error.number());
    }
}

} // namespace kesta::test
