// A stream of the host's own: a block file that lies inside a larger vector of bytes.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <vector>

#include "ZVSmartZvg/ZVSmartZvg.h"

using namespace ZVSmartZvg;

namespace {

class VectorOutStream : public ZVSmartFormat::CZVFTOutStream {
  public:
    explicit VectorOutStream(std::vector<u8>& bytes) : bytes(bytes), pos(bytes.size()) {}

    u64 Write(const void* buffer, u64 size) override {
        bytes.resize(std::max<std::size_t>(bytes.size(), pos + size));
        std::memcpy(bytes.data() + pos, buffer, size);
        pos += size;
        return size;
    }
    u64 GetPos() override { return pos; }
    int Seek(u64 newPos) override {
        pos = newPos;
        return 0;
    }
    bool Reserve(u64 size) override {
        bytes.reserve(size);
        return true;
    }

  private:
    std::vector<u8>& bytes;
    u64 pos;
};

}  // namespace

int main() try {
    std::vector<u8> bytes(100, 0xAA);  // what the host keeps ahead of the block file
    VectorOutStream out(bytes);
    CZVLGBlockSaver saver;
    saver.Init(&out, SZVLGZvgBlockHeadInfo());
    SZVLGZvgComp comp;
    comp.classLevel1Name = L"Ground floor";
    comp.compGuidName = L"door";
    saver.AddComp(comp);
    saver.WriteEnd();

    ZVSmartFormat::CZVFTReadBufferInStream in(bytes.data(), bytes.size());
    in.Seek(100);
    CZVLGBlockReader reader;
    if (!reader.Init(&in)) return 1;
    std::printf("%u floor, %u component, behind 100 bytes of the host's\n", reader.GetFloorNum(),
                reader.GetFloorCompNum(0));
    return 0;
} catch (const std::exception& failure) {
    std::fprintf(stderr, "own_stream: %s\n", failure.what());
    return 1;
}
