// Runs the built tool on small files, on damaged ones and on hostile ones.

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <utility>
#include <vector>

#include "tool_support.h"

using namespace ZVSmartZvg;

namespace {

struct Outcome {
    int status;
    std::string out;
    std::string err;
};

void WriteAll(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

SZVLGZvgComp MakeComp(const wchar_t* floor, const wchar_t* name) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = floor;
    comp.classLevel2Name = L"Wall";
    comp.classLevel3Name = L"Thick wall";
    comp.classLevel4Name = L"Concrete";
    comp.classLevel4Attr.flags = 0x10;
    comp.classLevel4Attr.red = 0xAB;
    comp.compGuidName = SerialKey(name);
    comp.compProperties = {{L"Fire rating", L"F90"}};
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = std::wstring(L"body of ") + name;
    CZVIMShell shell;
    shell.AddPts({{0, 0, 0}, {1, 0, 0}, {1, 2, 3}});
    shell.AddFaceIndex({0, 1, 2});
    comp.geoRefs[0].geo.shells.push_back(shell);
    return comp;
}

/// Floor 0 "Ground" with components "a" and "b", floor 1 "Upper:1" with "c"; three geometries in
/// two blocks, then "arc", then "deep" with 20000 levels.
void Fill(CZVLGBlockSaver& saver) {
    saver.AddComp(MakeComp(L"Ground", L"a"));
    saver.AddComp(MakeComp(L"Ground", L"b"));
    saver.AddComp(MakeComp(L"Upper:1", L"c"));
    SZVLGZvgGeo arc;  // from (1, 0) over (0, 1) to (-1, 0)
    arc.boundArcs.emplace_back(CZVIMPosition(), CZVIMVector(0, 0, 1), CZVIMPosition(1, 0, 0),
                               3.14159265358979);
    saver.AddIdentificationGeo(L"arc", arc);
    SZVLGZvgGeo deep;
    for (int level = 0; level < 20000; ++level) {
        SZVLGZvgGeo outer;
        outer.subGeos.resize(1);
        outer.subGeos[0].geo = std::move(deep);
        deep = std::move(outer);
    }
    saver.AddIdentificationGeo(L"deep", deep);
}

class ToolTest : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        good = folder + "good.zvg";
        WriteBlock(good, Fill, {}, 2);
        bytes = ReadAll(good);
    }

    Outcome Run(const std::string& arguments, const std::string& redirect = "") {
        const int status = ToolFixture::Run("$Z " + arguments + " " + redirect);
        return {status, out, err};
    }

    nlohmann::json RunJson(const std::string& arguments) {
        const Outcome outcome = Run(arguments + " --json");
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        nlohmann::json document = nlohmann::json::parse(outcome.out, nullptr, false);
        EXPECT_EQ(document.value("schema", 0), 1) << arguments;
        return document;
    }

    /// The good file with one byte changed inside its n-th compressed block: geometry blocks 0 to
    /// 2, floors 3 and 4, the index 5.
    std::string DamagedBlock(int n) const {
        std::size_t at = bytes.find(
            "\xFD"
            "7zXZ");
        for (int i = 0; i < n; ++i)
            at = bytes.find(
                "\xFD"
                "7zXZ",
                at + 1);
        EXPECT_LT(at, bytes.size());
        std::string damaged = bytes;
        damaged[at + 40] ^= 0x55;
        WriteAll(folder + "damaged.zvg", damaged);
        return folder + "damaged.zvg";
    }

    std::string good, bytes;
};

void ExpectOneLine(const std::string& text) {
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    EXPECT_EQ(text.rfind("zvg: ", 0), 0U) << text;
}

TEST_F(ToolTest, FailuresHaveTheirStatusAndOneLine) {
    WriteAll(folder + "text.zvg", "not a block file at all, only a text");
    WriteAll(folder + "cut.zvg", bytes.substr(0, bytes.size() / 2));
    WriteAll(folder + "empty.zvg", "");
    const std::string& f = folder;
    const struct {
        std::string arguments;
        int status;
        std::string says;
    } cases[] = {
        {"", 2, "subcommand"},
        {"info", 2, "FILE"},
        {"info --nonsense " + good, 2, "--nonsense"},
        {"show " + good + " 0", 5, "no component '0'"},
        {"show " + good + " 0:-1", 5, "0:-1"},
        {"info " + f + "missing.zvg", 3, "missing.zvg: No such file"},
        {"show " + f + " 0:0", 3, "directory"},
        {"query 'SELECT x FROM files' " + good, 2, "no such column: x"},
        {"verify " + f + "missing.zvg", 3, "missing.zvg"},
        {"info " + f + "text.zvg", 4, "text.zvg: head: it's not zvg file format"},
        {"info " + f + "empty.zvg", 4, "empty.zvg: "},
        {"tree " + f + "cut.zvg", 4, "cut.zvg: "},
        {"verify " + f + "cut.zvg", 4, "cut.zvg: "},
        {"verify " + f + "text.zvg", 4, "text.zvg: "},
        {"show " + good + " Nowhere:0", 5, "good.zvg: no floor 'Nowhere'"},
        {"show " + good + " Ground:2", 5, "no component Ground:2"},
        {"show " + good + " 4294967296:0", 5, "no floor"},
        {"list --floor 2 " + good, 5, "no floor '2'"},
        {"list --class Door " + good, 5, "Door"},
        {"geo " + good + " unknown", 5, "no geometry 'unknown'"},
        {"geo " + good + " 0:2", 5, "no geometry '0:2'"},
        {"geo " + good + " 4294967295:0", 5, "no geometry"},
    };
    for (const auto& [arguments, status, says] : cases) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, status) << arguments << '\n' << outcome.err;
        EXPECT_NE(outcome.err.find(says), std::string::npos) << arguments << '\n' << outcome.err;
        ExpectOneLine(outcome.err);
    }
}

TEST_F(ToolTest, UnwritableOutputIsAFailure) {
    for (const std::string redirect : {">/dev/full", ">&-"}) {
        for (const char* command : {"info ", "tree --json ", "list ", "verify "}) {
            const Outcome outcome = Run(command + good, redirect);
            EXPECT_EQ(outcome.status, 3) << command << redirect;
            EXPECT_NE(outcome.err.find("standard output"), std::string::npos) << outcome.err;
        }
    }
    EXPECT_EQ(Run("--version", ">/dev/full").status, 3);
    EXPECT_EQ(ReadAll(good), bytes);

    int ends[2];  // a pipe whose reader has read enough
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    for (const char* command : {"info ", "tree --json ", "list ", "verify ", "plan "}) {
        const Outcome outcome = Run(command + good, ">&" + std::to_string(ends[1]));
        EXPECT_EQ(outcome.status, 128 + SIGPIPE) << command;
        EXPECT_EQ(outcome.err, "") << command;
        const std::string ignoring = "trap \"\" PIPE; $Z " + (command + good);
        EXPECT_EQ(ToolFixture::Run(ignoring + " >&" + std::to_string(ends[1])), 3) << command;
        EXPECT_EQ(err, "zvg: standard output: Broken pipe\n") << command;
    }
    close(ends[1]);
}

TEST_F(ToolTest, DamageShowsBesideWhatIsReadable) {
    const Outcome floor = Run("list --json " + DamagedBlock(3));
    EXPECT_EQ(floor.status, 4);
    EXPECT_NE(floor.err.find("damaged.zvg: damaged: floor 0 does not decode, at "),
              std::string::npos)
        << floor.err;
    const nlohmann::json list = nlohmann::json::parse(floor.out, nullptr, false);
    ASSERT_EQ(list["components"].size(), 1U);
    EXPECT_EQ(list["components"][0]["component"], "1:0");
    EXPECT_EQ(Run("show " + folder + "damaged.zvg 0:0").status, 4);
    EXPECT_EQ(Run("show " + folder + "damaged.zvg 1:0").status, 0);
    EXPECT_EQ(Run("geo " + DamagedBlock(0) + " 'body of a'").status, 4);
    EXPECT_EQ(Run("info " + folder + "damaged.zvg").status, 4);
    EXPECT_EQ(Run("geo " + folder + "damaged.zvg arc").status, 0);
    EXPECT_EQ(Run("tree " + DamagedBlock(5)).status, 4);
}

/// What is whole is shown, what is not is said, and the status is 4, whatever is damaged.
TEST_F(ToolTest, EveryCommandTellsDamageAndShowsWhatIsWhole) {
    const std::string copy = folder + "damaged.zvg";
    const auto flipped = [&](std::size_t at) {
        std::string damaged = bytes;
        damaged[at] ^= 0x03;
        WriteAll(copy, damaged);
    };
    const std::size_t nameLength = bytes.find(std::string("G\0r\0o\0", 6)) - 4;
    // Behind magic, version, two empty texts and flags stands where the floor section begins.
    const auto* const offset = reinterpret_cast<const unsigned char*>(bytes.data()) + 22;
    const std::size_t floors = static_cast<std::size_t>(offset[2] << 8 | offset[3]);
    const std::size_t lowByteOfCount = floors + 8;
    const std::string upper = "1:0\tWall\tThick wall\tc\t";
    const std::string lower = "0:0\tWall\tThick wall\ta\t";
    const struct {
        std::function<void()> damage;
        std::string says;   // of all that read floors
        std::string whole;  // in a list
        bool everywhere;    // even where no floor is read
    } cases[] = {
        {[&] { flipped(nameLength); }, "floor 0 is damaged, at position ", upper, false},
        {[&] { flipped(lowByteOfCount); }, "the floor section has a count", lower, true},
        {[&] { DamagedBlock(3); }, "floor 0 does not decode, at position ", upper, false},
        {[&] { DamagedBlock(4); }, "floor 1 does not decode, at position ", lower, false},
    };
    for (const auto& [damage, says, whole, everywhere] : cases) {
        damage();
        const auto expect = [&, &says = says](const std::string& words) {
            const Outcome outcome = Run(words);
            EXPECT_EQ(outcome.status, 4) << words << says << outcome.err;
            EXPECT_NE(outcome.err.find("damaged.zvg: damaged: " + says), std::string::npos)
                << words << outcome.err;
            return outcome.out;
        };
        EXPECT_NE(expect("info damaged.zvg").find("components"), std::string::npos) << says;
        EXPECT_NE(expect("list damaged.zvg").find(whole), std::string::npos) << says;
        const bool isUpper = whole == upper;
        EXPECT_NE(expect("tree damaged.zvg").find(isUpper ? "Upper:1: 1\n" : "Ground: 2\n"),
                  std::string::npos);
        EXPECT_EQ(expect("diff damaged.zvg good.zvg"), "");
        EXPECT_EQ(expect("preview damaged.zvg --render 64x48 -o x.png"), "");
        EXPECT_NE(expect("plan damaged.zvg").find(isUpper ? "Upper" : "Ground"), std::string::npos);
        WriteAll(folder + "x.svg", "mine");
        expect("plan --force damaged.zvg -o x.svg");
        EXPECT_EQ(ReadAll(folder + "x.svg"), "mine") << says;
        expect("export -q damaged.zvg -o x.glb");
        EXPECT_FALSE(std::filesystem::exists(folder + "x.glb")) << says;
        expect("export -q --salvage damaged.zvg -o x.obj");
        EXPECT_NE(ReadAll(folder + "x.obj").find(isUpper ? "wall_c\n" : "wall_a\n"),
                  std::string::npos)
            << ReadAll(folder + "x.obj");
        std::filesystem::remove(folder + "x.obj");
        std::filesystem::remove(folder + "x.mtl");
        if (everywhere) {
            EXPECT_NE(expect("geo damaged.zvg 'body of a'").find("faces"), std::string::npos);
            EXPECT_NE(expect("show damaged.zvg Ground:0").find("F90"), std::string::npos);
        }
    }
    // A body that cannot be read leaves the other ones.
    DamagedBlock(0);
    EXPECT_EQ(Run("export -q --salvage damaged.zvg -o x.obj").status, 4);
    EXPECT_NE(err.find("damaged.zvg: damaged: geometry block 0 does not"), std::string::npos)
        << err;
    EXPECT_NE(ReadAll(folder + "x.obj").find("\nv "), std::string::npos);
    EXPECT_EQ(Run("plan damaged.zvg").status, 4);
    EXPECT_EQ(Run("list damaged.zvg").status, 0) << "geometry is not read";
}

TEST_F(ToolTest, WordsHelpWhoMistypes) {
    std::ofstream(folder + "photo.jpg") << "\xFF\xD8\xFF\xE0 JFIF";
    std::ofstream(folder + "unknown.ifc") << "neither";
    std::ofstream(folder + "empty.obj");
    const std::string formats = "; these are read: ";
    const struct {
        std::string words;
        int status;
        std::string says;
    } cases[] = {
        {"ifno good.zvg", 2, "ifno; did you mean info? (see"},
        {"exprot good.zvg", 2, "did you mean export?"},
        {"xyzzy good.zvg", 2, "xyzzy (see"},
        {"plan good.zvg -o x.png", 2, "x.png: the name must end in .svg, .pdf or .dxf"},
        {"plan missing.zvg -o x", 2, "x: the name must end in .svg, .pdf or .dxf"},
        {"info empty.obj", 4, "empty.obj: the file is empty"},
        {"pack photo.jpg -o x.zvg", 3, "photo.jpg: not a known model format" + formats},
        {"pack unknown.ifc -o x.zvg", 3, "unknown.ifc: not a known model format" + formats},
        {"pack empty.obj -o x.zvg", 3, "empty.obj: the file is empty" + formats},
    };
    for (const auto& [words, status, says] : cases) {
        const Outcome outcome = Run(words);
        EXPECT_EQ(outcome.status, status) << words << outcome.err;
        EXPECT_NE(outcome.err.find(says), std::string::npos) << words << outcome.err;
        ExpectOneLine(outcome.err);
    }
}

TEST_F(ToolTest, SeveralFilesAreVerifiedByName) {
    DamagedBlock(3);
    const Outcome several = Run("verify good.zvg damaged.zvg missing.zvg good.zvg");
    EXPECT_EQ(several.status, 4);
    EXPECT_EQ(several.out.rfind("good.zvg: ok: floors 2", 0), 0U) << several.out;
    EXPECT_NE(several.out.find("\ndamaged.zvg: "), std::string::npos) << several.out;
    EXPECT_EQ(several.err.rfind("zvg: damaged.zvg: 1 fault", 0), 0U) << several.err;
    EXPECT_NE(several.err.find("\nzvg: missing.zvg: No such file"), std::string::npos);
    EXPECT_EQ(Run("verify missing.zvg damaged.zvg").status, 3);
    EXPECT_EQ(Run("verify good.zvg").out.rfind("ok: ", 0), 0U);
}

TEST_F(ToolTest, SeveralFilesAndFoldersAreToldByName) {
    DamagedBlock(3);  // floor 0
    std::filesystem::create_directory(folder + "sub");
    std::filesystem::copy(good, folder + "sub/x.zvg");
    const Outcome listed = Run("list sub damaged.zvg 'go*.zvg' --csv");
    EXPECT_EQ(listed.status, 4);
    EXPECT_EQ(listed.out.rfind("file,component,classLevel2,", 0), 0U) << listed.out;
    EXPECT_EQ(std::count(listed.out.begin(), listed.out.end(), '\n'), 8) << listed.out;
    EXPECT_NE(listed.out.find("\ndamaged.zvg,1:0,Wall,"), std::string::npos) << listed.out;
    ExpectOneLine(listed.err);
    EXPECT_NE(Run("tree good.zvg sub").out.find("\nsub/x.zvg:   Wall: 2\n"), std::string::npos);
    EXPECT_EQ(Run("list good.zvg sub --class Door").status, 5);
    EXPECT_EQ(Run("info --json sub good.zvg").out,
              Run("info --json sub/x.zvg").out + Run("info --json good.zvg").out);
    EXPECT_EQ(Run("props sub good.zvg --guid c --where 'Fire rating=F90'").out,
              "sub/x.zvg\t1:0\tc\tWall\tFire rating\tF90\t\n"
              "good.zvg\t1:0\tc\tWall\tFire rating\tF90\t\n");
    EXPECT_EQ(Run("props good.zvg --where 'Fire rating=F30'").status, 5);
    EXPECT_EQ(Run("props good.zvg --where Fire").status, 2);

    const std::string sql = "query \"SELECT guid, floor, null FROM elements WHERE guid = 'c'\" ";
    if (Run(sql + "good.zvg").err.find("SQLite") != std::string::npos) return;  // not built
    EXPECT_EQ(Run(sql + "sub").out, "c\t1\t\n");
    EXPECT_EQ(Run(sql + "sub --csv").out, "guid,floor,null\r\nc,1,\r\n");
    EXPECT_EQ(Run(sql + "sub --table").out, "guid  floor  null\n----  -----  ----\nc         1\n");
    EXPECT_EQ(RunJson(sql + "sub")["rows"], nlohmann::json::parse(R"([["c", 1, null]])"));
    EXPECT_EQ(ToolFixture::Run("ls *.zvg | $Z query 'SELECT count(*) FROM elements' -"), 4);
    EXPECT_EQ(out, "4\n");
    ExpectOneLine(err);
}

TEST_F(ToolTest, ComponentsAreFoundByNameAndProperty) {
    WriteBlock(folder + "named.zvg", [](CZVLGBlockSaver& saver) {
        for (const wchar_t* guid : {L"a", L"b", L"c"}) {
            SZVLGZvgComp comp = MakeComp(L"Ground", guid);
            comp.compProperties.emplace_back(L"Element.Name", guid[0] == L'c' ? L"other" : L"twin");
            comp.compProperties.emplace_back(L"Set.Mark", guid);
            saver.AddComp(comp);
        }
    });
    EXPECT_EQ(Run("show named.zvg b").out, Run("show named.zvg 0:1").out);
    EXPECT_EQ(Run("show named.zvg other").out, Run("show named.zvg 0:2").out);
    const Outcome twins = Run("show named.zvg twin");
    EXPECT_EQ(twins.status, 2);
    EXPECT_NE(twins.err.find("2 components are called 'twin': 0:0, 0:1"), std::string::npos);
    EXPECT_EQ(Run("geo named.zvg other").out, Run("geo named.zvg 'body of c'").out);
    EXPECT_EQ(Run("export named.zvg -o t.obj --element twin --where Set.Mark=b").status, 0);
    const std::string obj = ReadAll(folder + "t.obj");
    EXPECT_NE(obj.find("twin"), std::string::npos);
    EXPECT_EQ(obj.find("other"), std::string::npos);
    EXPECT_EQ(Run("export named.zvg -o u.obj --where Mark=d").status, 5);
}

TEST_F(ToolTest, DifferencesAreToldWithOldAndNewValues) {
    const auto write = [this](const char* name, bool isLater, int walls) {
        WriteBlock(folder + name, [&](CZVLGBlockSaver& saver) {
            SZVLGZvgComp comp = MakeComp(L"Ground", L"moved");
            if (isLater) {
                CZVIMShell shell;
                shell.AddPts({{3, 4, 0}, {4, 4, 0}, {4, 6, 3}});
                shell.AddFaceIndex({0, 1, 2});
                comp.geoRefs[0].geo.shells = {shell};
                comp.compProperties[0].second = L"F30";
                comp.classLevel4Attr.red = 0xCD;
            }
            comp.compProperties.emplace_back(L"Element.Name", L"South");
            saver.AddComp(comp);
            for (int i = 0; i < walls; ++i) {
                saver.AddComp(MakeComp(L"Ground", std::to_wstring(i).c_str()));
            }
        });
    };
    write("a.zvg", false, 0);
    write("b.zvg", true, 1);
    EXPECT_EQ(Run("diff a.zvg a.zvg").status, 0);
    const Outcome text = Run("diff a.zvg b.zvg");
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.err, "");
    EXPECT_EQ(text.out,
              "component changed: moved Wall 'South' (0:0)\n"
              "  property Fire rating: 'F90' -> 'F30'\n"
              "  appearance: '#AB0000FF' -> '#CD0000FF'\n"
              "  geometry, moved by 5 m\n"
              "component added: 0 Wall (0:1)\n");
    EXPECT_EQ(Run("diff a.zvg b.zvg --csv").out,
              "kind,change,name,class,called,a,b,what,old,new,distance\r\n"
              "component,changed,moved,Wall,South,0:0,0:0,property Fire rating,F90,F30,\r\n"
              "component,changed,moved,Wall,South,0:0,0:0,appearance,#AB0000FF,#CD0000FF,\r\n"
              "component,changed,moved,Wall,South,0:0,0:0,geometry,,,5.0\r\n"
              "component,added,0,Wall,\"\",,0:1,,,,\r\n");
    const std::string stat = Run("diff a.zvg b.zvg --stat").out;
    EXPECT_EQ(stat.rfind("2 differences\n  Wall: 1 added, 1 changed\nwhat changed", 0), 0U) << stat;
    write("c.zvg", false, 101);
    const std::string many = Run("diff a.zvg c.zvg").out;
    EXPECT_NE(many.find("\n101 differences\n  Wall: 101 added\n"), std::string::npos) << many;
    const nlohmann::json told = nlohmann::json::parse(Run("diff a.zvg b.zvg --json").out);
    EXPECT_EQ(told["differences"][0]["distance"], 5.0);
    EXPECT_EQ(Run("diff a.zvg missing.zvg").status, 3);
}

TEST_F(ToolTest, PackTellsItsWorkAndItsSettings) {
    std::ofstream(folder + "tri.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\no Slab\nf 1 2 3\n";
    ASSERT_EQ(Run("pack -q --no-preview tri.obj -o plain.zvg").status, 0) << err;
    const std::string name =
        RunJson("show plain.zvg 0:0").value("/classLevel4/name"_json_pointer, std::string());
    WriteAll(folder + "good.ini", "[ZBufferSize]\n" + name + "=7\nOther=8\n");
    WriteAll(folder + "typo.ini", "[ZBufferSize]\n" + name + "x=7\n");
    const std::string pack = "pack --no-preview tri.obj -o x.zvg --force";
    EXPECT_NE(Run(pack + " --settings good.ini").err.find(", settings set 1 class row, "),
              std::string::npos)
        << err;
    EXPECT_EQ(RunJson("show x.zvg 0:0")["classLevel4"]["attr"]["zBufferSize"], 7);
    EXPECT_NE(Run(pack + " --settings typo.ini").err.find(", settings set 0 class rows, "),
              std::string::npos)
        << err;
    EXPECT_EQ(Run(pack).err.find("settings"), std::string::npos) << err;

    const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int keep = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    EXPECT_EQ(Run("pack tri.obj -o x.zvg --force", std::string("2>") + ptsname(terminal)).status,
              0);
    std::string shown(4096, '\0');
    shown.resize(
        static_cast<std::size_t>(std::max<ssize_t>(read(terminal, shown.data(), shown.size()), 0)));
    std::size_t at = 0;
    for (const char* work : {"reading", "packing 100 %", "drawing the preview", "compressing"}) {
        at = shown.find(work, at);
        EXPECT_NE(at, std::string::npos) << work << '\n' << shown;
    }
    close(keep);
    close(terminal);
}

TEST_F(ToolTest, HostileTextStaysOneHarmlessLine) {
    const std::wstring evil =
        std::wstring(L"x\n\x1B[2J\t../") + wchar_t(0x202E) + L"/etc/" + wchar_t(0xD800);
    SZVLGZvgComp comp = MakeComp(L"", L"a");
    comp.classLevel1Name = comp.classLevel2Name = comp.classLevel3Name = evil;
    comp.compGuidName = SerialKey(evil);
    comp.compProperties = {{evil, evil}};
    comp.geoRefs[0].geoIdentification = evil;
    SZVLGZvgBlockHeadInfo head;
    head.firstText = evil;
    WriteBlock(
        folder + "evil.zvg", [&comp](CZVLGBlockSaver& saver) { saver.AddComp(comp); }, head);

    const std::string inText = "x\\n\\x1B[2J\\t../\\u202E/etc/\xEF\xBF\xBD";
    const std::string inJson = std::string("x\n\x1B[2J\t../\xE2") + "\x80\xAE/etc/\xEF\xBF\xBD";
    for (const std::string arguments : {"info ", "tree ", "list ", "show 0:0 ", "geo 0:0 "}) {
        const std::size_t blank = arguments.find(' ');
        const std::string call =
            arguments.substr(0, blank) + " " + folder + "evil.zvg" + arguments.substr(blank);
        const Outcome outcome = Run(call);
        EXPECT_EQ(outcome.status, 0) << call << outcome.err;
        EXPECT_NE(outcome.out.find(inText), std::string::npos) << outcome.out;
        EXPECT_EQ(outcome.out.find('\x1B'), std::string::npos) << call;
        EXPECT_NE(RunJson(call).dump().find(nlohmann::json(inJson).dump()), std::string::npos)
            << call;
    }
    const Outcome list = Run("list " + folder + "evil.zvg");
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\t'), 5);
    EXPECT_EQ(std::count(list.out.begin(), list.out.end(), '\n'), 1);
    const Outcome missing = Run("info '" + folder + "a\nb\x1B'");
    EXPECT_EQ(missing.status, 3);
    ExpectOneLine(missing.err);
    EXPECT_EQ(missing.err.find('\x1B'), std::string::npos);
}

TEST_F(ToolTest, JsonTellsWhatIsStored) {
    const nlohmann::json info = RunJson("info " + good);
    const std::pair<const char*, int> counts[] = {{"version", 4},
                                                  {"floors", 2},
                                                  {"components", 3},
                                                  {"geometries", 5},
                                                  {"geometryBlocks", 3},
                                                  {"identifications", 5},
                                                  {"fileBytes", static_cast<int>(bytes.size())}};
    for (const auto& [name, count] : counts) EXPECT_EQ(info[name], count) << name;
    const nlohmann::json verify = RunJson("verify " + good);
    EXPECT_EQ(verify["ok"], true);
    EXPECT_EQ(verify["counts"]["components"], 3);

    const nlohmann::json floors = RunJson("tree " + good)["floors"];
    EXPECT_EQ(floors[1]["name"], "Upper:1");
    EXPECT_EQ(floors[0]["classes"][0]["classes"][0]["classes"][0]["name"], "Concrete");
    EXPECT_EQ(floors[0]["classes"][0]["classes"][0]["classes"][0]["components"], 2);
    EXPECT_EQ(RunJson("list --class Wall " + good)["components"].size(), 3U);
    EXPECT_EQ(RunJson("list --floor Upper:1 --class Concrete " + good)["components"].size(), 1U);

    const nlohmann::json comp = RunJson("show " + good + " Upper:1:0");
    EXPECT_EQ(comp["compGuidName"]["name"], "c");
    EXPECT_EQ(comp["classLevel4"]["attr"]["colour"], "#AB0000FF");
    EXPECT_EQ(comp["compProperties"][0]["value"], "F90");
    EXPECT_EQ(comp["geoRefs"][0]["geoIds"][0]["geoIdentification"], "body of c");

    const nlohmann::json body = RunJson("geo " + good + " 'body of c'");
    EXPECT_EQ(body["geometry"], "1:0");
    EXPECT_EQ(body["total"]["faces"], 1);
    EXPECT_EQ(body["total"]["boundingBox"], nlohmann::json({{0., 0., 0.}, {1., 2., 3.}}));
    const nlohmann::json box = RunJson("geo " + good + " arc")["total"]["boundingBox"];
    EXPECT_NEAR(box[0][0], -1, 1e-9);
    EXPECT_NEAR(box[0][1], 0, 1e-9);
    EXPECT_NEAR(box[1][1], 1, 1e-9);
    const nlohmann::json deep = RunJson("geo " + good + " deep");
    EXPECT_EQ(deep["records"].size(), 20001U);
    EXPECT_EQ(deep["records"][20000]["parent"], 19999);
}

}  // namespace
