#include "component/DisplacementSettings.h"

#include <cwchar>
#include <limits>

namespace ZVSmartZvg {

namespace {

/// What `wcstoul` makes of `text` where `unsigned long` has 32 bits, whatever it has here: a
/// magnitude above 32 bits is the largest value, a minus sign wraps. False unless all of `text`
/// is read.
bool ParseUnsigned32(const std::wstring& text, u32& value) {
    constexpr u32 largest = std::numeric_limits<u32>::max();
    wchar_t* end = nullptr;
    const u64 parsed = std::wcstoul(text.c_str(), &end, 10);
    if (end == text.c_str() || end != text.c_str() + text.size()) return false;
    const bool negative = text.find(L'-') != std::wstring::npos;
    const u64 magnitude = negative ? 0 - parsed : parsed;
    if (magnitude > largest) {
        value = largest;
    } else {
        value = static_cast<u32>(parsed);
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
