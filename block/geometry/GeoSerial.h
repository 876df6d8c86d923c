#pragma once

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartZvg/Geo.h"
#include "stream/MemoryBudget.h"
#include "stream/RecordInStream.h"

namespace ZVSmartZvg {

/// The preview image is the one image of the record under this identification.
constexpr const wchar_t* previewIdentification = L"mater_zvg_preview_image_indent";

/// Appends the record's serial form to `out`. Throws "encode error" where an image or blob
/// announces bytes and has none.
void WriteGeo(ZVSmartFormat::CZVFTOutStream& out, const SZVLGZvgGeo& geo, unsigned int version);

/// Reads a record from untrusted bytes. Lists that it does not have keep what `geo` held; on a
/// throw `geo` is partly filled. It may take `mostMemory`, or OverLimit is thrown.
void ReadGeo(ZVSmartFormat::RecordInStream& in, SZVLGZvgGeo& geo, unsigned int version,
             u64 mostMemory = ZVSmartFormat::defaultRecordMemory);

/// Throws "encode error" where `WriteGeo` would for want of bytes, and where no reader would take
/// the record unless a host allows it more memory than by default.
void CheckGeo(const SZVLGZvgGeo& geo, unsigned int version);

}  // namespace ZVSmartZvg
