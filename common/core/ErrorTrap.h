#pragma once

#include "common/core/ErrorLog.h"
#include "common/core/RuntimeError.h"

#include <exception>
#include <string>
#include <utility>

namespace kesta {

// Turns a standard-library failure into the run-time error it stands for, so
// that every trap reports one kind of error.
RuntimeError asRuntimeError(const std::exception& error);

// Shows the "Run-time error" box for `error` and ends the process.
[[noreturn]] void failRunTime(Host& host, const RuntimeError& error);

namespace detail {
// A failure inside the reporter itself is not reported again: it takes the
// default failure path.
inline void reportFatal(ErrorReporter& reporter, const std::string& moduleName, const std::string& routineName,
                        std::string& details, const RuntimeError& error)
{
    try {
        reporter.LogError(moduleName, routineName, true, details, error);
    } catch (const RuntimeError& failure) {
        failRunTime(reporter.host(), failure);
    }
}
} // namespace detail

// A routine's error trap: runs `body`; a run-time error it raises is reported
// as fatal under moduleName.routineName, with `details` when given. The
// program ends inside the report, so nothing after a failure runs.
template <typename Body>
void trapFatal(ErrorReporter& reporter, const std::string& moduleName, const std::string& routineName, Body&& body,
               std::string details = {})
{
    try {
        std::forward<Body>(body)();
    } catch (const RuntimeError& error) {
        detail::reportFatal(reporter, moduleName, routineName, details, error);
    } catch (const std::exception& error) {
        detail::reportFatal(reporter, moduleName, routineName, details, asRuntimeError(error));
    }
}

// The trap of a shared-module routine: a failure is logged without notice and
// the routine's default result is returned. When even the log cannot be
// written (its folder is gone), the failure stays silent: such routines
// never raise to their caller.
template <typename Result, typename Body>
Result trapNonFatal(ErrorReporter& reporter, const std::string& routineName, Result fallback, Body&& body)
{
    auto report = [&](const RuntimeError& error) {
        std::string details;
        try {
            reporter.LogError("Program_Data", routineName, false, details, error);
        } catch (const RuntimeError&) {
        }
    };
    try {
        return std::forward<Body>(body)();
    } catch (const RuntimeError& error) {
        report(error);
    } catch (const std::exception& error) {
        report(asRuntimeError(error));
    }
    return fallback;
}

// The same for a routine that returns nothing.
template <typename Body>
void trapNonFatal(ErrorReporter& reporter, const std::string& routineName, Body&& body)
{
    trapNonFatal(reporter, routineName, true, [&] { return std::forward<Body>(body)(), true; });
}

// The default failure path for routines without a trap of their own: the
// "Run-time error" box with number and description, then the process ends
// with a non-zero status. Nothing is logged.
template <typename Body>
void untrapped(Host& host, Body&& body)
{
    try {
        std::forward<Body>(body)();
    } catch (const RuntimeError& error) {
        failRunTime(host, error);
    } catch (const std::exception& error) {
        failRunTime(host, asRuntimeError(error));
    }
}

} // namespace kesta
