#include "common/core/RuntimeError.h"

namespace kesta {

RuntimeError::RuntimeError(std::int32_t number, std::string description, std::string source)
    : std::runtime_error(description), number_(number), description_(std::move(description)),
      source_(std::move(source))
{
}

std::string RuntimeError::defaultSource()
{
    return "kesta-demo";
}

namespace err {

std::string describe(std::int32_t number)
{
    switch (number) {
    case InvalidCall: return "Invalid procedure call or argument";
    case Overflow: return "Overflow";
    case SubscriptOutOfRange: return "Subscript out of range";
    case TypeMismatch: return "Type mismatch";
    case FileNotFound: return "File not found";
    case InputPastEnd: return "Input past end of file";
    case PathFileAccess: return "Path/File access error";
    case PathNotFound: return "Path not found";
    default: return {};
    }
}

RuntimeError make(std::int32_t number)
{
    return RuntimeError(number, describe(number));
}

} // namespace err
} // namespace kesta
