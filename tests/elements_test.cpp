#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>
#include <tuple>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Builder.h"
#include "failure_of.h"
#include "support.h"

// A block file's elements in plain values, and how they are found.

using namespace ZVSmartModel;
using support::Bytes;

namespace {

NewElement Made(const char* guid, const char* className, std::optional<std::size_t> floor) {
    NewElement element;
    element.guid = guid;
    element.className = className;
    element.floor = floor;
    return element;
}

/// Two floors, four elements.
Bytes House() {
    return support::Streamed([](support::CZVFTOutStream& out) {
        BuilderOptions options;
        options.title = "a house";
        options.building = {"b", "House", "", "s", "Hill"};
        Builder builder(out, options);
        builder.AddFloor({"Ground", -0.5, 3});
        builder.AddFloor({"1", 2.5, 0});  // named like a number
        NewElement wall = Made("wall", "IfcWall", 0);
        wall.name = "Süd";
        wall.predefinedType = "SOLIDWALL";
        wall.typeName = "W 300";
        wall.properties = {{"Pset_Wall", "Width", "12.5", "length", "ft"},
                           {"Pset_Wall", "Mark", "7", "text", ""},
                           {"", "Note", "a.b", "text", ""}};
        wall.materials = {
            {"Plaster", "", 0.02, {}},
            {"Brick", "masonry", 0.28, {{"Thermal", "Lambda", "0.6", "real", "W/mK"}}}};
        wall.group = "zone";
        builder.AddElement(wall);
        builder.AddElement(Made("room", "IfcSpace", 0));
        NewElement door = Made("door", "IfcDoor", 1);
        door.parents = {"wall", "leaf"};
        door.name = "Süd";
        builder.AddElement(door);
        builder.AddElement(Made("project", "IfcProject", std::nullopt));
        builder.Finish();
    });
}

std::vector<std::string> Guids(const BlockFile& file, const Selection& selection) {
    std::vector<std::string> guids;
    file.ForEach(selection, [&](const Element& element) {
        guids.push_back(element.guid);
        return true;
    });
    return guids;
}

using Texts = std::vector<std::string>;

TEST(Elements, ComeInPlainValues) {
    const BlockFile file(House());
    EXPECT_EQ(file.Info().firstText, "a house");
    EXPECT_EQ(file.Info().version, 4u);
    EXPECT_EQ(file.ElementCount(), 4u);
    const std::vector<Floor> floors = file.Floors();
    ASSERT_EQ(floors.size(), 3u);
    EXPECT_EQ(floors[0].name, "Ground");
    EXPECT_EQ(floors[0].elevation, -0.5);
    EXPECT_EQ(floors[0].height, 3);
    EXPECT_EQ(floors[0].elements, 2u);
    EXPECT_EQ(floors[2].name, "unassigned");
    const std::vector<ClassCount> classes = file.Classes();
    ASSERT_EQ(classes.size(), 4u);
    EXPECT_EQ(classes[0].className, "IfcDoor");
    EXPECT_EQ(classes[0].elements, 1u);
    EXPECT_EQ(file.Preview().width, 0u);

    const Element wall = file.Read({0, 0});
    EXPECT_EQ(wall.guid, "wall");
    EXPECT_EQ(wall.name, "Süd");
    EXPECT_EQ(wall.floorName, "Ground");
    EXPECT_EQ(wall.className + wall.predefinedType + wall.typeName, "IfcWallSOLIDWALLW 300");
    EXPECT_EQ(wall.materialName, "Plaster");
    EXPECT_EQ(wall.buildingName + wall.siteName, "HouseHill");
    EXPECT_EQ(wall.group, "zone");
    EXPECT_EQ(wall.colour, std::nullopt);
    EXPECT_EQ(wall.properties.size(), 4u);
    ASSERT_NE(wall.Find("Pset_Wall", "Width"), nullptr);
    EXPECT_EQ(wall.Find("Pset_Wall", "Width")->Number(), 12.5);
    EXPECT_EQ(wall.Find("Pset_Wall", "Width")->unit, "ft");
    EXPECT_EQ(wall.Find("Pset_Wall", "Mark")->Number(), std::nullopt);  // a text
    EXPECT_EQ(wall.Find("", "Note")->value, "a.b");
    ASSERT_EQ(wall.materials.size(), 2u);
    EXPECT_EQ(wall.materials[1].category, "masonry");
    EXPECT_EQ(wall.materials[1].thickness, 0.28);
    EXPECT_EQ(wall.materials[1].properties.back().FullName(), "Thermal.Lambda");
    EXPECT_EQ(file.Read({1, 0}).parents, Texts({"wall", "leaf"}));
    EXPECT_EQ(file.Read({1, 0}).group, "");
}

/// Elements whose texts are of all lengths, ASCII but for one character somewhere, under names that
/// most of them share and names that none does.
TEST(Elements, KeepTheirTexts) {
    std::vector<std::vector<Property>> all;
    for (std::size_t i = 0; i < 400; ++i) {
        std::vector<Property>& properties = all.emplace_back();
        for (std::size_t length = 0; length < 21; ++length) {
            std::string text(length, 'a');
            if (length != 0) text[length - 1] = 'z';
            const char* const others[] = {"é", "漢", "𝄞"};
            if (i % 4 != 3) text.insert(i % (length + 1), others[i % 4]);
            properties.push_back({"Set", "Name" + std::to_string(length), text, "text", ""});
        }
        properties.push_back(
            {"Set" + std::to_string(i), std::string(40, char('a' + i % 26)), "1", "length", "mm²"});
        properties.push_back({"", "LayerThickness@", "x", "text", ""});
        std::rotate(properties.begin(), properties.begin() + std::ptrdiff_t(i % 7),
                    properties.end());
    }
    const BlockFile file(support::Streamed([&](support::CZVFTOutStream& out) {
        Builder builder(out);
        for (std::size_t i = 0; i < all.size(); ++i) {
            NewElement element = Made(("e" + std::to_string(i)).c_str(), "IfcWall", std::nullopt);
            element.properties = all[i];
            builder.AddElement(element);
        }
        builder.Finish();
    }));
    std::size_t next = 0;
    file.ForEachView({}, [&](const ElementView& element) {
        const std::vector<Property>& right = all[next++];
        EXPECT_EQ(element.properties.size(), right.size());
        for (std::size_t i = 0; i < std::min(right.size(), element.properties.size()); ++i) {
            const PropertyView& read = element.properties[i];
            const Property& made = right[i];
            EXPECT_EQ(std::tie(read.set, read.name, read.value, read.kind, read.unit),
                      std::tie(made.set, made.name, made.value, made.kind, made.unit));
        }
        return true;
    });
    EXPECT_EQ(next, all.size());
}

TEST(Elements, AreFoundAndSelected) {
    const BlockFile file(House());
    EXPECT_EQ(file.FindGuid("door"), (ElementIndex{1, 0}));
    EXPECT_EQ(file.FindGuid("Door"), std::nullopt);
    EXPECT_EQ(file.FindName("Süd"), (std::vector<ElementIndex>{{0, 0}, {1, 0}}));
    EXPECT_EQ(file.PartsOf("wall"), (std::vector<ElementIndex>{{1, 0}}));
    EXPECT_TRUE(file.PartsOf("door").empty());

    EXPECT_EQ(Guids(file, {}), Texts({"wall", "room", "door", "project"}));
    EXPECT_EQ(Guids(file, {"Ground", {}, {}, false}), Texts({"wall"}));
    EXPECT_EQ(Guids(file, {"1", {}, {}, true}), Texts({"door"}));
    EXPECT_EQ(Guids(file, {std::nullopt, {"IfcSpace", "IfcDoor"}, {}, false}),
              Texts({"room", "door"}));
    EXPECT_EQ(Guids(file, {std::nullopt, {}, {{1, 0}, {0, 1}, {9, 9}}, false}),
              Texts({"room", "door"}));
    EXPECT_EQ(FailureOf([&] { Guids(file, {"Roof", {}, {}, true}); }), Status::NotFound);
    EXPECT_EQ(FailureOf([&] { file.Read({0, 2}); }), Status::NotFound);
    EXPECT_EQ(FailureOf([&] { file.Read({3, 0}); }), Status::NotFound);
    int seen = 0;
    file.ForEach({}, [&](const Element& element) {
        file.FindGuid(element.guid);  // the file may be asked meanwhile
        return ++seen < 2;
    });
    EXPECT_EQ(seen, 2);
}

TEST(Elements, DamageIsToldFromAbsence) {
    support::Parts parts = support::PartsOf(House());
    parts.floors[1].block.encoded[6] ^= 0x40;
    const Bytes damaged = support::PutTogether(parts);
    const BlockFile file(damaged);
    EXPECT_EQ(file.FindGuid("wall"), (ElementIndex{0, 0}));
    EXPECT_EQ(FailureOf([&] { file.FindGuid("door"); }), Status::Damaged);
    EXPECT_EQ(Guids(file, {}), Texts({"wall", "room", "project"}));
    ASSERT_EQ(file.DamageMet().size(), 1u);
    try {
        file.Read({1, 0});
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.GetStatus(), Status::Damaged);
        EXPECT_EQ(error.Position(), file.DamageMet()[0].position);
    }
    EXPECT_EQ(FailureOf([] { BlockFile(Bytes{}); }), Status::Damaged);
    EXPECT_EQ(FailureOf([] { BlockFile("/nowhere"); }), Status::InputOutput);
    EXPECT_EQ(FailureOf([] { BlockFile("/"); }), Status::InputOutput);
}

TEST(Elements, OneFileServesSeveralThreads) {
    const std::filesystem::path path = testing::TempDir() + "elements_test.zvg";
    const Bytes bytes = House();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    BlockFile moved(path.string());
    std::filesystem::remove(path);  // it is open
    const BlockFile file = std::move(moved);
    std::atomic<int> mistakes = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 200; ++round) {
                mistakes += file.FindGuid("door") != ElementIndex{1, 0};
                mistakes += Guids(file, {}).size() != 4;
                mistakes += file.Read({0, 1}).className != "IfcSpace";
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(mistakes, 0);
}

}  // namespace
