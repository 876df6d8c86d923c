// Files whose blocks hold anything. The mutator works on decoded blocks and compresses them
// again, so that what it changes gets past the checksums to the decoders of records.

#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    support::Exercise(support::Bytes(data, data + size));
    return 0;
}

#ifdef ZVG_LIBFUZZER

#include <algorithm>
#include <random>

extern "C" std::size_t LLVMFuzzerMutate(unsigned char* data, std::size_t size, std::size_t most);

extern "C" std::size_t LLVMFuzzerCustomMutator(unsigned char* data, std::size_t size,
                                               std::size_t most, unsigned int seed) {
    std::minstd_rand random(seed);
    support::Parts parts;
    if (random() % 16 == 0 || !support::TakeApart(support::Bytes(data, data + size), parts))
        return LLVMFuzzerMutate(data, size, most);
    const auto blocks = parts.Blocks();
    support::Block& block = *blocks[random() % blocks.size()];
    const std::size_t contentSize = block.content.size();
    block.content.resize(contentSize + 256);
    block.content.resize(LLVMFuzzerMutate(block.content.data(), contentSize, block.content.size()));
    block.encoded.clear();
    if (random() % 8 == 0) parts.head[1].bytes[3] = static_cast<unsigned char>(random() % 5);
    const support::Bytes file = support::PutTogether(parts);
    if (file.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::copy(file.begin(), file.end(), data);
    return file.size();
}

#endif
