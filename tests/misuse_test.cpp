// Objects used out of turn and on streams that cannot serve them: an error or a fresh start, never
// a success that is none.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "ZVSmartFormat/FileStream.h"
#include "alloc_hooks.h"
#include "support.h"

namespace {

using namespace support;

constexpr u64 noPosition = 0xFFFFFFFFFFFFFFFF;

/// What a pipe is to a C library: it takes bytes and has no position.
struct PipeOutStream : CZVFTOutStream {
    u64 Write(const void*, u64 size) override { return written += size, size; }
    u64 GetPos() override { return noPosition; }
    int Seek(u64) override { return -1; }
    bool Reserve(u64) override { return true; }
    u64 written = 0;
};

SZVLGParamRuledFace RuledFace() {
    SZVLGParamRuledFace face;
    face.firstColumn = {{0, 0, 0}, {4, 0, 0}};
    face.secondColumn = {{0, 3, 0}, {4, 3, 1}};
    return face;
}

/// Calls every storing operation and tells what each threw.
std::vector<std::string> StoreEverything(CZVLGBlockSaver& saver) {
    SZVLGZvgGeoRelInclude rel;
    return {Thrown([&] { saver.AddIdentificationGeo(L"new", SomeGeo(1)); }),
            Thrown([&] { saver.AddPreviewImage(SomeImage(1, 1)); }),
            Thrown([&] { saver.AddComp(Comp(L"new")); }),
            Thrown([&] { saver.CreateIncludeBlockGeo(SomeGeo(2)); }),
            Thrown([&] { saver.WriteEnd(); })};
}
const std::vector<std::string> allRefused(5, "encode error");

TEST(Misuse, ASaverNeedsAStreamWithAPosition) {
    PipeOutStream pipe;
    CZVLGBlockSaver saver;
    EXPECT_EQ(Thrown([&] { saver.Init(&pipe, {}); }), "encode error");
    EXPECT_EQ(pipe.written, 0U);
    EXPECT_EQ(StoreEverything(saver), allRefused);

    const std::string path = testing::TempDir() + "zvg_misuse_fifo" + std::to_string(getpid());
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    ZVSmartFormat::CZVFTFileOutStream fifo(path);
    EXPECT_TRUE(fifo.Open());
    EXPECT_EQ(Thrown([&] { saver.Init(&fifo, {}); }), "encode error");
    std::filesystem::remove(path);
}

TEST(Misuse, NothingIsStoredBehindTheEnd) {
    CZVLGBlockSaver saver;
    const Bytes file = Streamed([&](CZVFTOutStream& out) {
        saver.Init(&out, {});
        saver.AddComp(Comp(L"c"));
        saver.WriteEnd();
        const u64 end = out.GetPos();
        EXPECT_EQ(StoreEverything(saver), allRefused);
        EXPECT_EQ(out.GetPos(), end);
    });
    EXPECT_EQ(AllComps(file).size(), 1U);
}

TEST(Misuse, AnotherInitOfASaverBeginsAFreshFile) {
    const std::string iniPath = testing::TempDir() + "zvg_misuse" + std::to_string(getpid());
    std::ofstream(iniPath) << "[ZBufferSize]\nclass=7\n";
    const auto fill = [](CZVLGBlockSaver& saver) {
        SZVLGZvgGeoRelInclude rel;
        EXPECT_TRUE(saver.GetRelIncludeByRuledFace(RuledFace(), rel));
        EXPECT_TRUE(saver.IsHaveIdentificationGeo(rel.key));
        const std::wstring include = saver.CreateIncludeBlockGeo(SomeGeo(3));
        SZVLGZvgComp comp = Comp(L"c");
        comp.classLevel4Name = L"class";
        comp.geoRefs.resize(2);
        comp.geoRefs[0].geoIdentification = rel.key;
        comp.geoRefs[1].geoIdentification = include;
        saver.AddComp(comp);
        for (u32 i = 0; i < 5; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
    };
    const Bytes fresh = Saved(3, 0, fill);
    CZVLGBlockSaver saver(3);
    for (const bool isFinished : {false, true}) {
        Streamed([&](CZVFTOutStream& out) {
            saver.Init(&out, {}, iniPath, 1);
            fill(saver);
            if (isFinished) saver.WriteEnd();
        });
        EXPECT_TRUE(fresh == Streamed([&](CZVFTOutStream& out) {
                        saver.Init(&out, {});
                        fill(saver);
                        saver.WriteEnd();
                    }));
    }
    PipeOutStream pipe;
    EXPECT_EQ(Thrown([&] { saver.Init(&pipe, {}); }), "encode error");
    EXPECT_FALSE(saver.IsHaveIdentificationGeo(L"1"));
    EXPECT_EQ(StoreEverything(saver), allRefused) << "the file before is over";
    std::filesystem::remove(iniPath);
}

/// Counts what a reader asks of it.
struct CountingStream : CZVFTReadBufferInStream {
    explicit CountingStream(const Bytes& file)
        : CZVFTReadBufferInStream(file.data(), file.size()) {}
    bool Read(void* buffer, u64* size) override {
        return ++calls, CZVFTReadBufferInStream::Read(buffer, size);
    }
    u64 GetPos() override { return ++calls, CZVFTReadBufferInStream::GetPos(); }
    int Seek(u64 newPos) override { return ++calls, CZVFTReadBufferInStream::Seek(newPos); }
    u64 GetSize() override { return ++calls, CZVFTReadBufferInStream::GetSize(); }
    long calls = 0;
};

std::vector<std::string> AskAll(CZVLGBlockReader& reader) {
    std::vector<std::string> answers;
    for (const Query& query : Queries()) answers.push_back(Ask(query, reader));
    return answers;
}

TEST(Misuse, AnotherInitOfAReaderOpensAsAFreshOneDoes) {
    const Bytes sample = SampleFile(4);
    const Bytes other = Saved(2, 1, [](CZVLGBlockSaver& saver) {
        for (u32 i = 0; i < 4; ++i) saver.AddIdentificationGeo(std::to_wstring(i), SomeGeo(i));
        for (u32 i = 0; i < 6; ++i) saver.AddComp(Comp(L"c", std::to_wstring(i)));
    });
    const Bytes unfinished = Slice(other, 0, 60), foreign(100, 'x');
    CZVLGBlockReader reader;
    CountingStream first(sample), second(other), cut(unfinished), none(foreign);
    EXPECT_TRUE(reader.Init(&first, 1, 1));
    EXPECT_EQ(AskAll(reader), Answers(sample));
    first.calls = 0;
    EXPECT_TRUE(reader.Init(&second));
    EXPECT_EQ(AskAll(reader), Answers(other));
    // Three blocks and five floors are kept again.
    const auto ask = [&] {
        for (u32 i = 0; i < 5; ++i) EXPECT_EQ(reader.GetFloorCompNum(i), 1U);
        for (u32 i = 0; i < 3; ++i) EXPECT_EQ(reader.GetGeoNumInBlock(i), 1U);
    };
    reader.CleanInnerBuffer();
    ask();
    second.calls = 0;
    ask();
    EXPECT_EQ(second.calls, 0);

    EXPECT_FALSE(reader.Init(&cut));
    CZVLGBlockReader fresh;
    fresh.Init(&cut);
    cut.calls = 0;
    EXPECT_EQ(AskAll(reader), AskAll(fresh));
    EXPECT_TRUE(reader.Init(&second));
    EXPECT_EQ(Thrown([&] { reader.Init(&none); }), "it's not zvg file format");
    second.calls = none.calls = 0;
    CZVLGBlockReader untouched;
    EXPECT_EQ(AskAll(reader), AskAll(untouched));
    EXPECT_EQ(first.calls + second.calls + cut.calls + none.calls, 0);
}

/// A host's own stream, which delivers what there is.
struct HostInStream : CZVFTInStream {
    explicit HostInStream(const Bytes& bytes) : bytes(bytes) {}
    bool Read(void* buffer, u64* size) override {
        *size = std::min<u64>(*size, pos < bytes.size() ? bytes.size() - pos : 0);
        if (*size != 0) std::copy_n(&bytes[pos], *size, static_cast<u8*>(buffer));
        pos += *size;
        return true;
    }
    u64 GetPos() override { return pos; }
    int Seek(u64 newPos) override { return pos = newPos, 0; }
    u64 GetSize() override { return bytes.size(); }
    const Bytes& bytes;
    u64 pos = 0;
};

TEST(Misuse, OneRuleForFilesThatAreCutShort) {
    std::vector<FieldSpan> spans;
    Bytes file = PutTogether(PartsOf(SampleFile(4)), &spans);
    std::size_t headEnd = 0;
    for (const FieldSpan& span : spans)
        if (span.name == "floorSectionOffset") headEnd = span.begin;
    ASSERT_GT(headEnd, 100U);
    const std::string path = testing::TempDir() + "zvg_misuse_cut" + std::to_string(getpid());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), std::streamsize(file.size()));
    const auto answer = [](CZVFTInStream& in) -> std::string {
        CZVLGBlockReader reader;
        bool isOpen = false;
        const std::string thrown = Thrown([&] { isOpen = reader.Init(&in); });
        return thrown.empty() ? isOpen ? "true" : "false" : thrown;
    };
    const std::size_t whole = file.size();
    for (;; file.pop_back()) {
        const std::size_t size = file.size();
        std::filesystem::resize_file(path, size);
        CZVFTReadBufferInStream memory(file.data(), size);
        HostInStream host(file);
        ZVSmartFormat::CZVFTFileInStream onDisk(path);
        ASSERT_TRUE(onDisk.Open());
        const std::string right = size == whole     ? "true"
                                  : size >= headEnd ? "false"
                                  : size >= 9       ? "seek over buffer size"
                                                    : "it's not zvg file format";
        EXPECT_EQ(answer(memory), right) << size;
        EXPECT_EQ(answer(onDisk), right) << size;
        EXPECT_EQ(answer(host), right) << size;
        if (file.empty()) break;
    }
    std::filesystem::remove(path);
}

TEST(Misuse, ACoderWithoutMemoryThrowsTheLibrarysException) {
    if (!AllocHooks::available) GTEST_SKIP() << "sanitizers keep malloc for themselves";
    const Bytes content(100'000, 7), encoded = Encoded(content);
    const auto encode = [&] {
        CZVFTReadBufferInStream in(content.data(), content.size());
        OwnedBuffer buffer;
        CZVFTAllocBufferOutStream out(&buffer);
        return CZVFTLzmaTool::Encode(&in, &out, nullptr);
    };
    const auto decode = [&] {
        CZVFTReadBufferInStream in(encoded.data(), encoded.size());
        OwnedBuffer buffer;
        CZVFTAllocBufferOutStream out(&buffer);
        return CZVFTLzmaTool::Decode(&in, &out);
    };
    const auto tellSize = [&] {
        CZVFTReadBufferInStream in(encoded.data(), encoded.size());
        unsigned int size = 0;
        return CZVFTLzmaTool::GetAfterDecodeDataSize(&in, size);
    };
    const auto failEach = [](const auto& run) {
        for (const bool forGood : {false, true}) {
            bool hasFailed = true;
            for (long n = 0; hasFailed; ++n) {
                bool isDone = false, isTold = false, isOther = false;
                AllocHooks::FailAt(n, forGood);
                try {
                    isDone = run();
                } catch (const CZVFTStreamException&) {
                    isTold = true;
                } catch (...) {
                    isOther = true;
                }
                hasFailed = AllocHooks::Stop();
                EXPECT_FALSE(isOther) << "allocation " << n;
                EXPECT_TRUE(isDone != hasFailed && isTold == hasFailed) << "allocation " << n;
            }
        }
    };
    failEach(encode);
    failEach(decode);
    failEach(tellSize);
}

/// The variable-length integer of an .xz header.
void PutVli(Bytes& bytes, u64 number) {
    for (; number >= 0x80; number >>= 7) bytes.push_back(static_cast<u8>(number | 0x80));
    bytes.push_back(static_cast<u8>(number));
}

/// A block that announces 5 GiB, and bytes behind its headers that could be so many.
Bytes HugeBlock() {
    constexpr std::size_t encodedBytes = 400'000;
    Bytes header = FromHex("00 C0");
    PutVli(header, encodedBytes);
    PutVli(header, 5ULL << 30);
    header = header + FromHex("21 01 16");
    header.resize((header.size() + 3) / 4 * 4);
    header[0] = static_cast<u8>(header.size() / 4);
    const u32 crc = Crc32(header.data(), header.size());
    for (int i = 0; i < 4; ++i) header.push_back(static_cast<u8>(crc >> 8 * i));
    return FromHex("FD377A585A00 0004 E6D6B446") + header + Bytes(encodedBytes + 100);
}

TEST(Misuse, ABlockOfMoreThan32BitsIsRefusedWhateverTheLimit) {
    Parts parts = PartsOf(SampleFile(4));
    parts.geoBlocks[0].encoded = HugeBlock();
    const Bytes file = PutTogether(parts);
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.SetDecodedBlockLimit(1ULL << 40);
    ASSERT_TRUE(reader.Init(&in));
    AllocHooks::ResetPeak();
    const std::size_t before = AllocHooks::BytesInUse();
    EXPECT_EQ(reader.GetGeoNumInBlock(0), 0U);
    EXPECT_LT(AllocHooks::PeakBytes() - before, 64 * mebibyte);
}

}  // namespace
