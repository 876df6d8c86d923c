// Whole files: what is written comes back, whatever the version, through a file and behind other
// bytes; records that copy and move.

#include <gtest/gtest.h>

#include "ZVSmartFormat/FileStream.h"
#include "support.h"

namespace {

using namespace support;

/// Numbers are written in pieces: some of its lists need more than one.
SZVLGZvgGeo LargeGeo() {
    SZVLGZvgGeo geo = FullGeo();
    geo.subGeos[0].attr = FullAttr();
    geo.subGeos[1].geo = FullGeo();
    geo.renderMeshes[0].coordPairs.assign(4000, {0.25, 4});
    geo.renderMeshes[0].extraIndices.assign(8000, 4);
    return geo;
}

SZVLGZvgComp CompNumber(u32 i) {
    SZVLGZvgComp comp = FullComp();
    comp.classLevel1Name = i < 3 ? L"" : L"Floor";
    comp.ownerGuidName = L"owner " + std::to_wstring(i % 2);
    comp.classLevel3Name = L"Type " + std::to_wstring(i);
    comp.classLevel4Attr = comp.classLevel2bAttr = comp.compAttr = FullAttr();
    comp.compGuidName = SerialGuid{i + 1, 0, 0, {}};
    comp.geoRefs.resize(i);
    return comp;
}

TEST(RoundTrip, EverythingThroughFiles) {
    constexpr u64 base = 7;
    const TempFile onDisk;
    for (unsigned int version = 0; version <= 4; ++version) {
        ZVSmartFormat::CZVFTFileOutStream out(onDisk.path);
        ASSERT_TRUE(out.Open());
        out.Write("ahead of", base);
        SaveTo(out, {version, 2, "", {}}, [](CZVLGBlockSaver& saver) {
            // The components' rows lead to the last, "i".
            for (const wchar_t* const key : {L"9", L"8", L"7", L"6", L"i"})
                saver.AddIdentificationGeo(key, LargeGeo());
            for (u32 i = 0; i < 6; ++i) saver.AddComp(CompNumber(i));
        });
        out.Close();
        ZVSmartFormat::CZVFTFileInStream in(onDisk.path);
        ASSERT_TRUE(in.Open());
        in.Seek(base);
        CZVLGBlockReader reader;
        ASSERT_TRUE(reader.Init(&in));
        for (u32 i = 0; i < 5; ++i) {
            SZVLGZvgGeo geo;
            ASSERT_TRUE(reader.GetGeoByIndex({i / 2, i % 2}, geo));
            EXPECT_TRUE(version < 4 || Dump(geo) == Dump(LargeGeo()));
            EXPECT_EQ(geo.blobs.at(0).transf, version < 4 ? CZVIMTransf() : Shifted());
            EXPECT_EQ(geo.renderMeshes.at(0).extraIndices.size(), version < 4 ? 0U : 8000U);
            EXPECT_EQ(geo.renderMeshes.at(0).coordPairs.size(), 4000U);
        }
        for (u32 i = 0; i < 6; ++i) {
            SZVLGZvgComp comp;
            ASSERT_TRUE(reader.GetCompByIndex({i / 3, i % 3}, comp));
            EXPECT_TRUE(version < 3 || Dump(comp) == Dump(CompNumber(i)));
            EXPECT_EQ(comp.compAttr.flags, version < 2 ? 0U : FullAttr().flags);
            EXPECT_EQ(comp.classLevel4Attr.alpha, 4) << "apart from the colour before version 2";
            EXPECT_EQ(comp.classLevel4Attr.alpha2, version < 3 ? 0xFF : 12);
            const std::size_t materials = i == 0 ? 0 : comp.geoRefs.at(0).materials.size();
            EXPECT_EQ(materials, i == 0 || version < 1 ? 0U : 2U);
        }
        EXPECT_EQ(in.GetPos(), base);
        Findings findings;
        EXPECT_TRUE(CZVLGBlockVerifier().Verify(&in, findings));
    }
}

TEST(RoundTrip, ReadingKeepsListsThatAreNotStored) {
    SZVLGZvgGeo stored, geo = FullGeo();
    stored.blobs.resize(2);
    const Bytes file =
        Saved(4, 0, [&](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", stored); });
    ASSERT_TRUE(Opened(file).reader.GetGeoByIdentification(L"k", geo));
    ASSERT_EQ(geo.blobs.size(), 2U);
    EXPECT_EQ(geo.blobs[0].data, nullptr);
    geo.blobs = FullGeo().blobs;
    EXPECT_TRUE(RecordBytes(4, geo) == RecordBytes(4, FullGeo()));
}

/// Blob and image own their bytes alike; `bytes` and `size` get at them.
template <class Record, class Make>
void CheckOwnership(Make make, u8* Record::*bytes, u32 Record::*size) {
    Record source = make();
    Record copy(source);
    EXPECT_NE(copy.*bytes, source.*bytes);
    EXPECT_EQ((copy.*bytes)[7], (source.*bytes)[7]);
    copy = *&copy;
    EXPECT_NE(copy.*bytes, nullptr);
    const u8* const kept = source.*bytes;
    Record moved(std::move(source));
    EXPECT_EQ(moved.*bytes, kept);
    EXPECT_EQ(source.*bytes, nullptr);
    moved = std::move(copy);  // over bytes of its own
    EXPECT_EQ(copy.*bytes, nullptr);
    EXPECT_EQ(copy.*size, 0U);
    EXPECT_NE(moved.*bytes, nullptr);

    source = make();
    std::swap(source.*size, copy.*size);
    EXPECT_EQ(Record(source).*bytes, nullptr) << "no size, no bytes";
    copy.*bytes = nullptr;
    EXPECT_EQ(Record(copy).*bytes, nullptr) << "no bytes, whatever the size";
    EXPECT_EQ(Record(copy).*size, copy.*size);
    std::vector<Record> list;
    for (int i = 0; i < 20; ++i) list.push_back(moved);
    list.erase(list.begin(), list.begin() + 5);
    EXPECT_EQ((list.back().*bytes)[7], (moved.*bytes)[7]);
}

TEST(Records, OwnTheirBuffers) {
    CheckOwnership([] { return SomeBlob(8); }, &SZVLGZvgGeoBlob::data, &SZVLGZvgGeoBlob::dataSize);
    CheckOwnership([] { return SomeImage(2, 1); }, &SZVLGZvgGeoImage::pixels,
                   &SZVLGZvgGeoImage::width);

    // A record takes over one that lies inside itself.
    SZVLGZvgGeo geo = FullGeo(), copy = geo;
    const Bytes inner = RecordBytes(4, geo.subGeos[1].geo);
    geo = geo.subGeos[1].geo;
    copy = std::move(copy.subGeos[1].geo);
    EXPECT_TRUE(RecordBytes(4, geo) == inner && RecordBytes(4, copy) == inner);
    const SZVLGZvgGeo moved = std::move(geo);
    EXPECT_TRUE(geo.IsEmpty());
    EXPECT_FALSE(moved.IsEmpty());
}

TEST(Preview, FirstOneStaysUnderItsName) {
    const wchar_t* const name = L"mater_zvg_preview_image_indent";
    const Bytes file = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        EXPECT_FALSE(saver.AddPreviewImage(SZVLGZvgGeoImage()));
        EXPECT_FALSE(saver.IsHaveIdentificationGeo(name));
        EXPECT_TRUE(saver.AddPreviewImage(SomeImage(2, 3)));
        EXPECT_FALSE(saver.AddPreviewImage(SomeImage(4, 4)));
    });
    Opened opened(file);
    SZVLGZvgGeoImage image = SomeImage(9, 9);
    image.transf = Shifted();
    ASSERT_TRUE(opened.reader.GetPreviewImage(image));
    EXPECT_EQ(std::make_pair(image.width, image.height), std::make_pair(2U, 3U));
    EXPECT_EQ(image.name, name);
    EXPECT_TRUE(image.transf.identity());
    EXPECT_EQ(Bytes(image.pixels, image.pixels + 24), Bytes(24, 0xCD));
    EXPECT_NE(Ask(ask::Geo(name), opened.reader), "");

    const Bytes flat =
        Saved(4, 0, [](auto& saver) { EXPECT_TRUE(saver.AddPreviewImage(SomeImage(0, 5))); });
    EXPECT_TRUE(Opened(flat).reader.GetPreviewImage(image));
    EXPECT_EQ(image.pixels, nullptr);
    const Bytes other = Saved(4, 0, [&](CZVLGBlockSaver& saver) {
        saver.AddIdentificationGeo(name, SomeGeo(1));
        EXPECT_FALSE(saver.AddPreviewImage(SomeImage(1, 1)));
    });
    EXPECT_FALSE(Opened(other).reader.GetPreviewImage(image));
    EXPECT_EQ(image.height, 5U) << "unchanged";
}

TEST(SelfTest, Passes) {
    EXPECT_TRUE(CZVLGBlockSaver::Test());
}

}  // namespace
