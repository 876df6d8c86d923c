// Runs the code of README.md and docs/GUIDE.md, which the build copies out of those pages.

#include <gtest/gtest.h>

#include <filesystem>

#include "page_code.h"

namespace {

/// A folder to run in, since the pages' code names its files without one.
class Pages : public testing::Test {
  protected:
    void SetUp() override {
        std::string folder = testing::TempDir() + "pages-XXXXXX";
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        std::filesystem::current_path(folder);
        WriteOneWall();
    }
    void TearDown() override {
        const std::filesystem::path folder = std::filesystem::current_path();
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder);
    }
};

TEST_F(Pages, ListsTheWallAndItsShapeOnce) {
    testing::internal::CaptureStdout();
    ListComponents();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "front wall\n  4 points\n");
}

TEST_F(Pages, AsksBySql) {
    if (!ZVSmartModel::CanQuery()) GTEST_SKIP() << "no SQLite";
    testing::internal::CaptureStdout();
    CountClasses({".", "missing.zvg"});
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Wall: 1\nmissing.zvg: No such file or directory\n");
}

TEST_F(Pages, WalksAndSavesAgain) {
    ZVSmartFormat::CZVFTFileInStream in("wall.zvg");
    CZVLGBlockReader reader;
    ASSERT_TRUE(OpenBlock(in, reader));
    std::vector<SZVLGZvgComp> components;
    std::size_t faces = 0;
    ForEachComponent(reader, [&](const SZVLGZvgComp& comp) {
        ForEachGeometry(reader, comp, [&](const SZVLGZvgGeo& geo) { faces += geo.shells.size(); });
        components.push_back(comp);
    });
    EXPECT_EQ(components.size(), 1u);
    EXPECT_EQ(faces, 1u);
    EXPECT_EQ(LastDamage(reader), "");

    ZVSmartFormat::CZVFTFileOutStream out("again.zvg");
    ASSERT_TRUE(out.Open());
    SaveAll(out, components);
    out.Close();
    ZVSmartFormat::CZVFTFileInStream again("again.zvg");
    CZVLGBlockReader second;
    ASSERT_TRUE(OpenBlock(again, second));
    EXPECT_EQ(second.GetFloorCompNum(0), 1u);

    ZVSmartFormat::CZVFTFileInStream missing("missing.zvg");
    CZVLGBlockReader third;
    EXPECT_FALSE(OpenBlock(missing, third));

    in.Close();
    std::filesystem::resize_file("wall.zvg", std::filesystem::file_size("wall.zvg") - 1);
    ASSERT_FALSE(OpenBlock(in, third));
    EXPECT_NE(LastDamage(third).find("the index block does not decode, at byte "),
              std::string::npos)
        << LastDamage(third);
}

TEST_F(Pages, TheModelLibraryTellsWhatWasWritten) {
    WriteOneSlab("slab.zvg");
    testing::internal::CaptureStdout();
    Describe("slab.zvg");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Ground floor at 0 m: 1 elements\n1 IfcSlab\n");
    const ZVSmartModel::BlockFile file("slab.zvg");
    EXPECT_EQ(FireRating(file, "slab"), "none");
    EXPECT_EQ(FireRating(file, "wall"), "no such element");
    EXPECT_EQ(ExternalWalls(file), 0u);
    EXPECT_EQ(TrianglesToDraw(file), 2u);
    EXPECT_EQ(VolumeOf(file, {0, 0}), 0);
    EXPECT_EQ(CountChanges(file, file), 0u);
    // The floor's height, the slab, the wall.
    EXPECT_EQ(CountChanges(file, ZVSmartModel::BlockFile("wall.zvg")), 3u);
    EXPECT_EQ(ExportWindows(file, "/nowhere/x.glb"), false);
}

}  // namespace
