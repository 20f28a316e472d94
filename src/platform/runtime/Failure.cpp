#include "platform/runtime/Failure.h"

#include <new>
#include <stdexcept>

namespace halvane::runtime {

std::string RuntimeDescription(std::int32_t number) {
    switch (number) {
        case kInvalidProcedureCall:
            return "Invalid procedure call or argument";
        case kOverflow:
            return "Overflow";
        case kOutOfMemory:
            return "Out of memory";
        case kSubscriptOutOfRange:
            return "Subscript out of range";
        case kDivisionByZero:
            return "Division by zero";
        case kTypeMismatch:
            return "Type mismatch";
        case kObjectNotSet:
            return "Object variable or With block variable not set";
        default:
            return "Application-defined or object-defined error";
    }
}

Failure RuntimeFailure(std::int32_t number) {
    return Failure(number, kRuntimeSource, RuntimeDescription(number));
}

Failure CurrentFailure() {
    try {
        throw;
    } catch (const Failure& failure) {
        return failure;
    } catch (const std::bad_alloc&) {
        return RuntimeFailure(kOutOfMemory);
    } catch (const std::out_of_range& e) {
        return Failure(kSubscriptOutOfRange, kRuntimeSource, e.what());
    } catch (const std::exception& e) {
        return Failure(kInvalidProcedureCall, kRuntimeSource, e.what());
    } catch (...) {
        return RuntimeFailure(kInvalidProcedureCall);
    }
}

}  // namespace halvane::runtime
