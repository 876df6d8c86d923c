// The saver from Init to WriteEnd, against one liblzma call per block on the same decoded bytes.

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "bench/Pairs.h"
#include "bench/Payload.h"

using namespace bench;

namespace {

/// Those that the library took for a block: its bytes say so.
CoderSettings SettingsOf(View decoded, View encoded) {
    for (const CoderSettings& settings : {defaultSettings, floorSettings})
        if (std::ranges::equal(Encoded(decoded, settings), encoded)) return settings;
    std::fprintf(stderr, "write_cost: the library has other settings\n");
    std::exit(1);
}

void RegisterPart(const std::shared_ptr<Payload>& payload, Part part) {
    const Bytes file = Written(*payload, part);
    const auto sink = std::make_shared<MemorySink>(2 * file.size() + (1 << 20));
    const auto blocks = std::make_shared<std::vector<std::pair<Bytes, CoderSettings>>>();
    std::size_t largest = 0;
    for (const Block& block : ReadFileParts(file).All()) {
        const Bytes decoded = Decoded(block.encoded, block.decodedSize);
        blocks->emplace_back(decoded, SettingsOf(decoded, block.encoded));
        largest = std::max(largest, decoded.size());
    }
    const auto out = std::make_shared<Bytes>(EncodedBound(largest));
    RegisterPair(
        std::string("write.") + PartName(part), payload->name,
        [payload, part, sink] {
            sink->Rewind();
            WritePayload(*payload, part, sink->Stream());
        },
        [blocks, out] {
            for (const auto& [block, settings] : *blocks)
                benchmark::DoNotOptimize(EncodeInto(block, settings, *out));
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
