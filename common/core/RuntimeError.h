#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace kesta {

// A run-time error as the program's routines see it: a number, a description
// and the component that raised it. Every failure that a routine's error trap
// or the top-level handler deals with travels as one of these.
class RuntimeError : public std::runtime_error {
public:
    RuntimeError(std::int32_t number, std::string description, std::string source = defaultSource());

    std::int32_t number() const noexcept { return number_; }          // run-time or system error number
    const std::string& description() const noexcept { return description_; }
    const std::string& source() const noexcept { return source_; }     // component that raised it

    // The component name used when the program itself raises the error.
    static std::string defaultSource();

private:
    std::int32_t number_;
    std::string description_;
    std::string source_;
};

// The run-time errors the program raises, with their fixed numbers and texts.
namespace err {
inline constexpr std::int32_t InvalidCall = 5;
inline constexpr std::int32_t Overflow = 6;
inline constexpr std::int32_t SubscriptOutOfRange = 9;
inline constexpr std::int32_t TypeMismatch = 13;
inline constexpr std::int32_t FileNotFound = 53;
inline constexpr std::int32_t InputPastEnd = 62;
inline constexpr std::int32_t PathFileAccess = 75;
inline constexpr std::int32_t PathNotFound = 76;

// The description belonging to one of the numbers above ("" for others).
std::string describe(std::int32_t number);
// Builds the error for one of the numbers above.
RuntimeError make(std::int32_t number);
} // namespace err

} // namespace kesta
