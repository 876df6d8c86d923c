#pragma once

#include <cstdint>
#include <string>

#include "ZVSmartModel/Body.h"

namespace ZVSmartModel::Web {

/// What a call asks for. It comes as texts, each its length in bytes (u32, little-endian) and then
/// UTF-8: a name from the table in CallRequest.cpp, its value, the next name, and so on.
struct Request {
    Selection selection;
    BodyOptions body;
    std::string guid;           ///< the element of this GUID
    std::string name;           ///< elements of this name
    std::string text;           ///< elements that bear this text, in whatever case of ASCII
    bool takesDoubles = false;  ///< points in 64 bits
    /// Where all elements of all floors are wanted, at most so many in an answer; 0 for a floor.
    unsigned int elementsAtOnce = 0;

    /// Reads `size` bytes at `bytes`. Throws Error, Usage, for what is none.
    static Request Of(const std::uint8_t* bytes, std::uint32_t size);
};

}  // namespace ZVSmartModel::Web
