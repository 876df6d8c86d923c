// Runs the tool on small files that ask for much: each command ends in time, within memory, and
// says what it left out.

#include "hostile_files.h"
#include "tool_support.h"

namespace {

/// A command on an input, and how it has to end.
struct Case {
    const char* input;
    const char* command;  ///< F is the file
    int status;
    const char* says;  ///< somewhere on standard error
};

constexpr const char* work = "left out: more work than the file's size accounts for";
constexpr const char* memory = "left out: more memory than the file's size accounts for";

const Case blockCases[] = {
    {"rows", "list F --json", 4, work},
    {"rows", "tree F", 4, work},
    {"rows", "plan F", 4, work},
    {"rows", "diff F F", 4, work},
    {"many_rows", "show F 0:0", 4, memory},
    {"long_class", "list F --csv", 4, work},
    {"long_class", "tree F", 4, work},
    {"properties", "show F 0:0", 4, memory},
    {"properties", "show F 0:0 --no-limit", 0, ""},
    {"many_properties", "export F -o x.obj", 4, memory},
    {"materials", "show F 0:0", 4, memory},
    {"floors", "list F", 4, work},
    {"floors", "tree F", 4, work},
    {"floors", "export F -o x.obj", 4, work},
    {"long_floors", "list F", 4, work},
    {"long_floors", "tree F", 4, work},
    {"geo_blocks", "info F", 4, work},
    {"floor_blocks", "list F", 4, work},
    {"floor_blocks", "preview F -o x.png --render 64x48", 4, work},
    {"large_block", "geo F body", 4, memory},
    {"large_block", "export F -o x.obj", 4, memory},
    {"polygons_1000", "export F -o x.obj", 4, work},
    {"polygons_300", "export F -o x.obj", 4, work},
    {"polygons_placed", "export F -o x.obj", 0, "1 components, 1 meshes"},
    {"placed", "plan F -o x.svg", 0, "1 component on 1 floor"},
    {"placed", "export F -o x.obj", 0, "1 components, 1 meshes"},
    {"placed_often", "plan F", 4, memory},
    {"placed_often", "export F -o x.obj", 4, memory},
    {"placed_hill", "plan F", 4, memory},
    {"placed_hill", "export F -o x.obj", 4, work},
    {"placed_hill", "export F -o x.glb --merge", 4, memory},
    {"placed_segments", "plan F", 4, memory},
    {"placed_circles", "plan F", 4, memory},
    {"chain", "plan F", 4, memory},
    {"chain", "export F -o x.obj", 4, memory},
    {"identifications", "diff F F", 0, ""},
    {"identifications", "export F -o x.obj", 4, memory},
    {"nested_wide", "geo F body --json", 4, "of its records are left out: more memory"},
    {"nested_wide", "diff F F", 0, ""},
    {"nested_deep", "geo F body", 4, memory},
    {"nested_deep", "export F -o x.obj", 4, memory},
    {"nested_styles", "geo F body", 4, memory},
    {"nested_styles", "geo F body --no-limit", 0, ""},
    {"transforms", "geo F body", 4, memory},
    {"coincident", "preview F -o x.png --render 64x48", 0, ""},
    {"coincident_placed", "preview F -o x.png --render 64x48", 0, ""},
    {"crossing", "preview F -o x.png --render 64x48", 0, ""},
    {"crossing_glass", "preview F -o x.png --render 64x48", 0, ""},
    {"crossing_shapes", "preview F -o x.png --render 64x48", 4, "drawing it takes too long"},
};

class HostileFiles : public ToolFixture {
  protected:
    /// Runs the tool for at most 20 seconds, of processor time and in all, in a gigabyte of
    /// addresses; for a minute under the sanitizer, which makes some six times slower.
    int RunCase(const Case& c, const std::string& input) {
        std::string words = c.command;
        for (std::size_t at = words.find('F'); at != std::string::npos;
             at = words.find('F', at + input.size())) {
            words.replace(at, 1, input);
        }
        const std::string limits =
            addressSanitizer ? "ulimit -t 60; timeout 60 " : "ulimit -t 20; timeout 20 ";
        return Run("rm -f x.*; " + LimitAddresses(1000) + limits + "$Z " + words);
    }

    void Check(const Case& c, const std::string& input) {
        SCOPED_TRACE(std::string(c.input) + ": " + c.command);
        const int status = RunCase(c, input);
        if (status == 2 && err.find("this build") != std::string::npos) return;
        EXPECT_EQ(status, c.status) << err;
        EXPECT_NE(err.find(c.says), std::string::npos) << err;
        if (std::string(c.command).find("--json") != std::string::npos) CheckJson(c.command);
        if (status == 0) return;
        EXPECT_NE(err.find(input), std::string::npos) << err;
        EXPECT_FALSE(std::filesystem::exists(folder + "x.obj"));
        EXPECT_FALSE(std::filesystem::exists(folder + "x.png"));
    }

    /// Output that ends early is well-formed all the same, a list ends where it is said to.
    void CheckJson(std::string_view command) {
        const nlohmann::json answer = nlohmann::json::parse(out, nullptr, false);
        ASSERT_FALSE(answer.is_discarded());
        if (!command.starts_with("list")) return;
        const std::size_t count = answer["components"].size();
        EXPECT_GT(count, 0U);
        const std::string next = "component 0:" + std::to_string(count);
        EXPECT_NE(err.find(next + " and what follows are left out"), std::string::npos) << err;
    }
};

/// One file and all commands on it.
class HostileFilesOneByOne : public HostileFiles,
                             public testing::WithParamInterface<const char*> {};

TEST_P(HostileFilesOneByOne, EndInTimeAndSayWhatIsLeftOut) {
    const std::string name = GetParam();
    const std::string input = name + ".zvg";
    const support::Bytes bytes = hostile::HostileFileNamed(name);
    std::ofstream(folder + input, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    std::size_t cases = 0;
    for (const Case& c : blockCases) {
        if (name != c.input) continue;
        Check(c, input);
        ++cases;
    }
    EXPECT_NE(cases, 0U) << name << " is never used";
}

std::vector<const char*> Names() {
    std::vector<const char*> names;
    for (const hostile::HostileFile& file : hostile::HostileFiles()) {
        names.push_back(file.name.c_str());
    }
    return names;
}

INSTANTIATE_TEST_SUITE_P(Of, HostileFilesOneByOne, testing::ValuesIn(Names()),
                         [](const auto& file) { return std::string(file.param); });

/// What an honest file holds is far from the limits, also where it repeats itself.
TEST_F(HostileFiles, HonestOnesMeetNoLimit) {
    WriteBlock(folder + "F", [](ZVSmartZvg::CZVLGBlockSaver& saver) {
        for (unsigned int i = 0; i < 3000; ++i) {
            const std::wstring number = std::to_wstring(i);
            ZVSmartZvg::SZVLGZvgComp comp = support::FullComp();
            comp.classLevel1Name = L"floor " + std::to_wstring(i / 300);
            comp.compGuidName = ZVSmartZvg::SerialKey(number);
            comp.compProperties.assign(30, {L"name " + number, L"value"});
            comp.geoRefs.resize(1);
            comp.geoRefs[0].geoIdentification = number;
            comp.geoRefs[0].geo = support::FullGeo();
            saver.AddComp(comp);
        }
    });
    for (const char* command :
         {"info F", "tree F", "list F", "show F 0:0", "geo F 0:0", "diff F F", "plan -q F",
          "export F -o x.obj", "export F -o x.glb", "preview F -o x.png --render 64x48"}) {
        const int status = Run(std::string("$Z ") + command);
        if (status == 2 && err.find("this build") != std::string::npos) continue;
        EXPECT_NE(status, 4) << command << ": " << err;
        EXPECT_EQ(err.find("left out"), std::string::npos) << err;
    }
}

}  // namespace
