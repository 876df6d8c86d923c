#include "ZVSmartLzma/LzmaTool.h"

#include <lzma.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <memory>

#include "siblings/format/ByteCoder.h"
#include "siblings/format/LargePages.h"
#include "stream/Failures.h"

// An encoded block is one .xz stream (the .xz file format, version 1.1.0, tukaani.org/xz):
//   stream header 12 bytes
//   block: header (its size in the first byte; compressed and decoded size), LZMA2 data,
//          padding to a multiple of 4, CRC64
//   index: one record of the block's sizes
//   stream footer 12 bytes
// Empty content is header, index of no records and footer: 32 bytes, the thirteenth of them zero.

namespace ZVSmartLzma {

using ZVSmartFormat::AllocBuffer;
using ZVSmartFormat::CZVFTAllocBufferOutStream;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::u8;
using ZVSmartFormat::WithOwnException;

namespace {

constexpr u32 smallestDictionary = 4 * 1024;
constexpr u32 largestDictionary = 64 * 1024 * 1024;
constexpr u64 decoderMemoryLimit = 80ULL * 1024 * 1024;
constexpr u64 largestRatio = 16'384;
constexpr u64 ratioSlack = 65'536;
constexpr std::size_t pieceBytes = 16'384;

std::atomic<bool> fastMode{false};

void* AllocateForCoder(void*, std::size_t count, std::size_t size) {
    void* const memory = std::malloc(count * size);  // whose product liblzma has checked
    PreferLargePages(memory, count * size);
    return memory;
}

void FreeForCoder(void*, void* memory) {
    std::free(memory);
}

/// Of the coder's tables most are looked up at random places.
constexpr lzma_allocator coderMemory{AllocateForCoder, FreeForCoder, nullptr};

/// What a level means while the caller leaves it to the coder.
struct Defaults {
    u32 preset;
    u32 dictionaryCap;
};
constexpr Defaults normalDefaults{6, 4 * 1024 * 1024};
constexpr Defaults fastDefaults{2, 2 * 1024 * 1024};

bool ReadExactly(CZVFTInStream& in, u8* bytes, u64 byteCount) {
    u64 delivered = byteCount;
    return in.Read(bytes, &delivered) && delivered == byteCount;
}

u64 BytesLeft(CZVFTInStream& in) {
    const u64 size = in.GetSize();
    const u64 pos = in.GetPos();
    return pos < size ? size - pos : 0;
}

/// Whether content consists of records of UTF-16, as components with their properties: in samples
/// of it more than two thirds of the bytes belong to pairs of which the first alone is zero and
/// which such a pair follows. In files of real models a seventh does of geometry, three fifths of
/// a table of names.
bool IsMostlyTexts(const u8* data, u64 byteCount) {
    constexpr u64 samples = 16, sampleBytes = 256, looksAt = 4;
    if (byteCount < looksAt) return false;
    const u64 places = byteCount - looksAt + 1;
    const u64 step = std::max(places / samples, sampleBytes);
    u64 seen = 0, found = 0;
    for (u64 begin = 0; begin < places; begin += step) {
        const u64 end = std::min(begin + sampleBytes, places);
        for (const u8* at = data + begin; at != data + end; ++at)
            found += at[0] == 0 && at[1] != 0 && at[2] == 0 && at[3] != 0;
        seen += end - begin;
    }
    return 3 * found > seen;
}

/// Their texts lie at even places. A binary tree has to take in each byte that a match passes over,
/// a hash chain hardly, and records are alike for hundreds of bytes: there it finds longer matches
/// in less time. The fast presets have chains anyway.
void SuitTexts(lzma_options_lzma& options) {
    options.lp = 1;
    options.pb = 1;
    if (options.mode == LZMA_MODE_FAST) return;
    options.mf = LZMA_MF_HC4;
    options.nice_len = 128;
    options.depth = 48;
}

bool ChooseOptions(const u8* data, u64 inputSize, const CZVFTEncodeOpt* opt,
                   lzma_options_lzma& options) {
    const CZVFTEncodeOpt chosen = ChosenOptions(inputSize);
    const u32 level = opt != nullptr && opt->level <= 9 ? opt->level : chosen.level;
    if (lzma_lzma_preset(&options, level)) return false;
    if (IsMostlyTexts(data, inputSize)) SuitTexts(options);
    options.dict_size = opt != nullptr && opt->dictionarySize != 0
                            ? std::clamp(opt->dictionarySize, smallestDictionary, largestDictionary)
                            : chosen.dictionarySize;
    return true;
}

/// What is to be compressed, read to the stream's end and never past it: a memory stream refuses
/// that.
class Content {
  public:
    bool Load(CZVFTInStream& in) {
        size = BytesLeft(in);
        if (size > std::numeric_limits<std::size_t>::max() / 2) return false;
        bytes = std::make_unique_for_overwrite<u8[]>(static_cast<std::size_t>(size));
        for (u64 filled = 0; filled < size;) {
            u64 piece = std::min<u64>(size - filled, 1 << 20);
            if (!in.Read(bytes.get() + filled, &piece) || piece == 0) return false;
            filled += piece;
        }
        return true;
    }
    const u8* Data() const { return bytes.get(); }
    u64 Size() const { return size; }

  private:
    std::unique_ptr<u8[]> bytes;
    u64 size = 0;
};

/// The headers of one stream: all that must be known before decoding it.
struct Headers {
    std::array<u8, LZMA_STREAM_HEADER_SIZE + LZMA_BLOCK_HEADER_SIZE_MAX> bytes;
    std::size_t byteCount = 0;
    u64 decodedSize = 0;
    u64 encodedSize = 0;
};

/// Index and footer of a stream of one block. The index is its indicator byte, the count 1 and
/// the block's two sizes as variable-length integers, padding to 4, CRC32.
u64 TailSize(u64 unpaddedSize, u64 decodedSize) {
    const u64 records = 2 + u64{lzma_vli_size(unpaddedSize)} + lzma_vli_size(decodedSize);
    return (records + 3) / 4 * 4 + 4 + LZMA_STREAM_HEADER_SIZE;
}

/// Whether the coder went well. Being out of memory says nothing about the data and is thrown.
bool IsOk(lzma_ret result) {
    if (result == LZMA_MEM_ERROR) ZVSmartFormat::ThrowNotAllocated();
    return result == LZMA_OK;
}

bool DecodeBlockHeader(const u8* bytes, lzma_check check, lzma_block& block) {
    lzma_filter filters[LZMA_FILTERS_MAX + 1];
    block = {};
    block.version = 1;
    block.check = check;
    block.header_size = lzma_block_header_size_decode(bytes[0]);
    block.filters = filters;
    if (!IsOk(lzma_block_header_decode(&block, nullptr, bytes))) return false;
    lzma_filters_free(filters, nullptr);
    block.filters = nullptr;
    return block.compressed_size != LZMA_VLI_UNKNOWN && block.uncompressed_size != LZMA_VLI_UNKNOWN;
}

bool IsPlausible(const lzma_block& block, u64 decodedLimit) {
    if (block.uncompressed_size > decodedLimit) return false;
    if (block.compressed_size > std::numeric_limits<u32>::max()) return false;
    return block.uncompressed_size <= largestRatio * block.compressed_size + ratioSlack;
}

bool ReadHeaders(CZVFTInStream& in, u64 decodedLimit, Headers& headers) {
    constexpr std::size_t emptyStreamSize = 2 * LZMA_STREAM_HEADER_SIZE + 8;
    constexpr std::size_t firstBytes = LZMA_STREAM_HEADER_SIZE + 1;
    u8* const bytes = headers.bytes.data();
    if (BytesLeft(in) < emptyStreamSize || !ReadExactly(in, bytes, firstBytes)) return false;
    headers.byteCount = firstBytes;

    lzma_stream_flags flags;
    if (lzma_stream_header_decode(&flags, bytes) != LZMA_OK) return false;
    if (!lzma_check_is_supported(flags.check)) return false;
    u8* const blockHeader = bytes + LZMA_STREAM_HEADER_SIZE;
    if (blockHeader[0] == 0) {
        headers.encodedSize = emptyStreamSize;
        return true;
    }

    const std::size_t headerSize = lzma_block_header_size_decode(blockHeader[0]);
    if (!ReadExactly(in, blockHeader + 1, headerSize - 1)) return false;
    headers.byteCount = LZMA_STREAM_HEADER_SIZE + headerSize;
    lzma_block block;
    if (!DecodeBlockHeader(blockHeader, flags.check, block)) return false;
    if (!IsPlausible(block, decodedLimit)) return false;
    headers.decodedSize = block.uncompressed_size;
    headers.encodedSize = LZMA_STREAM_HEADER_SIZE + lzma_block_total_size(&block) +
                          TailSize(lzma_block_unpadded_size(&block), block.uncompressed_size);
    return true;
}

/// Runs one decoder over the bytes of one stream, which it reads in pieces.
class StreamDecoder {
  public:
    explicit StreamDecoder(const Headers& headers)
        : headers(headers),
          unread(headers.encodedSize - headers.byteCount),
          piece(std::make_unique_for_overwrite<u8[]>(pieceBytes)) {
        coder.allocator = &coderMemory;
    }
    ~StreamDecoder() { lzma_end(&coder); }
    StreamDecoder(const StreamDecoder&) = delete;
    StreamDecoder& operator=(const StreamDecoder&) = delete;

    /// Decodes to `out` in pieces.
    bool Run(CZVFTInStream& in, CZVFTOutStream& out) {
        if (!Begin()) return false;
        const auto decoded = std::make_unique_for_overwrite<u8[]>(pieceBytes);
        do {
            coder.next_out = decoded.get();
            coder.avail_out = pieceBytes;
            if (!Step(in)) return false;
            const u64 produced = pieceBytes - coder.avail_out;
            if (produced != 0 && out.Write(decoded.get(), produced) != produced) return false;
        } while (!ended);
        return IsWhole();
    }

    /// Decodes to `bytes`, which has room for what the headers announce.
    bool Run(CZVFTInStream& in, u8* bytes) {
        if (!Begin()) return false;
        coder.next_out = bytes;
        coder.avail_out = static_cast<std::size_t>(headers.decodedSize);
        while (!ended)
            if (!Step(in)) return false;
        return IsWhole();
    }

  private:
    bool Begin() {
        coder.next_in = headers.bytes.data();
        coder.avail_in = headers.byteCount;
        return IsOk(lzma_stream_decoder(&coder, decoderMemoryLimit, 0));
    }
    bool Step(CZVFTInStream& in) {
        if (coder.avail_in == 0 && unread != 0 && !ReadPiece(in)) return false;
        const lzma_ret result = lzma_code(&coder, unread == 0 ? LZMA_FINISH : LZMA_RUN);
        ended = result == LZMA_STREAM_END;
        return ended || IsOk(result);
    }
    bool ReadPiece(CZVFTInStream& in) {
        const u64 byteCount = std::min<u64>(unread, pieceBytes);
        if (!ReadExactly(in, piece.get(), byteCount)) return false;
        coder.next_in = piece.get();
        coder.avail_in = static_cast<std::size_t>(byteCount);
        unread -= byteCount;
        return true;
    }
    bool IsWhole() const {
        return unread == 0 && coder.avail_in == 0 && coder.total_out == headers.decodedSize;
    }

    const Headers& headers;
    u64 unread;
    std::unique_ptr<u8[]> piece;
    lzma_stream coder = LZMA_STREAM_INIT;
    bool ended = false;
};

/// Reads the headers of a stream that is there to its end.
bool ReadHeadersOfWhole(CZVFTInStream& in, u64 decodedLimit, Headers& headers) {
    return ReadHeaders(in, decodedLimit, headers) &&
           headers.encodedSize - headers.byteCount <= BytesLeft(in);
}

bool Encode(const u8* data, u64 byteCount, CZVFTOutStream& out, const CZVFTEncodeOpt* opt) {
    lzma_options_lzma options;
    if (!ChooseOptions(data, byteCount, opt, options)) return false;
    lzma_filter filters[] = {{LZMA_FILTER_LZMA2, &options}, {LZMA_VLI_UNKNOWN, nullptr}};

    const auto inputSize = static_cast<std::size_t>(byteCount);
    const std::size_t bound = lzma_stream_buffer_bound(inputSize);
    if (bound == 0) return false;
    const auto output = std::make_unique_for_overwrite<u8[]>(bound);
    std::size_t outputSize = 0;
    // The single-call encoder: it alone puts the sizes into the block's header.
    if (!IsOk(lzma_stream_buffer_encode(filters, LZMA_CHECK_CRC64, &coderMemory, data, inputSize,
                                        output.get(), &outputSize, bound)))
        return false;
    return out.Write(output.get(), outputSize) == outputSize;
}

bool DecodeToStream(CZVFTInStream& in, CZVFTOutStream& out, u64 decodedLimit) {
    Headers headers;
    if (!ReadHeadersOfWhole(in, decodedLimit, headers)) return false;
    const u64 start = out.GetPos();
    if (headers.decodedSize > std::numeric_limits<u64>::max() - start) return false;
    return out.Reserve(start + headers.decodedSize) && StreamDecoder(headers).Run(in, out);
}

}  // namespace

/// Preset 6 with a dictionary no larger than the input halves the coder's memory and costs at most
/// 1.5 % of size.
CZVFTEncodeOpt ChosenOptions(u64 byteCount) {
    const Defaults& defaults =
        fastMode.load(std::memory_order_relaxed) ? fastDefaults : normalDefaults;
    const u64 dictionary = std::clamp<u64>(byteCount, smallestDictionary, defaults.dictionaryCap);
    return {defaults.preset, static_cast<u32>(dictionary)};
}

bool EncodeBytes(const void* data, u64 byteCount, CZVFTOutStream& out, const CZVFTEncodeOpt* opt) {
    return WithOwnException(
        [&] { return Encode(static_cast<const u8*>(data), byteCount, out, opt); });
}

bool DecodeBytes(CZVFTInStream& in, u64 decodedLimit, AllocBuffer& decoded) {
    return WithOwnException([&] {
        Headers headers;
        if (!ReadHeadersOfWhole(in, decodedLimit, headers)) return false;
        CZVFTAllocBufferOutStream(&decoded).Reserve(headers.decodedSize);
        PreferLargePages(decoded.data, static_cast<std::size_t>(headers.decodedSize));
        return StreamDecoder(headers).Run(in, decoded.data);
    });
}

bool CZVFTLzmaTool::Encode(CZVFTInStream* in, CZVFTOutStream* out, const CZVFTEncodeOpt* opt) {
    return WithOwnException([&] {
        Content input;
        return input.Load(*in) && ZVSmartLzma::Encode(input.Data(), input.Size(), *out, opt);
    });
}

bool CZVFTLzmaTool::Decode(CZVFTInStream* in, CZVFTOutStream* out, u64 decodedLimit) {
    return WithOwnException([&] { return DecodeToStream(*in, *out, decodedLimit); });
}

bool CZVFTLzmaTool::GetAfterDecodeDataSize(CZVFTInStream* in, unsigned int& size) {
    Headers headers;
    if (!ReadHeaders(*in, std::numeric_limits<u32>::max(), headers)) return false;
    size = static_cast<unsigned int>(headers.decodedSize);
    return true;
}

bool CZVFTLzmaTool::GetEncodedDataSize(CZVFTInStream* in, u64& size) {
    Headers headers;
    if (!ReadHeaders(*in, std::numeric_limits<u64>::max(), headers)) return false;
    size = headers.encodedSize;
    return true;
}

void CZVFTLzmaTool::SetEocodeFastMod(bool fast) {
    fastMode.store(fast, std::memory_order_relaxed);
}

}  // namespace ZVSmartLzma
