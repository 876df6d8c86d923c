// The coder: what its bytes are, what it refuses, and that damage is seen.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "support.h"

namespace {

using namespace support;
using ZVSmartLzma::CZVFTEncodeOpt;

bool Decodes(const Bytes& encoded, Bytes& content, u64 limit = 0xFFFFFFFF) {
    bool ok = false;
    content = Streamed([&](CZVFTOutStream& out) {
        CZVFTReadBufferInStream in(encoded.data(), encoded.size());
        ok = CZVFTLzmaTool::Decode(&in, &out, limit);
    });
    return ok;
}

/// Bytes that compress, but not to nothing.
Bytes Content(std::size_t size) {
    std::mt19937 random(1);
    Bytes content(size);
    for (u8& byte : content) byte = static_cast<u8>(random() % 7);
    return content;
}

TEST(Coder, WritesOneXzStreamThatTellsItsSizes) {
    for (const std::size_t size : {0U, 1U, 100U, 65'735U, 65'736U, 300'000U}) {
        const Bytes content = Content(size);
        const Bytes encoded = Encoded(content);
        // Stream header of CRC64; a block header that has both sizes, or no block; footer.
        EXPECT_EQ(ToHex(Slice(encoded, 0, 12)), Plain("FD377A585A00 0004 E6D6B446"));
        EXPECT_EQ(encoded[12] == 0, size == 0);
        EXPECT_EQ(size == 0 ? encoded.size() == 32 : encoded[13] == 0xC0, true);
        EXPECT_EQ(ToHex(Slice(encoded, encoded.size() - 4, encoded.size())), "0004595A");

        const Bytes padded = Bytes(3, 1) + encoded + Bytes(9, 2);
        CZVFTReadBufferInStream in(padded.data(), padded.size());
        unsigned int decodedSize = 5;
        u64 encodedSize = 0;
        in.Seek(3);
        EXPECT_TRUE(CZVFTLzmaTool::GetAfterDecodeDataSize(&in, decodedSize));
        EXPECT_EQ(decodedSize, size);
        in.Seek(3);
        EXPECT_TRUE(CZVFTLzmaTool::GetEncodedDataSize(&in, encodedSize));
        EXPECT_EQ(encodedSize, encoded.size());
        in.Seek(3);
        EXPECT_TRUE(content == Streamed([&](CZVFTOutStream& out) {
                        EXPECT_TRUE(CZVFTLzmaTool::Decode(&in, &out));
                    }));
        EXPECT_EQ(in.GetPos(), 3 + encoded.size()) << "reads its own bytes exactly";
    }
}

TEST(Coder, OptionsAndFastModeChangeTheBytesAlone) {
    const auto dictionaryByte = [](const Bytes& encoded) {
        // Block header: size, flags, two sizes, then filter 0x21, property size 1, dictionary.
        std::size_t at = 14;
        for (int number = 0; number < 2; ++number)
            while ((encoded[at++] & 0x80) != 0) continue;
        EXPECT_EQ(encoded[at], 0x21);
        return encoded[at + 2];
    };
    const Bytes content = Content(50'000), zeros(5 << 20);
    const CZVFTEncodeOpt asDefault, weak{0, 0}, small{0xFFFFFFFF, 1}, large{6, 0xFFFFFFFF};
    const Bytes normal = Encoded(content);
    EXPECT_TRUE(Encoded(content, &asDefault) == normal);
    EXPECT_FALSE(Encoded(content, &weak) == normal);
    EXPECT_EQ(dictionaryByte(normal), 8) << "64 KiB, the next size above the content";
    EXPECT_EQ(dictionaryByte(Encoded(content, &small)), 0) << "4 KiB";
    EXPECT_EQ(dictionaryByte(Encoded(content, &large)), 28) << "64 MiB";
    EXPECT_EQ(dictionaryByte(Encoded(zeros)), 20) << "4 MiB";
    CZVFTLzmaTool::SetEocodeFastMod(true);
    const Bytes fast = Encoded(content);
    EXPECT_EQ(dictionaryByte(Encoded(zeros)), 18) << "2 MiB";
    CZVFTLzmaTool::SetEocodeFastMod(false);
    EXPECT_FALSE(fast == normal);
    EXPECT_TRUE(Encoded(content) == normal);
    for (const Bytes& encoded : {fast, Encoded(content, &weak), Encoded(content, &large)}) {
        Bytes decoded;
        EXPECT_TRUE(Decodes(encoded, decoded) && decoded == content);
    }
}

/// Records of a count, a flag, a name that many share and a value of their own, in UTF-16.
Bytes Records(u32 count) {
    std::mt19937 random(1);
    Bytes records;
    const auto add = [&](const std::string& text) {
        for (const char unit : text) records.insert(records.end(), {0, static_cast<u8>(unit)});
    };
    for (u32 i = 0; i < count; ++i) {
        records = std::move(records) + BigEndian(i) + Bytes{1};
        for (const char* name : {"Reference", "IsExternal", "LoadBearing", "FireRating", "Width"}) {
            add(std::string("Pset_WallCommon.") + name + '=');
            add(std::to_string(random() % (name[0] == 'W' ? 1000 : 3)));
        }
    }
    return records;
}

TEST(Coder, SearchesTextsInTheirOwnWay) {
    // The byte of the LZMA data's properties, (pb * 5 + lp) * 9 + lc, behind the block's header and
    // the first chunk's.
    const auto parameters = [](const Bytes& encoded) {
        return encoded[12 + (encoded[12] + 1U) * 4 + 5];
    };
    constexpr u8 even = (1 * 5 + 1) * 9 + 3, byPreset = (2 * 5 + 0) * 9 + 3;
    const CZVFTEncodeOpt weak{0, 0};
    const Bytes records = Records(500), numbers = Content(records.size());
    const Bytes encoded = Encoded(records);
    EXPECT_LE(encoded.size(), 3500U) << "where the preset alone comes to 3,808";
    EXPECT_EQ(parameters(encoded), even);
    EXPECT_EQ(parameters(Encoded(records, &weak)), even);
    EXPECT_EQ(parameters(Encoded(Bytes{7} + records)), even) << "wherever it begins";
    EXPECT_EQ(parameters(Encoded(numbers)), byPreset);
    EXPECT_EQ(parameters(Encoded(records + numbers)), byPreset) << "half of it";
    Bytes decoded;
    EXPECT_TRUE(Decodes(encoded, decoded) && decoded == records);
}

/// Takes some bytes in all and no more.
class FullStream : public CZVFTAllocBufferOutStream {
  public:
    FullStream(AllocBuffer* buffer, u64 room) : CZVFTAllocBufferOutStream(buffer), room(room) {}
    u64 Write(const void* bytes, u64 size) override {
        const u64 taken = std::min(size, room);
        room -= taken;
        return CZVFTAllocBufferOutStream::Write(bytes, taken);
    }

  private:
    u64 room;
};

TEST(Coder, FollowsWhatItsStreamsSay) {
    const Bytes content = Content(1000);
    HostInStream slow(content, 3);
    slow.Seek(100);
    const Bytes encoded = Streamed(
        [&](CZVFTOutStream& out) { EXPECT_TRUE(CZVFTLzmaTool::Encode(&slow, &out, nullptr)); });
    EXPECT_TRUE(encoded == Encoded(Slice(content, 100, 1000)));
    OwnedBuffer buffer;
    FullStream first(&buffer, 20), second(&buffer, 20);
    slow.Seek(0);
    EXPECT_FALSE(CZVFTLzmaTool::Encode(&slow, &first, nullptr));
    CZVFTReadBufferInStream in(encoded.data(), encoded.size());
    EXPECT_FALSE(CZVFTLzmaTool::Decode(&in, &second));
}

TEST(Coder, RefusesWhatItCannotTrust) {
    const Bytes encoded = Encoded(Content(1000));
    Bytes decoded;
    EXPECT_TRUE(Decodes(encoded, decoded, 1000));
    EXPECT_FALSE(Decodes(encoded, decoded, 999));
    for (std::size_t at = 0; at < encoded.size(); ++at) {
        EXPECT_FALSE(Decodes(Slice(encoded, 0, at), decoded)) << at;
        Bytes damaged = encoded;
        damaged[at] ^= static_cast<u8>(1 << at % 8);
        EXPECT_FALSE(Decodes(damaged, decoded)) << at;
    }
    // A block header without sizes, as encoders write that do not know them beforehand.
    Bytes unsized = FromHex("FD377A585A00 0004 E6D6B446 02 00 21 01 16 000000 742FE5A3");
    unsized.resize(64);
    unsigned int size = 5;
    CZVFTReadBufferInStream in(unsized.data(), unsized.size());
    EXPECT_FALSE(CZVFTLzmaTool::GetAfterDecodeDataSize(&in, size));
    EXPECT_EQ(size, 5U);
    EXPECT_FALSE(Decodes(unsized, decoded));
}

TEST(Coder, PayloadCutOutOfAFileOpensAsPlainXz) {
    if (std::system("xz --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no xz here";
    const Bytes file =
        Saved(4, 0, [](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", FullGeo()); });
    const Parts parts = PartsOf(file);
    for (const auto& [content, encoded] : {parts.geoBlocks.at(0), parts.index}) {
        const TempFile coded(encoded), plain(content);
        const std::string command = "xz -dc -F xz < " + coded.path + " | cmp - " + plain.path;
        EXPECT_EQ(std::system(command.c_str()), 0);
    }
}

}  // namespace
