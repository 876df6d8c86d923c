// Runs the built tool where its output, its memory or its import child fails, and on hostile text.

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <random>
#include <set>
#include <vector>

#include "tool_support.h"

using namespace ZVSmartZvg;
namespace fs = std::filesystem;

namespace {

SZVLGZvgComp Comp(const std::wstring& text, const std::wstring& value) {
    SZVLGZvgComp comp;
    comp.classLevel1Name = comp.classLevel2Name = comp.classLevel3Name = text;
    comp.classLevel4Name = comp.ownerTextA = comp.ownerTextC = text;
    comp.compGuidName = SerialKey(text);
    comp.compProperties = {{text, value}, {L"Element.Name", text}};
    comp.geoRefs.resize(1);
    comp.geoRefs[0].geoIdentification = text;
    CZVIMShell shell;
    shell.AddPts({{0, 0, 0}, {4, 0, 0}, {0, 3, 2}});
    shell.AddFaceIndex({0, 1, 2});
    comp.geoRefs[0].geo.shells.push_back(shell);
    return comp;
}

void WriteText(const std::string& path, const std::wstring& text, const std::wstring& value) {
    SZVLGZvgBlockHeadInfo head;
    head.firstText = text;
    WriteBlock(
        path, [&](CZVLGBlockSaver& saver) { saver.AddComp(Comp(text, value)); }, head);
}

class ToolFaults : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        fs::create_directory(folder + "in");
        fs::create_directory(folder + "out");
        // A broken head in which the importer turns round for as long as a test needs it.
        std::ofstream(folder + "in/endless.ply") << endlessPly;
        // Big enough to pass the limit on files.
        std::ofstream model(folder + "in/big.obj");
        for (int i = 0; i < 6000; ++i) {
            model << "v " << i % 251 << ' ' << i % 1009 << ' ' << i % 877 << '\n';
            if (i > 1) model << "f " << i - 1 << ' ' << i << ' ' << i + 1 << '\n';
        }
        model.close();
        WriteText(folder + "in/good.zvg", L"good", L"value");
    }
    std::set<std::string> Names(const std::string& where) const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder + where)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }
};

TEST_F(ToolFaults, FaultsHaveTheirStatusOneLineAndNoFile) {
    const std::string pack = "$Z pack -q in/big.obj -o out/x.zvg";
    const std::string packEndless = "$Z pack -q in/endless.ply -o out/x.zvg";
    const std::string killChild =
        " & P=$!; for i in $(seq 500); do C=$(pgrep -P $P) && break; sleep 0.01; done; "
        "sleep 0.2; kill -9 $C; wait $P";
    const struct {
        std::string words;
        int status;
        std::string says;
    } cases[] = {
        {"$Z pack -q in/big.obj -o - >/dev/full", 3, "standard output: No space"},
        {"$Z pack -q in/big.obj -o - >&-", 3, "standard output: "},
        {"$Z export in/good.zvg -o - >/dev/full", 3, "standard output: No space"},
        {"$Z plan in/good.zvg -o - >/dev/full", 3, "standard output: No space"},
        {"$Z list --csv in/good.zvg >/dev/full", 3, "standard output: No space"},
        {"$Z diff in/good.zvg in/good.zvg >&-", 3, "standard output: "},
        {"$Z info - </dev/null", 4, "standard input: "},
        {"$Z info - <in", 3, "standard input: Is a directory"},
        {"$Z pack - -o out/x.zvg", 2, "standard input"},
        {"$Z diff in/good.zvg in/big.obj", 4, "in/big.obj: head"},
        {"ulimit -f 8; " + pack, 3, "cannot write out/x.zvg: File too large"},
        {"ulimit -f 1; $Z plan in/good.zvg -o out/x.svg", 3, "out/x.svg: File too large"},
        {"ulimit -f 1; $Z export in/good.zvg -o out/x.glb", 3, "out/x.glb: File too large"},
        {"ulimit -f 1; $Z plan in/good.zvg -o - | cat", 3, "standard output: File too large"},
        {"ulimit -f 1; cat in/big.obj | $Z info -", 3, "temporary file: File too large"},
        {packEndless + killChild, 3, "in/endless.ply: the importer was killed"},
    };
    for (const auto& [words, status, says] : cases) {
        // The status of a pipe is its last command's.
        const bool piped = words.find("| cat") != std::string::npos;
        EXPECT_EQ(Run(words), piped ? 0 : status) << words << '\n' << err;
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << words << '\n' << err;
        EXPECT_EQ(err.rfind("zvg: ", 0), 0U) << words << '\n' << err;
        EXPECT_NE(err.find(says), std::string::npos) << words << '\n' << err;
        EXPECT_TRUE(Names("out").empty()) << words;
    }
}

TEST_F(ToolFaults, SignalsLeaveNothingBehind) {
    for (const char* signal : {"INT", "TERM", "HUP"}) {
        const std::string words = std::string("timeout --foreground --preserve-status -s ") +
                                  signal + " 1 $Z pack -q in/endless.ply -o out/x.zvg";
        EXPECT_GT(Run(words), 128) << signal << err;
        EXPECT_TRUE(Names("out").empty()) << signal;
    }
}

/// What the tool says of a fault at one of its calls, as fault_at_call.cpp describes it.
std::string At(const std::string& fault, const std::string& words) {
    return "export ZVG_FAULT=" + fault + "; LD_PRELOAD='" ZVG_FAULT_AT_CALL "' $Z " + words;
}

const std::string noSpace = ":e28";
const std::string eio = ":e5";
const std::string namedFiles = "openNameless:0:e95,";  // as on file systems that know no others

/// The end comes when the first file is there but empty, and when all of it is written.
TEST_F(ToolFaults, EndsInMidWritingLeaveNothingBehind) {
    const struct {
        const char* words;
        const char* lastCall;
    } cases[] = {{"export in/good.zvg -o out/x.glb", "linkat"},
                 {"plan in/good.zvg -o out/x.svg", "linkat"},
                 {"preview in/good.zvg -o out/x.png --render 64x48", "linkat"},
                 {"export --force in/good.zvg -o in/taken.glb", "rename"},
                 {"pack -q in/big.obj -o out/x.zvg", "linkat"}};
    for (const auto& [words, lastCall] : cases) {
        for (const std::string fault : {"fdopen:1:15", "fdopen:1:9", lastCall}) {
            const bool packs = std::string(words).rfind("pack", 0) == 0;
            if (packs && fault != lastCall) continue;  // the child's, which is killed
            std::ofstream(folder + "in/taken.glb") << "mine";
            Run(At(fault == lastCall ? fault + ":1:15" : fault, words) + "; echo $? >status");
            EXPECT_EQ(ReadAll(folder + "status"), fault == "fdopen:1:9" ? "137\n" : "143\n")
                << words << fault << err;
            EXPECT_TRUE(Names("out").empty()) << words << fault;
            EXPECT_EQ(ReadAll(folder + "in/taken.glb"), "mine") << words << fault;
            EXPECT_EQ(Names("in").size(), 4U) << words << fault;
        }
    }
}

TEST_F(ToolFaults, WhatCannotBeKeptIsAFailureAndLeavesTheOldFiles) {
    const std::string obj = "export --force -q in/good.zvg -o out/x.obj";
    const std::string glb = "export -q in/good.zvg -o out/x.glb";
    const struct {
        std::string fault, words;
    } cases[] = {{"fsync:1" + eio, glb},
                 {"fsync:1" + eio, obj},
                 {"fsync:2" + eio, obj},
                 {"linkat:1" + noSpace, glb},
                 {"linkat:4" + eio, obj},
                 {"rename:2" + eio, obj + " --properties out/x.json"},
                 {"rename:1" + eio, obj},
                 {"rename:2" + eio, obj},
                 {namedFiles + "rename:2" + eio, obj},
                 {namedFiles + "renameat2:1" + eio, glb}};
    for (const auto& [fault, words] : cases) {
        std::ofstream(folder + "out/x.obj") << "old";
        std::ofstream(folder + "out/x.mtl") << "old too";
        EXPECT_EQ(Run(At(fault, words)), 3) << fault << words << err;
        EXPECT_NE(err.find("cannot write out/x."), std::string::npos) << fault << words << err;
        const bool isFull = fault.find(noSpace) != std::string::npos;
        EXPECT_NE(err.find(isFull ? ": No space" : ": Input/output error"), std::string::npos)
            << fault << words << err;
        EXPECT_EQ(ReadAll(folder + "out/x.obj"), "old") << fault << words;
        EXPECT_EQ(ReadAll(folder + "out/x.mtl"), "old too") << fault << words;
        EXPECT_EQ(Names("out"), (std::set<std::string>{"x.obj", "x.mtl"})) << fault << words;
    }
    // Without old files there are none.
    fs::remove(folder + "out/x.obj");
    fs::remove(folder + "out/x.mtl");
    EXPECT_EQ(Run(At("linkat:2" + eio, "export in/good.zvg -o out/x.obj")), 3) << err;
    EXPECT_TRUE(Names("out").empty());
    EXPECT_EQ(Run(At("fsyncFolder:1" + eio, glb)), 3) << err;
}

TEST_F(ToolFaults, WhatIsReadIsNotWrittenOver) {
    for (const char* name : {"g.svg", "g.glb", "g.png", "g.mtl"}) {
        fs::copy_file(folder + "in/good.zvg", folder + "in/" + name);
    }
    fs::create_hard_link(folder + "in/g.svg", folder + "in/hard.svg");
    fs::create_symlink("g.svg", folder + "in/soft.svg");
    std::ofstream(folder + "in/tri.obj") << "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    std::ofstream(folder + "in/tri.mtl") << "newmtl m\n";
    std::ofstream(folder + "in/set.ini") << "[a]\n";
    const auto inputs = Names("in");
    for (const char* words :
         {"plan in/g.svg -o in/g.svg", "plan in/g.svg -o in/hard.svg",
          "plan in/soft.svg -o in/g.svg", "plan in/hard.svg -o in/soft.svg",
          "plan - -o in/g.svg <in/g.svg", "export in/g.glb -o in/../in/g.glb",
          "export in/g.mtl -o in/g.obj", "preview in/g.png --render 64x48 -o in/g.png",
          "pack in/tri.obj -o in/tri.obj", "pack in/tri.obj -o in/tri.mtl",
          "pack in/tri.obj --settings in/set.ini -o in/set.ini",
          "pack in/tri.obj --preview in/g.png -o in/g.png"}) {
        for (const char* force : {" --force", ""}) {
            EXPECT_EQ(Run("$Z " + (words + std::string(force))), 3) << words << err;
            EXPECT_NE(err.find(": it is what is read\n"), std::string::npos) << words << err;
        }
    }
    EXPECT_EQ(Names("in"), inputs);
    for (const char* name : {"g.svg", "g.glb", "g.png", "g.mtl"}) {
        EXPECT_EQ(ReadAll(folder + "in/" + name), ReadAll(folder + "in/good.zvg")) << name;
    }
    EXPECT_EQ(ReadAll(folder + "in/tri.obj").size(), 32U);
}

TEST_F(ToolFaults, FilesAreWrittenUnderAnyName) {
    const std::string longest(251, 'n');
    for (const std::string prefix : {"", "openNameless:0:e95,", "link:0:e1,"}) {
        for (const std::string& words :
             {"export -q in/good.zvg -o out/" + longest + ".glb",
              "export -q --force in/good.zvg -o out/" + longest + ".glb",
              "export -q --force in/good.zvg -o out/" + longest + ".obj",
              std::string("export -q --force in/good.zvg -o out/x.obj")}) {
            EXPECT_EQ(Run(At(prefix + "none:1:1", words)), 0) << prefix << words << err;
        }
        EXPECT_EQ(Names("out").size(), 5U) << prefix;
        for (const std::string& name : Names("out")) {
            EXPECT_GT(fs::file_size(folder + "out/" + name), 20U) << name;
            fs::remove(folder + "out/" + name);
        }
    }
    // A signal between two files that belong together waits for the second.
    Run(At("linkat:1:15", "export in/good.zvg -o out/x.obj") + "; echo $? >status");
    EXPECT_EQ(ReadAll(folder + "status"), "143\n");
    EXPECT_EQ(Names("out"), (std::set<std::string>{"x.obj", "x.mtl"}));
}

/// From as little memory as the program starts in.
TEST_F(ToolFaults, LackOfMemoryIsSaidAndLeavesNothingBehind) {
    if (addressSanitizer) GTEST_SKIP() << "its shadow leaves no limit to set";
    int base = 16;  // mebibytes of address space
    const auto limited = [](int mebibytes, const std::string& words) {
        return LimitAddresses(mebibytes) + "exec $Z " + words;
    };
    while (base < 1024 && Run(limited(base, "--version")) != 0) base += 2;
    int lacks = 0;
    for (const char* words :
         {"info in/good.zvg", "verify in/good.zvg", "diff in/good.zvg in/good.zvg",
          "plan in/good.zvg -o out/x.svg", "export in/good.zvg -o out/x.glb",
          "export in/good.zvg -o out/x.obj", "preview in/good.zvg -o out/x.png --render 640x480",
          "pack -q in/big.obj -o out/x.zvg"}) {
        for (int more = 0; more <= 256; more = more * 3 / 2 + 2) {
            const int status = Run(limited(base + more, words));
            if (status != 0) {
                ++lacks;
                EXPECT_EQ(status, 1) << words << ' ' << more << ' ' << err;
                EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << words << '\n' << err;
                EXPECT_NE(err.find("memory"), std::string::npos) << words << '\n' << err;
                EXPECT_TRUE(Names("out").empty()) << words << ' ' << more;
            }
            for (const std::string& name : Names("out")) fs::remove(folder + "out/" + name);
        }
    }
    EXPECT_GT(lacks, 0);
}

/// Libraries for drawing and printing are loaded by those who draw and print, and by nobody else.
TEST_F(ToolFaults, WhoNeedsNoBrokenLibraryMeetsNone) {
    for (const char* name : {"libembree3.so.3", "libcairo.so.2"}) {
        std::ofstream(folder + "in/" + name) << "broken";
    }
    const std::string tool = "LD_LIBRARY_PATH=$PWD/in $Z ";
    EXPECT_EQ(Run(tool + "info in/good.zvg"), 0) << err;
    EXPECT_EQ(Run(tool + "plan -q in/good.zvg -o out/x.svg"), 0) << err;
    EXPECT_EQ(Run(tool + "pack -q --no-preview in/big.obj -o out/x.zvg"), 0) << err;
    EXPECT_EQ(err, "");
    EXPECT_EQ(Run(tool + "pack --force in/big.obj -o out/x.zvg"), 0) << err;
    EXPECT_NE(err.find("no preview: there is nothing to draw with"), std::string::npos) << err;
    EXPECT_EQ(Run(tool + "plan in/good.zvg -o out/x.pdf"), 2);
    EXPECT_NE(err.find("cairo"), std::string::npos) << err;
    EXPECT_EQ(Run(tool + "preview in/good.zvg -o out/x.png --render 64x48"), 2);
    EXPECT_NE(err.find("draws no pictures"), std::string::npos) << err;
    EXPECT_EQ(Names("out"), (std::set<std::string>{"x.svg", "x.zvg"}));
}

TEST_F(ToolFaults, BlocksGoThroughPipes) {
    ASSERT_EQ(Run("$Z pack -q in/big.obj -o - | cat >out/piped.zvg"), 0) << err;
    ASSERT_EQ(Run("$Z pack -q in/big.obj -o out/named.zvg"), 0) << err;
    EXPECT_EQ(ReadAll(folder + "out/piped.zvg"), ReadAll(folder + "out/named.zvg"));
    EXPECT_EQ(Run("cat out/named.zvg | $Z verify - >out/verified"), 0) << err;
    EXPECT_EQ(Run("cat out/named.zvg | $Z diff - out/piped.zvg >out/diff"), 0) << err;
    EXPECT_EQ(ReadAll(folder + "out/diff"), "no differences\n");
    // A block file that stands behind something else in a file that can seek.
    EXPECT_EQ(Run("(printf abc; cat in/good.zvg) >out/behind; "
                  "(dd bs=1 count=3 of=/dev/null status=none; $Z verify -) <out/behind >out/ok"),
              0)
        << err;
}

/// The records of RFC 4180; empty where the text is none.
std::vector<std::vector<std::string>> ParseCsv(const std::string& text) {
    std::vector<std::vector<std::string>> records(1, {""});
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::string& field = records.back().back();
        const bool end = text.compare(i, 2, "\r\n") == 0;
        if (text[i] == '"') {
            if (quoted && text.compare(i, 2, "\"\"") == 0) {
                field += text[i++];
            } else {
                quoted = !quoted;
            }
        } else if (!quoted && text[i] == ',') {
            records.back().emplace_back();
        } else if (!quoted && end) {
            records.push_back({""});
            ++i;
        } else if (!quoted && static_cast<unsigned char>(text[i]) < 0x20) {
            return {};
        } else {
            field += text[i];
        }
    }
    records.pop_back();
    return records;
}

TEST_F(ToolFaults, HostileTextStaysText) {
    const std::wstring evil = std::wstring(L"../../x\",\r\n<!--&]]>\x1B[2J/etc/") + wchar_t(0) +
                              wchar_t(0xD800) + wchar_t(0x202E) + wchar_t(0xFFFF);
    WriteText(folder + "in/evil.zvg", evil, L"a");
    WriteText(folder + "in/other.zvg", evil, L"b");
    const auto before = Names("in");
    for (const char* words :
         {"info in/evil.zvg", "tree in/evil.zvg", "list in/evil.zvg", "show in/evil.zvg 0:0",
          "show --properties in/evil.zvg 0:0", "geo in/evil.zvg 0:0", "verify in/evil.zvg",
          "props in/evil.zvg", "query 'SELECT * FROM properties, files' in/evil.zvg",
          "diff in/evil.zvg in/other.zvg"}) {
        const int status = std::strncmp(words, "diff", 4) == 0 ? 1 : 0;  // they differ
        ASSERT_EQ(Run(std::string("$Z --json ") + words), status) << words << err;
        EXPECT_FALSE(nlohmann::json::parse(out, nullptr, false).is_discarded()) << words;
        ASSERT_EQ(Run(std::string("$Z ") + words), status) << words << err;
        for (const char c : out) {
            EXPECT_TRUE(static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t') << words;
        }
    }
    ASSERT_EQ(Run("$Z list --csv in/evil.zvg"), 0);
    const auto records = ParseCsv(out);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1].size(), records[0].size());
    EXPECT_EQ(records[1][1].rfind("../../x\",\r\n<!--&]]>\\x1B", 0), 0U) << records[1][1];

    // The file's own name is no text of any encoding, and goes into what is written.
    fs::create_directory(folder + "odd");
    fs::copy_file(folder + "in/evil.zvg", folder + "odd/\xFF\x01<!--\"\xED\xA0\x80.zvg");
    for (const char* words :
         {"plan odd/* -o out/p.svg", "export odd/* -o out/e.obj", "export odd/* -o out/e.glb"}) {
        ASSERT_EQ(Run(std::string("$Z ") + words), 0) << words << err;
    }
    const std::string svg = ReadAll(folder + "out/p.svg");
    EXPECT_EQ(svg.find("<!--"), std::string::npos);
    EXPECT_EQ(svg.find_first_of(std::string("\0\x1B", 2)), std::string::npos);
    const auto gltf = JsonOfGlb(ReadAll(folder + "out/e.glb"));
    const std::string text = gltf["asset"]["extras"]["source"];
    EXPECT_EQ(text.substr(text.find("/etc/")),
              std::string("/etc/\0\xEF\xBF\xBD\xE2\x80\xAE\xEF\xBF\xBF", 15));
    EXPECT_EQ(gltf["nodes"].back()["extras"]["properties"].value(text, ""), "a");
    EXPECT_EQ(Names("out"), (std::set<std::string>{"p.svg", "e.obj", "e.mtl", "e.glb"}));
    EXPECT_EQ(Names("in"), before);
    EXPECT_EQ(Names("odd").size(), 1U);
}

}  // namespace
