#include "ZVSmartFormat/StreamException.h"

#include <exception>

#include "stream/Failures.h"

namespace ZVSmartFormat {

namespace {

// Made while there is memory: when it has run out, not even a text of these lengths can be had.
const std::exception_ptr notAllocated =
    std::make_exception_ptr(CZVFTStreamException(Failure::notAllocated));
const std::exception_ptr notGrown =
    std::make_exception_ptr(CZVFTStreamException(Failure::notGrown));

}  // namespace

void ThrowNotAllocated() {
    std::rethrow_exception(notAllocated);
}

void ThrowNotGrown() {
    std::rethrow_exception(notGrown);
}

CZVFTStreamException::CZVFTStreamException(const char* message) : message(message) {}

CZVFTStreamException::CZVFTStreamException(const CZVFTStreamException& other) = default;

CZVFTStreamException& CZVFTStreamException::operator=(const CZVFTStreamException& other) = default;

CZVFTStreamException::~CZVFTStreamException() = default;

const char* CZVFTStreamException::what() const noexcept {
    return message.c_str();
}

}  // namespace ZVSmartFormat
