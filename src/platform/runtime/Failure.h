#pragma once
// The one failure type of the system: a number, a source and a description,
// as the classic runtime's error object carries them.

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace halvane::runtime {

// Numbers of the classic runtime failures that our own code raises.
enum ErrorNumber : std::int32_t {
    kInvalidProcedureCall = 5,
    kOverflow = 6,
    kOutOfMemory = 7,
    kSubscriptOutOfRange = 9,
    kDivisionByZero = 11,
    kTypeMismatch = 13,
    kObjectNotSet = 91,
};

// Source of failures raised by the runtime itself (as the project name is for
// a classic runtime error).
inline constexpr const char* kRuntimeSource = "Halvane";

struct Failure : std::exception {
    Failure(std::int32_t number, std::string source, std::string description)
        : number(number), source(std::move(source)), description(std::move(description)) {}

    const char* what() const noexcept override { return description.c_str(); }

    std::int32_t number;
    std::string source;
    std::string description;
    // The description the failure arose with, kept while handlers on its way
    // up dress `description` with their locations; empty until one does.
    std::string origin;
};

// Thrown to end a run of the command line at once (a report was shown, or a
// signal asked to stop): no handler takes it for a failure of its own.
struct RunStopped {
    int signal = 0;  // the signal that asked, 0 for a report
};

// The runtime's own text for one of the classic numbers above.
std::string RuntimeDescription(std::int32_t number);

// A classic runtime failure with its usual text, e.g. RuntimeFailure(kOverflow).
Failure RuntimeFailure(std::int32_t number);

// The object behind a reference, or failure 91 when the reference is empty,
// as a call through an unset object variable fails.
template <class Pointer>
auto& Deref(const Pointer& pointer) {
    if (!pointer) throw RuntimeFailure(kObjectNotSet);
    return *pointer;
}

// Inside a catch block: the exception in flight as a Failure. Failures of the
// standard library keep a classic number so that reports read alike.
Failure CurrentFailure();

}  // namespace halvane::runtime
