// The seal behind the end of a file, by which the verifier sees every byte.

#include <gtest/gtest.h>

#include "support.h"

namespace {

using namespace support;

/// The CRC-64 of .xz, bit by bit.
u64 SlowCrc(const Bytes& bytes) {
    u64 crc = ~u64{0};
    for (const u8 byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xC96C5795D7870F42 : 0);
    }
    return ~crc;
}

Bytes SealOf(const Bytes& file) {
    const u64 crc = SlowCrc(file);
    return FromHex("7A76677365616C00 00000000") + BigEndian(static_cast<u32>(file.size())) +
           BigEndian(static_cast<u32>(crc >> 32)) + BigEndian(static_cast<u32>(crc));
}

TEST(Seal, IsTheLengthAndTheChecksumOfTheFile) {
    ASSERT_EQ(SlowCrc({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x995DC9BBDF1939FAU);
    const Bytes file = SampleFile(4);
    for (const u64 base : {0U, 7U}) {
        const Bytes sealed = Streamed([&](CZVFTOutStream& out) {
            out.Write(file.data(), base);
            CZVLGBlockSaver saver;
            for (const bool seal : {true, false, true}) {  // each `Init` begins another file
                out.Seek(base);
                saver.SetSeal(seal);
                for (const SaverStep& step : SampleSteps()) step(saver, out);
                EXPECT_EQ(out.GetPos(), base + file.size() + (seal ? 24 : 0));
            }
        });
        ASSERT_EQ(Slice(sealed, base, sealed.size()), file + SealOf(file));
    }
    EXPECT_EQ(Answers(file + SealOf(file)), Answers(file));
    EXPECT_TRUE(Verified(file + SealOf(file)).empty());
}

/// A changed byte that nothing else tells of is told by the seal; one that a block's checksum
/// tells of is not told twice.
TEST(Seal, TellsOfEveryByte) {
    Bytes file = SampleFile(4);
    std::vector<FieldSpan> spans;
    ASSERT_EQ(PutTogether(PartsOf(file), &spans), file);
    const std::size_t text = FieldIn(spans, "firstText").begin + 5;
    const std::size_t coded = FieldIn(spans, "blockSize", 4).begin + 50;
    std::size_t unseen = 0;
    for (u8& byte : file) {
        byte ^= 0x10;
        unseen += VerifiedAlone(file).empty();
        byte ^= 0x10;
    }
    EXPECT_GT(unseen, 100U) << "what is without a seal is not seen";

    file = file + SealOf(file);
    for (std::size_t i = 0; i < file.size(); ++i)
        for (const u8 flip : Bytes{0x01, 0x80, 0xFF}) {
            file[i] ^= flip;
            const Findings findings = VerifiedAlone(file);
            EXPECT_FALSE(findings.empty()) << "byte " << i;
            const bool isOneWound = findings.size() == 1 || (i != text && i != coded);
            EXPECT_TRUE(isOneWound) << findings.back().reason;
            file[i] ^= flip;
        }

    const auto reason = [](const Bytes& bytes) { return Verified(bytes).at(0).reason; };
    EXPECT_EQ(reason(file + SealOf(file)), "48 bytes behind the end of the file");
    EXPECT_EQ(reason(Slice(file, 0, file.size() - 1)), "23 bytes behind the end of the file");
    file[file.size() - 16 + 7] ^= 1;
    EXPECT_EQ(reason(file).find("the seal is for "), 0U);
}

TEST(Seal, WhatCannotBeWrittenIsNoSeal) {
    struct FullOutStream : CZVFTAllocBufferOutStream {
        using CZVFTAllocBufferOutStream::CZVFTAllocBufferOutStream;
        u64 Write(const void* buffer, u64 size) override {
            return size == 24 ? 0 : CZVFTAllocBufferOutStream::Write(buffer, size);
        }
    };
    OwnedBuffer buffer;
    FullOutStream out(&buffer);
    CZVLGBlockSaver saver;
    saver.SetSeal(true);
    saver.Init(&out, {});
    EXPECT_EQ(Thrown([&] { saver.WriteEnd(); }), "encode error");
}

}  // namespace
