#include "bench/Coder.h"

#include <lzma.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

void Check(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "bench: liblzma failed: %s\n", what);
    std::exit(1);
}

}  // namespace

std::size_t EncodeInto(View content, const CoderSettings& settings, Bytes& out) {
    lzma_options_lzma options;
    Check(!lzma_lzma_preset(&options, settings.preset), "preset");
    if (settings.asRecords) {
        options.lp = options.pb = 1;
        options.mf = LZMA_MF_HC4;
        options.nice_len = 128;
        options.depth = 48;
    }
    options.dict_size = static_cast<std::uint32_t>(
        std::clamp<std::size_t>(content.size(), 4096, settings.dictionaryCap));
    lzma_filter filters[] = {{LZMA_FILTER_LZMA2, &options}, {LZMA_VLI_UNKNOWN, nullptr}};
    std::size_t size = 0;
    Check(lzma_stream_buffer_encode(filters, LZMA_CHECK_CRC64, nullptr, content.data(),
                                    content.size(), out.data(), &size, out.size()) == LZMA_OK,
          "encode");
    return size;
}

std::size_t EncodedBound(std::size_t byteCount) {
    return lzma_stream_buffer_bound(byteCount);
}

Bytes Encoded(View content, const CoderSettings& settings) {
    Bytes out(EncodedBound(content.size()));
    out.resize(EncodeInto(content, settings, out));
    return out;
}

std::size_t DecodeInto(View encoded, Bytes& out) {
    std::uint64_t memoryLimit = UINT64_MAX;
    std::size_t read = 0, written = 0;
    Check(lzma_stream_buffer_decode(&memoryLimit, 0, nullptr, encoded.data(), &read, encoded.size(),
                                    out.data(), &written, out.size()) == LZMA_OK,
          "decode");
    return written;
}

Bytes Decoded(View encoded, std::size_t decodedSize) {
    Bytes out(decodedSize);
    Check(DecodeInto(encoded, out) == decodedSize, "decoded size");
    return out;
}

std::size_t DecodedSize(View encoded) {
    lzma_stream_flags footer;
    const auto* const end = encoded.data() + encoded.size() - LZMA_STREAM_HEADER_SIZE;
    Check(lzma_stream_footer_decode(&footer, end) == LZMA_OK, "footer");
    lzma_index* index = nullptr;
    std::uint64_t memoryLimit = UINT64_MAX;
    std::size_t position = 0;
    Check(lzma_index_buffer_decode(&index, &memoryLimit, nullptr, end - footer.backward_size,
                                   &position, footer.backward_size) == LZMA_OK,
          "index");
    const std::size_t size = lzma_index_uncompressed_size(index);
    lzma_index_end(index, nullptr);
    return size;
}

}  // namespace bench
