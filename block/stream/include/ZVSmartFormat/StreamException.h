#pragma once

#include <exception>
#include <string>

#include "ZVSmartFormat/Api.h"

namespace ZVSmartFormat {

/// The one exception type of the library. `what()` is one of six texts:
///
/// | text | meaning |
/// |---|---|
/// | "it's not zvg file format" | the magic bytes are missing |
/// | "it's upper zvg format" | the file's version is above 4 |
/// | "encode error" | something could not be written |
/// | "seek over buffer size" | data ran out, or a count or position cannot fit the data |
/// | "bad malloc memory" | an allocation failed |
/// | "bad relloc memory" | a growth failed |
class ZVFT_API CZVFTStreamException : public std::exception {
  public:
    /// Copies `message`, a text that ends in a zero byte.
    explicit CZVFTStreamException(const char* message);
    /// Copies the message.
    /// @{
    CZVFTStreamException(const CZVFTStreamException& other);
    CZVFTStreamException& operator=(const CZVFTStreamException& other);
    /// @}
    ~CZVFTStreamException() override;

    /// The message as it was given; valid as long as this object.
    const char* what() const noexcept override;

  private:
    std::string message;
};

}  // namespace ZVSmartFormat
