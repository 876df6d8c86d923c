#pragma once

#include <string>
#include <utility>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartZvg/BlockSaver.h"
#include "bench/Building.h"
#include "bench/FileParts.h"

namespace bench {

/// A building in memory, ready to be written: its geometries, and components that refer to them.
struct Payload {
    std::string name;
    std::vector<std::pair<std::wstring, SZVLGZvgGeo>> geos;
    std::vector<SZVLGZvgComp> comps;
    u32 geosPerBlock = 0;
};

/// "building:10000" generates; anything else is the path of a block file that is read whole.
Payload LoadPayload(const std::string& source);

enum class Part { geometry, components, both };
const char* PartName(Part part);

/// A stream into memory that is there from the start, so that a measurement is not of growing it.
class MemorySink {
  public:
    explicit MemorySink(std::size_t capacity);
    ~MemorySink();
    MemorySink(const MemorySink&) = delete;
    MemorySink& operator=(const MemorySink&) = delete;

    ZVSmartFormat::CZVFTOutStream& Stream() { return stream; }
    void Rewind() { stream.Seek(0); }
    View Written() { return {buffer.data, static_cast<std::size_t>(stream.GetPos())}; }

  private:
    ZVSmartFormat::AllocBuffer buffer;
    ZVSmartFormat::CZVFTAllocBufferOutStream stream;
};

/// Writes a part of `payload`, from `Init` to `WriteEnd`; the saver has so many threads.
void WritePayload(const Payload& payload, Part part, ZVSmartFormat::CZVFTOutStream& out,
                  unsigned int threads = 1);
Bytes Written(const Payload& payload, Part part, unsigned int threads = 1);

/// Writes a building without holding it: to make a file of any size.
/// `geosPerBlock` 0 is the library's default.
void WriteBuilding(const Building& building, ZVSmartFormat::CZVFTOutStream& out, u32 geosPerBlock,
                   unsigned int threads = 1);

}  // namespace bench
