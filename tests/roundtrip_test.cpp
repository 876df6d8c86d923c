// Whole files: what is read back and written again is the same file, whatever the version, the
// place in the stream and the stream; records that copy and move.

#include <gtest/gtest.h>

#include <cstdio>

#include "ZVSmartFormat/FileStream.h"
#include "support.h"

namespace {

using namespace support;
using ZVSmartFormat::CZVFTFileInStream;
using ZVSmartFormat::CZVFTFileOutStream;

struct Model {
    SaveOptions options;
    std::vector<std::pair<std::wstring, SZVLGZvgGeo>> geos;
    std::vector<SZVLGZvgComp> comps;
};

Model RichModel(unsigned int version) {
    Model model;
    model.options = {version, 2, "", {L"first", L"", 5, L"optional", Shifted(), 0}};
    for (u32 i = 0; i < 5; ++i) {
        SZVLGZvgGeo geo = FullGeo();
        geo.subGeos[0].attr = FullAttr();
        geo.subGeos[1].geo = FullGeo();
        // Numbers are written in pieces: some lists need more than one.
        geo.renderMeshes[0].coordPairs.assign(i * 1000, {0.25, i});
        geo.renderMeshes[0].extraIndices.assign(i * 2000, i);
        // The components' rows lead to the last, "i".
        const std::wstring key = i < 4 ? L"shape " + std::to_wstring(9 - i) : L"i";
        model.geos.emplace_back(key, std::move(geo));
    }
    for (u32 i = 0; i < 6; ++i) {
        SZVLGZvgComp comp = FullComp();
        comp.classLevel1Name = i < 3 ? L"" : L"Floor";
        comp.ownerGuidName = L"owner " + std::to_wstring(i % 2);
        comp.classLevel3Name = L"Type " + std::to_wstring(i);
        comp.classLevel4Attr = comp.classLevel2bAttr = comp.compAttr = FullAttr();
        comp.compGuidName = SerialGuid{i + 1, 0, 0, {}};
        comp.geoRefs.resize(i);
        model.comps.push_back(comp);
    }
    return model;
}

void Save(const Model& model, CZVFTOutStream& out) {
    SaveTo(out, model.options, [&](CZVLGBlockSaver& saver) {
        for (const auto& [key, geo] : model.geos) saver.AddIdentificationGeo(key, geo);
        for (const SZVLGZvgComp& comp : model.comps) saver.AddComp(comp);
    });
}
Bytes Saved(const Model& model) {
    return Streamed([&](CZVFTOutStream& out) { Save(model, out); });
}

/// Everything in a file, read through `in`, whose position must never change.
Model Read(CZVFTInStream& in) {
    const u64 base = in.GetPos();
    Model model;
    CZVLGBlockReader reader;
    EXPECT_TRUE(reader.Init(&in));
    reader.GetHeadInfo(model.options.head);
    model.options.version = reader.GetVersion();
    const u32 perBlock = model.options.geosPerBlock = reader.GetGeoNumInBlock(0);
    for (u32 block = 0; block < reader.GetGeoBlockNum(); ++block)
        for (u32 i = 0; i < reader.GetGeoNumInBlock(block); ++i) {
            model.geos.emplace_back();
            EXPECT_TRUE(reader.GetGeoByIndex({block, i}, model.geos.back().second));
            EXPECT_EQ(in.GetPos(), base);
        }
    for (u32 i = 0; i < reader.GetGeoIdentificationNum(); ++i) {
        std::wstring key;
        SZVLGZvgGeoIndex index;
        EXPECT_TRUE(reader.GetGeoIdentificationByIndex(i, key, index));
        model.geos.at(index.blockIndex * perBlock + index.indexInBlock).first = key;
    }
    for (u32 floor = 0; floor < reader.GetFloorNum(); ++floor)
        for (u32 i = 0; i < reader.GetFloorCompNum(floor); ++i) {
            model.comps.emplace_back();
            EXPECT_TRUE(reader.GetCompByIndex({floor, i}, model.comps.back()));
            EXPECT_EQ(reader.GetFloorNameByIndex(floor), model.comps.back().classLevel1Name);
            EXPECT_NE(reader.GetEstimatedDataSize(), 0U);
            EXPECT_EQ(in.GetPos(), base);
        }
    std::vector<SZVLGBlockFinding> findings;
    EXPECT_TRUE(CZVLGBlockVerifier().Verify(&in, findings));
    return model;
}

TEST(RoundTrip, EverythingInMemoryAndInFiles) {
    const std::string path = testing::TempDir() + "zvg_roundtrip_test";
    for (unsigned int version = 0; version <= 4; ++version) {
        const Bytes whole = Saved(RichModel(version));
        for (const std::size_t base : {0U, 1U, 7U}) {
            const Bytes before(base, 0xEE);
            const Bytes placed = Streamed([&](CZVFTOutStream& out) {
                out.Write(before.data(), base);
                Save(RichModel(version), out);
            });
            EXPECT_TRUE(placed == before + whole) << "the place in the stream changes nothing";
            CZVFTReadBufferInStream in(placed.data(), placed.size());
            in.Seek(base);
            const Model read = Read(in);
            EXPECT_TRUE(Saved(read) == whole);

            CZVFTFileOutStream fileOut(path);
            ASSERT_TRUE(fileOut.Open());
            fileOut.Write(before.data(), base);
            Save(read, fileOut);
            fileOut.Close();
            CZVFTFileInStream fileIn(path);
            ASSERT_TRUE(fileIn.Open());
            fileIn.Seek(base);
            EXPECT_TRUE(Saved(Read(fileIn)) == whole);

            const SZVLGZvgComp& comp = read.comps.at(5);
            EXPECT_EQ(comp.geoRefs.at(0).materials.size(), version < 1 ? 0U : 2U);
            EXPECT_EQ(comp.compAttr.flags, version < 2 ? 0U : FullAttr().flags);
            EXPECT_EQ(comp.classLevel4Attr.alpha, 4) << "apart from the colour before version 2";
            EXPECT_EQ(comp.classLevel4Attr.alpha2, version < 3 ? 0xFF : 12);
            const SZVLGZvgGeo& geo = read.geos.at(4).second;
            EXPECT_EQ(geo.blobs.at(0).transf, version < 4 ? CZVIMTransf() : Shifted());
            EXPECT_EQ(geo.renderMeshes.at(0).extraIndices.size(), version < 4 ? 0U : 8000U);
            EXPECT_EQ(geo.renderMeshes.at(0).coordPairs.size(), 4000U);
        }
    }
    std::remove(path.c_str());
}

TEST(RoundTrip, ReadingKeepsListsThatAreNotStored) {
    SZVLGZvgGeo stored, geo = FullGeo();
    stored.blobs.resize(2);
    const Bytes file = support::Saved(
        4, 0, [&](CZVLGBlockSaver& saver) { saver.AddIdentificationGeo(L"k", stored); });
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
    const Bytes file = support::Saved(4, 0, [&](CZVLGBlockSaver& saver) {
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
    SZVLGZvgGeo geo;
    EXPECT_TRUE(opened.reader.GetGeoByIdentification(name, geo));
    EXPECT_EQ(geo.images.size(), 1U);

    const Bytes flat = support::Saved(
        4, 0, [](CZVLGBlockSaver& saver) { EXPECT_TRUE(saver.AddPreviewImage(SomeImage(0, 5))); });
    EXPECT_TRUE(Opened(flat).reader.GetPreviewImage(image));
    EXPECT_EQ(image.pixels, nullptr);
    const Bytes other = support::Saved(4, 0, [&](CZVLGBlockSaver& saver) {
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
