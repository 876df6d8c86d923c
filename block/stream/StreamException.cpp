#include "ZVSmartFormat/StreamException.h"

namespace ZVSmartFormat {

CZVFTStreamException::CZVFTStreamException(const char* message) : message(message) {}

CZVFTStreamException::CZVFTStreamException(const CZVFTStreamException& other) = default;

CZVFTStreamException& CZVFTStreamException::operator=(const CZVFTStreamException& other) = default;

CZVFTStreamException::~CZVFTStreamException() = default;

const char* CZVFTStreamException::what() const noexcept {
    return message.c_str();
}

}  // namespace ZVSmartFormat
