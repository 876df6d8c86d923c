// Streams and the values on them: growth, bounds, exact texts, literal bytes.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <limits>

#include "ZVSmartFormat/CachedStream.h"
#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartFormat/LzmaReadBufferInStream.h"
#include "support.h"

/// The address sanitizer, where there is one, lets an allocation fail as the system does.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

using namespace support;
using ZVSmartFormat::CZVFTFileInStream;
using ZVSmartFormat::CZVFTFileOutStream;

constexpr u64 huge = std::numeric_limits<u64>::max();

TEST(MemoryOutStream, GrowsByTheRule) {
    struct Step {
        u64 seek, reserve, write, capacity;
    };
    // The position counts, not what was written; writing nothing never grows.
    const Step steps[] = {{0, 0, 0, 0},        {0, 0, 10, 266},    {10, 0, 300, 822},
                          {310, 822, 0, 822},  {310, 900, 0, 900}, {900, 0, 0, 900},
                          {900, 0, 100, 1200}, {0, 0, 1000, 1200}, {1000, 0, 200, 1200}};
    const Bytes bytes(1000);
    OwnedBuffer buffer;
    CZVFTAllocBufferOutStream out(&buffer);
    for (const Step& step : steps) {
        EXPECT_EQ(out.Seek(step.seek), 0);
        EXPECT_TRUE(out.Reserve(step.reserve));
        EXPECT_EQ(out.Write(bytes.data(), step.write), step.write);
        EXPECT_EQ(out.GetPos(), step.seek + step.write);
        EXPECT_EQ(buffer.capacity, step.capacity);
    }
    for (const u64 size : {huge, huge - 255, huge - 1200, huge / 2}) {
        EXPECT_EQ(Thrown([&] { out.Write("x", size); }), "bad relloc memory") << size;
        EXPECT_EQ(Thrown([&] { out.Reserve(size); }), "bad malloc memory") << size;
    }
    EXPECT_EQ(Thrown([&] { out.Seek(1201); }), "seek over buffer size");
    EXPECT_EQ(buffer.capacity, 1200U);
    EXPECT_EQ(out.GetPos(), 1200U);
}

TEST(MemoryInStream, RefusesWhatIsNotThere) {
    CZVFTReadBufferInStream in("abcd", 4);
    char bytes[4] = {};
    in.Seek(1);
    for (const u64 wanted : {u64{4}, huge, huge - 1}) {
        u64 size = wanted;
        EXPECT_FALSE(in.Read(bytes, &size));
        EXPECT_EQ(size, wanted);
    }
    EXPECT_EQ(Thrown([&] { in.Seek(5); }), "seek over buffer size");
    EXPECT_EQ(in.GetPos(), 1U);
    EXPECT_EQ(bytes[0], 0) << "no partial read";
    EXPECT_EQ(in.Seek(4), 0);
    u64 size = 1;
    EXPECT_FALSE(in.Read(bytes, &size));
    size = 0;
    EXPECT_TRUE(in.Read(bytes, &size));
}

TEST(CachedInStream, AsksSeldomAndForgetsWhatIsOld) {
    Bytes bytes((8 << 20) + 5);
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<u8>(i ^ (i >> 13));
    int requests = 0;
    u64 asked = 0;
    bool fails = false;
    ZVSmartFormat::CZVFTCachedInStream in(
        [&](u64 position, void* buffer, u64 size) {
            ++requests;
            asked += size;
            EXPECT_TRUE(position % 4096 == 0 && position + size <= bytes.size());
            std::memcpy(buffer, bytes.data() + position, size);
            return fails ? size - 1 : size;
        },
        bytes.size(), 1 << 20);
    const auto read = [&](u64 position, u64 wanted) {
        const u64 begin = std::min<u64>(position, bytes.size());
        const u64 there = std::min<u64>(wanted, bytes.size() - begin);
        Bytes got(wanted);
        in.Seek(position);
        return in.Read(got.data(), &wanted) && wanted == there && in.GetPos() == position + there &&
               std::memcmp(got.data(), bytes.data() + begin, there) == 0;
    };
    EXPECT_TRUE(read(100, 4) && read(70'000, 180'000));
    EXPECT_EQ(requests, 1) << "the first brings 256 KiB";
    EXPECT_TRUE(read(262'143, 3));
    EXPECT_TRUE(read(bytes.size() - 3, 9) && read(bytes.size(), 1) && read(huge, 1));
    EXPECT_EQ(requests, 3);
    EXPECT_TRUE(read(1, bytes.size() - 2)) << "more than is kept";
    EXPECT_LE(requests, 12);
    const int before = requests;
    fails = true;
    EXPECT_FALSE(read(0, 1));
    in.Expect(300'000, 400'000);
    fails = false;
    EXPECT_TRUE(read(0, 1));
    EXPECT_EQ(requests, before + 3) << "what cannot be had is left to reading";

    for (const u64 size : {u64{400'000}, u64{3} << 20}) {  // the second is more than is kept
        requests = 0;
        asked = 0;
        EXPECT_FALSE(in.Holds(u64{4} << 20, size));
        in.Expect(u64{4} << 20, size);
        EXPECT_LT(asked, size + 4096);
        EXPECT_TRUE(in.Holds(u64{4} << 20, size));
        EXPECT_FALSE(in.Holds((u64{4} << 20) - 1, 1) || in.Holds(u64{4} << 20, size + 4096));
        EXPECT_FALSE(in.Holds(bytes.size(), 1) || in.Holds(huge, huge));
        EXPECT_TRUE(read(u64{4} << 20, 5) && read((u64{4} << 20) + size / 2, size / 2));
        EXPECT_EQ(requests, 1);
        in.Expect((u64{4} << 20) + 70'000, size - 70'000);
        in.Expect(bytes.size(), 1);
        in.Expect(huge, huge);
        in.Expect(0, 0);
        EXPECT_EQ(requests, 1) << "nothing is missing";
        EXPECT_TRUE(read(1, 1 << 20));
    }
}

TEST(LzmaInStream, CopiesSmallBuffersAndShortensReads) {
    ZVSmartFormat::CZVFTLzmaReadBufferInStream in;
    for (const std::size_t size : {65'735U, 65'736U, 0U, 70'000U, 3U}) {
        Bytes bytes(size, 7), read(80'000, 1);
        in.SetBuffer(bytes.data(), size);
        bytes.assign(size, 9);
        u64 count = read.size();
        EXPECT_TRUE(in.Read(read.data(), &count));
        EXPECT_EQ(count, size);
        EXPECT_EQ(read[0], size == 0 ? 1 : size < 65'736 ? 7 : 9) << size;
        EXPECT_EQ(read[size + 1], 1) << "nothing behind the data";
        const u64 capacity = std::max<u64>(size, 65'736);
        EXPECT_EQ(in.Seek(capacity), 0);
        count = 1;
        EXPECT_TRUE(in.Read(read.data(), &count));
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(Thrown([&] { in.Seek(capacity + 1); }), "seek over buffer size");
        EXPECT_EQ(in.GetSize(), size);
    }
}

TEST(FileStreams, OpenReadAndMeasure) {
    const TempFile file;
    const std::string& path = file.path;
    std::filesystem::remove(path);
    EXPECT_FALSE(CZVFTFileInStream("").Open());
    EXPECT_FALSE(CZVFTFileOutStream("").Open());
    EXPECT_FALSE(CZVFTFileInStream(path).Open());
    CZVFTFileOutStream out(path);
    ASSERT_TRUE(out.Open());
    EXPECT_EQ(out.Write("0123456789", 10), 10U);
    EXPECT_EQ(out.Seek(2), 0);
    EXPECT_EQ(out.Write("xy", 2), 2U);
    EXPECT_EQ(out.GetPos(), 4U);
    EXPECT_TRUE(out.Reserve(huge));
    out.Close();

    CZVFTFileInStream in(path);
    ASSERT_TRUE(in.Open());
    in.Seek(3);
    EXPECT_EQ(in.GetSize(), 10U);
    EXPECT_EQ(in.GetPos(), 3U);
    char bytes[20] = {};
    u64 size = 0;
    EXPECT_TRUE(in.Read(nullptr, &size));
    size = sizeof bytes;
    EXPECT_TRUE(in.Read(bytes, &size)) << "short at the end is no failure";
    EXPECT_EQ(size, 7U);
    EXPECT_STREQ(bytes, "y456789");
    ASSERT_TRUE(out.Open());
    EXPECT_EQ(in.GetSize(), 0U) << "opening for writing empties";
    CZVFTFileInStream folder(testing::TempDir());
    if (folder.Open()) {
        EXPECT_FALSE(folder.Read(bytes, &size)) << "a read error is one";
    }
}

TEST(Serial, ValuesAreBigEndian) {
    const SerialGuid guid = {1, 0x0203, 0x0405, {6, 7, 8, 9, 10, 11, 12, 13}};
    const u32 words[] = {1, 0xA0B0C0D0};
    const double reals[] = {1.0, -2.0};
    const Bytes bytes = Streamed([&](CZVFTOutStream& out) {
        CZVFTSerialWriter writer(&out);
        writer.WriteU8(0xFE);
        writer.WriteU16(0x1234);
        writer.WriteU32(1);
        writer.WriteU64(0x0102030405060708);
        writer.WriteF64(1.0);
        writer.WriteU32Array(words, 2);
        writer.WriteF64Array(reals, 2);
        for (const SerialKey& key : {SerialKey(guid, L"x"), SerialKey(guid), SerialKey()})
            writer.WriteKey(key);
    });
    EXPECT_EQ(ToHex(bytes), Plain("FE 1234 00000001 0102030405060708 3FF0000000000000"
                                  "00000001 A0B0C0D0 3FF0000000000000 C000000000000000"
                                  "00000001 0078"
                                  "00000000 0000000000000001 0203 0405 060708090A0B0C0D"
                                  "00000004 006E006F006E0065"));
    Bytes toRead = bytes;
    toRead[1 + 2 + 4 + 8 + 8 + 8 + 16 + 6 + 4] = 0xFF;  // the upper half of Data1 is ignored
    CZVFTReadBufferInStream in(toRead.data(), toRead.size());
    CZVFTSerialReader reader(&in);
    u32 readWords[2];
    double readReals[2];
    EXPECT_EQ(reader.ReadU8(), 0xFE);
    EXPECT_EQ(reader.ReadU16(), 0x1234);
    EXPECT_EQ(reader.ReadU32(), 1U);
    EXPECT_EQ(reader.ReadU64(), 0x0102030405060708U);
    EXPECT_EQ(reader.ReadF64(), 1.0);
    reader.ReadU32Array(readWords, 2);
    reader.ReadF64Array(readReals, 2);
    EXPECT_EQ(readWords[1], words[1]);
    EXPECT_EQ(readReals[1], -2.0);
    SerialKey key(guid, L"old");
    reader.ReadKey(key);
    EXPECT_EQ(key, SerialKey(guid, L"x")) << "the GUID stays under a name";
    key.guid = SerialGuid();
    reader.ReadKey(key);
    EXPECT_EQ(key, SerialKey(guid));
    reader.ReadKey(key);
    EXPECT_EQ(key.name, L"none");
}

TEST(Serial, TextIsUtf16) {
    const wchar_t high = 0xD83C, low = 0xDFE0;
    std::vector<std::pair<std::wstring, std::string>> cases = {
        {L"", "00000000"},
        {L"AB", "00000002 0041 0042"},
        {L"\u00E9\uFFFD", "00000002 00E9 FFFD"},
        {{L'\0', L'a'}, "00000002 0000 0061"},
        {L"\U0001F3E0a", "00000003 D83C DFE0 0061"},
        {L"\U0010FFFF", "00000002 DBFF DFFF"},
        {{high, L'a'}, "00000002 D83C 0061"},
        {{low, high}, "00000002 DFE0 D83C"}};
    // Lengths around those at which text may take another path.
    for (const u32 length : {63U, 64U, 65U, 126U, 127U, 5000U}) {
        std::string hex = ToHex(BigEndian(length + 1)) + "D83CDFE0";
        for (u32 i = 1; i < length; ++i) hex += "0078";
        cases.emplace_back(L"\U0001F3E0" + std::wstring(length - 1, L'x'), hex);
    }
    const auto written = [](const std::wstring& text) {
        return Streamed([&](CZVFTOutStream& out) { CZVFTSerialWriter(&out).WriteWString(text); });
    };
    for (const auto& [text, hex] : cases) {
        const Bytes bytes = written(text);
        EXPECT_EQ(ToHex(bytes), Plain(hex));
        CZVFTReadBufferInStream in(bytes.data(), bytes.size());
        std::wstring read = L"something longer than that";
        CZVFTSerialReader(&in).ReadWString(read);
        EXPECT_EQ(read, text) << hex;
    }
    if (sizeof(wchar_t) == 4) {
        EXPECT_EQ(ToHex(written({static_cast<wchar_t>(0x110000)})), "00000001FFFD");
    }
    for (const char* hex : {"FFFFFFFF 0041", "00000002 0041 00", "80000000"}) {
        const Bytes bytes = FromHex(hex);
        CZVFTReadBufferInStream in(bytes.data(), bytes.size());
        std::wstring text;
        EXPECT_EQ(Thrown([&] { CZVFTSerialReader(&in).ReadWString(text); }),
                  "seek over buffer size")
            << hex;
    }
}

}  // namespace
