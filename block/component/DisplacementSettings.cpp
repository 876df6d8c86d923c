#include "component/DisplacementSettings.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace ZVSmartZvg {

namespace {

/// What `wcstoul` makes of `text` where `unsigned long` has 32 bits, whatever it has here: a
/// magnitude above 32 bits is the largest value, a minus sign wraps. False unless all of `text`
/// is read.
bool ParseUnsigned32(std::wstring_view text, u32& value) {
    constexpr u64 largest = std::numeric_limits<u32>::max();
    text.remove_prefix(std::min(text.find_first_not_of(L" \t\n\v\f\r"), text.size()));
    const bool isNegative = text.starts_with(L'-');
    if (isNegative || text.starts_with(L'+')) text.remove_prefix(1);
    if (text.empty()) return false;
    u64 magnitude = 0;
    for (const wchar_t digit : text) {
        if (digit < L'0' || digit > L'9') return false;
        magnitude = std::min(magnitude * 10 + static_cast<u64>(digit - L'0'), largest + 1);
    }
    if (magnitude > largest) {
        value = static_cast<u32>(largest);
    } else {
        value = static_cast<u32>(isNegative ? 0 - magnitude : magnitude);
    }
    return true;
}

}  // namespace

void ApplyDisplacement(const ZVSmartFormat::CZVFTIniFile& settings, const std::wstring& className,
                       SZVLGZvgDisplayAttr& attr) {
    constexpr u16 hasZBufferSize = DisplayAttrFlag::zBufferSize;
    if ((attr.flags & hasZBufferSize) != 0 || !settings.IsValid()) return;
    const std::wstring value = settings.GetValue(L"ZBufferSize", className);
    if (value.empty()) return;
    u32 number = 0;
    if (!ParseUnsigned32(value, number)) return;
    attr.flags |= hasZBufferSize;
    attr.zBufferSize = number;
}

}  // namespace ZVSmartZvg
