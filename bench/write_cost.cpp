// The saver from Init to WriteEnd, against one liblzma call per block on the same decoded bytes.

#include <malloc.h>

#include <memory>

#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;

namespace {

void RegisterPart(const std::shared_ptr<Payload>& payload, Part part) {
    const Bytes file = Written(*payload, part);
    const auto sink = std::make_shared<MemorySink>(2 * file.size() + (1 << 20));
    FileParts parts = ReadFileParts(file);
    const auto floors = std::make_shared<std::vector<Bytes>>(DecodedBlocks(parts.floors));
    parts.floors.clear();
    const auto others = std::make_shared<std::vector<Bytes>>(DecodedBlocks(parts.All()));
    std::size_t largest = 0;
    for (const auto& blocks : {floors, others})
        for (const Bytes& block : *blocks) largest = std::max(largest, block.size());
    const auto out = std::make_shared<Bytes>(EncodedBound(largest));
    RegisterPair(
        std::string("write.") + PartName(part), payload->name,
        [payload, part, sink] {
            sink->Rewind();
            WritePayload(*payload, part, sink->Stream());
        },
        [floors, others, out] {
            for (const Bytes& block : *floors)
                benchmark::DoNotOptimize(EncodeInto(block, floorSettings, *out));
            for (const Bytes& block : *others)
                benchmark::DoNotOptimize(EncodeInto(block, defaultSettings, *out));
        });
}

}  // namespace

int main(int argc, char** argv) {
    // Large buffers are fresh memory each time, on both sides: as in a process that writes one
    // file, and not as the allocator happens to keep the coder's tables between two calls.
    mallopt(M_MMAP_THRESHOLD, 128 << 10);
    return RunPairs(argc, argv, [](const std::string& source) {
        const auto payload = std::make_shared<Payload>(LoadPayload(source));
        RegisterPart(payload, Part::geometry);
        RegisterPart(payload, Part::components);
    });
}
