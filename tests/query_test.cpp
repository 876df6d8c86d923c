#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ZVSmartModel/Builder.h"
#include "ZVSmartModel/Query.h"
#include "support.h"

// SQL over block files.

using namespace ZVSmartModel;
using support::Bytes;

namespace {

NewElement Made(const std::string& guid, const char* className, std::size_t floor) {
    NewElement element;
    element.guid = guid;
    element.name = "the ";
    element.name += guid;
    element.className = className;
    element.floor = floor;
    return element;
}

/// Two floors; `walls` walls, whose widths are their numbers, on the lower one and a door, which is
/// in the first of them, on the upper one.
Bytes House(const std::string& title, int walls) {
    return support::Streamed([&](support::CZVFTOutStream& out) {
        BuilderOptions options;
        options.title = title;
        Builder builder(out, options);
        builder.AddFloor({"Ground", -0.5, 3});
        builder.AddFloor({"Überbau", 2.5, 0});
        NewShape square;
        square.surfaces.push_back({std::nullopt,
                                   {{0, 0, 0}, {1, 0, 0}, {1, 2, 0}, {0, 2, 0}},
                                   {{0, 1, 2}, {0, 2, 3}},
                                   {}});
        const std::size_t shape = builder.AddShape(square);
        for (int i = 0; i < walls; ++i) {
            std::string guid = "wall";
            guid += std::to_string(i);
            NewElement wall = Made(guid, "IfcWall", 0);
            wall.properties = {{"Pset_Wall", "Width", std::to_string(i), "length", "mm"},
                               {"", "Note", "a.b", "text", ""}};
            wall.materials = {{"Brick", "masonry", 0.25, {}}};
            Transform moved = identityTransform;
            moved[3] = i;
            wall.shapes = {{shape, moved}};
            builder.AddElement(wall);
        }
        NewElement door = Made("door", "IfcDoor", 1);
        door.parents = {"wall0"};
        door.group = "zone";
        door.properties = {{"A", "X@", "u", "text", ""},
                           {"A", "X", "1", "length", "mm"},
                           {"B", "X@", "v", "text", ""}};
        builder.AddElement(door);
        builder.Finish();
    });
}

std::string Text(const QueryValue& value) {
    if (const auto* const integer = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*integer);
    }
    if (const auto* const real = std::get_if<double>(&value)) return std::to_string(*real);
    const auto* const text = std::get_if<std::string>(&value);
    return text != nullptr ? *text : "null";
}

class QueryTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!CanQuery()) GTEST_SKIP() << "no SQLite";
        std::string name = testing::TempDir() + "query-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name + "/";
        std::filesystem::create_directory(folder + "b");
        Write("a.zvg", House("first", 3));
        Write("b/b.zvg", House("second", 1000));
        Write("b/notes.txt", {});
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void Write(const std::string& name, const Bytes& bytes) const {
        std::ofstream(folder + name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

    /// The rows, their values parted by blanks; the faults stay behind.
    std::vector<std::string> Ask(const std::string& sql, const std::string& file = "") {
        QueryTable table = AskQuery({folder + file}, sql);
        faults = table.faults;
        std::vector<std::string> lines;
        for (const QueryRow& row : table.rows) {
            std::string& line = lines.emplace_back();
            for (const QueryValue& value : row) {
                if (!line.empty()) line += ' ';
                line += Text(value);
            }
        }
        return lines;
    }

    Status Refused(const std::string& sql, const Progress& progress = {}) const {
        try {
            AskQuery({folder}, sql, {}, progress);
        } catch (const Error& error) {
            return error.GetStatus();
        }
        return Status{};
    }

    std::string folder;
    std::vector<FileFault> faults;
};

using Lines = std::vector<std::string>;

TEST_F(QueryTest, TablesSayWhatFilesHold) {
    EXPECT_EQ(Ask("SELECT title, version, bytes > 100, error FROM files"),
              (Lines{"first 4 1 null", "second 4 1 null"}));
    EXPECT_EQ(Ask("SELECT idx, name, elevation, height FROM floors", "a.zvg"),
              (Lines{"0 Ground -0.500000 3.000000", "1 Überbau 2.500000 0.000000"}));
    EXPECT_EQ(
        Ask("SELECT floor, idx, guid, name, class, type, parent FROM elements WHERE "
            "guid IN ('wall1', 'door')",
            "a.zvg"),
        (Lines{"1 0 door the door IfcDoor null wall0", "0 1 wall1 the wall1 IfcWall null null"}));
    EXPECT_EQ(Ask("SELECT \"set\", name, value, number, unit FROM properties WHERE element = "
                  "(SELECT id FROM elements WHERE guid = 'wall2')",
                  "a.zvg"),
              (Lines{"Element Name the wall2 null null", "Pset_Wall Width 2 2.000000 mm",
                     "null Note a.b null null"}));
    EXPECT_EQ(Ask("SELECT DISTINCT idx, name, category, thickness FROM materials"),
              (Lines{"0 Brick masonry 0.250000"}));
    EXPECT_EQ(Ask("SELECT kind, target FROM relations", "a.zvg"),
              (Lines{"parent wall0", "group zone"}));
    EXPECT_EQ(Ask("SELECT points, triangles, places FROM shapes"), (Lines{"4 2 3", "4 2 1000"}));
    EXPECT_EQ(Ask("SELECT xmin, xmax, ymax, area, closed FROM boxes b JOIN elements e "
                  "ON e.id = b.element WHERE e.name = 'the wall2'",
                  "a.zvg"),
              (Lines{"2.000000 3.000000 2.000000 2.000000 0"}));
}

TEST_F(QueryTest, ScansOfManyFilesAndBatchesGiveEachRowOnceAndInOrder) {
    EXPECT_EQ(Ask("SELECT class, count(*), count(DISTINCT file) FROM elements GROUP BY 1"),
              (Lines{"IfcDoor 2 2", "IfcWall 1003 2"}));
    EXPECT_EQ(Ask("SELECT count(*), sum(e.idx = p.number), sum(p.number) FROM properties p JOIN "
                  "elements e ON e.id = p.element WHERE p.name = 'Width'"),
              (Lines{"1003 1003 499503.000000"}));
    EXPECT_EQ(Ask("SELECT e.guid, e.class FROM relations r JOIN elements e "
                  "ON e.file = r.file AND e.guid = r.target WHERE r.kind = 'parent'"),
              (Lines{"wall0 IfcWall", "wall0 IfcWall"}));
    EXPECT_EQ(Ask("SELECT count(*) FROM (SELECT id, lag(id) OVER () AS before FROM elements) "
                  "WHERE id <= before"),
              (Lines{"0"}));
    for (const char* const name : {"Width", "X", "X@"}) {  // with and without passing the others
        const std::string asked = "SELECT element, \"set\", value, unit FROM properties WHERE ";
        const std::string equals = std::string("name = '") + name + '\'';
        EXPECT_EQ(Ask(asked + equals), Ask(asked + '+' + equals));
        EXPECT_GE(Ask(asked + equals).size(), 2U);
    }
    EXPECT_EQ(Ask("SELECT guid FROM elements WHERE guid = 'DOOR' COLLATE NOCASE LIMIT 1"),
              (Lines{"door"}));
    EXPECT_EQ(Ask("SELECT count(*) FROM elements WHERE floor = '1' OR class = NULL"), (Lines{"2"}));
    EXPECT_EQ(Ask("SELECT guid FROM elements LIMIT 2").size(), 2U);  // threads end early
}

TEST_F(QueryTest, DamageIsTheFilesAloneAndOfWhatIsAskedFor) {
    Write("c.zvg", Bytes(100, 'x'));
    Bytes house = House("third", 3);
    // A byte is looked for whose damage hides the lower floor's elements and nothing else.
    std::size_t at = 0;
    for (at = 60; at < house.size(); ++at) {
        Bytes damaged = house;
        damaged[at] ^= 0xFF;
        try {
            const BlockFile file(damaged);
            const std::vector<Floor> floors = file.Floors();
            if (floors.size() == 2 && floors[0].elements == 0 && floors[1].elements == 1 &&
                floors[0].name == "Ground") {
                break;
            }
        } catch (const Error&) {
        }
    }
    ASSERT_LT(at, house.size());
    house[at] ^= 0xFF;
    Write("d.zvg", house);

    EXPECT_EQ(Ask("SELECT error IS NULL, title FROM files ORDER BY path"),
              (Lines{"1 first", "1 second", "0 null", "1 third"}));
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].path, folder + "c.zvg");
    EXPECT_EQ(faults[0].status, Status::Damaged);
    EXPECT_EQ(Ask("SELECT class FROM elements WHERE floor = 1", "d.zvg"), (Lines{"IfcDoor"}));
    EXPECT_EQ(Ask("SELECT class FROM elements WHERE id = (SELECT 1 << 26)", "d.zvg"),
              (Lines{"IfcDoor"}));
    EXPECT_TRUE(faults.empty());  // the other floor was not decoded
    EXPECT_EQ(Ask("SELECT count(*) FROM elements"), (Lines{"1006"}));
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[1].path, folder + "d.zvg");
    EXPECT_NE(faults[1].reason.find("floor 0"), std::string::npos) << faults[1].reason;
}

TEST_F(QueryTest, OnlyQuestionsAreAnswered) {
    const std::string other = folder + "other.db";
    EXPECT_EQ(Refused("ATTACH '" + other + "' AS x"), Status::Usage);
    EXPECT_EQ(Refused("VACUUM INTO '" + other + "'"), Status::Usage);
    EXPECT_EQ(Refused("CREATE TABLE x(y)"), Status::Usage);
    EXPECT_EQ(Refused("DELETE FROM elements"), Status::Usage);
    EXPECT_EQ(Refused("PRAGMA temp_store_directory = '/tmp'"), Status::Usage);
    EXPECT_EQ(Refused("SELECT load_extension('x')"), Status::Usage);
    EXPECT_EQ(Refused("SELECT 1; SELECT 2"), Status::Usage);
    EXPECT_EQ(Refused("SELECT colour FROM files"), Status::Usage);
    EXPECT_FALSE(std::filesystem::exists(other));
    const auto no = [](const std::string&, double) { return false; };
    EXPECT_EQ(Refused("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
                      "SELECT count(*) FROM n",
                      no),
              Status::Cancelled);
}

}  // namespace
