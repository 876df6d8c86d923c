// Runs the built tool on models that want what is not theirs, want too much or cannot be made.

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

#include "tool_support.h"

namespace fs = std::filesystem;

namespace {

/// One triangle, its points in the 36 bytes that `uri` names.
std::string Gltf(const std::string& uri) {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],)"
           R"("nodes":[{"mesh":0,"name":"n"}],)"
           R"("meshes":[{"primitives":[{"attributes":{"POSITION":0},"mode":4}]}],)"
           R"("accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3",)"
           R"("min":[0,0,0],"max":[1,1,1]}],)"
           R"("bufferViews":[{"buffer":0,"byteOffset":0,"byteLength":36}],)"
           R"("buffers":[{"byteLength":36,"uri":")" +
           uri + R"("}]})";
}

std::string Obj(const std::string& library, const std::string& x = "0") {
    return "mtllib " + library + "\nusemtl red\nv " + x + " 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
}

/// A wall whose body is `entities`, of which #100 is the item.
std::string Ifc(const std::string& kind, const std::string& entities) {
    return "ISO-10303-21;HEADER;FILE_DESCRIPTION((''),'2;1');"
           "FILE_NAME('m','',(''),(''),'','','');FILE_SCHEMA(('IFC4'));ENDSEC;DATA;\n"
           "#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);#3=IFCUNITASSIGNMENT((#1));\n"
           "#4=IFCCARTESIANPOINT((0.,0.,0.));#5=IFCAXIS2PLACEMENT3D(#4,$,$);\n"
           "#6=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#5,$);\n"
           "#7=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#6),#3);\n"
           "#25=IFCSHAPEREPRESENTATION(#6,'Body','" +
           kind +
           "',(#100));\n#26=IFCPRODUCTDEFINITIONSHAPE($,$,(#25));#27=IFCLOCALPLACEMENT($,#5);\n"
           "#28=IFCWALL('wall',$,'W',$,$,#27,#26,$,.SOLIDWALL.);\n" +
           entities + "\nENDSEC;END-ISO-10303-21;\n";
}

/// Maps nested so often that `levels` of them ask for 10^levels boxes.
std::string NestedMaps(int levels) {
    std::string text =
        "#22=IFCRECTANGLEPROFILEDEF(.AREA.,$,$,4.,0.2);"
        "#23=IFCDIRECTION((0.,0.,1.));#24=IFCEXTRUDEDAREASOLID(#22,#5,#23,2.5);\n";
    text += "#60=IFCCARTESIANTRANSFORMATIONOPERATOR3D($,$,#4,$,$);\n";
    for (int level = 0; level <= levels; ++level) {
        const std::string base = std::to_string(100 + 10 * level);
        const std::string map = std::to_string(101 + 10 * level);
        const std::string inner = std::to_string(102 + 10 * level);
        const std::string next = level == levels ? "24" : std::to_string(100 + 10 * (level + 1));
        std::string items = '#' + next;
        for (int i = 1; i < 10; ++i) items += ",#" + next;
        text.append("#" + base + "=IFCMAPPEDITEM(#" + map + ",#60);#" + map +
                    "=IFCREPRESENTATIONMAP(#5,#" + inner + ");#" + inner +
                    "=IFCSHAPEREPRESENTATION(#6,'Body','MappedRepresentation',(" + items + "));\n");
    }
    return text;
}

class Importing : public ToolFixture {
  protected:
    void SetUp() override {
        ToolFixture::SetUp();
        for (const char* name : {"m", "m/sub", "out"}) fs::create_directory(folder + name);
        ASSERT_EQ(mkfifo((folder + "m/fifo").c_str(), 0600), 0);
        const float points[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
        const std::string bytes(reinterpret_cast<const char*>(points), sizeof points);
        for (const char* name : {"outside.bin", "m/own.bin", "m/sub/own.bin"}) Save(name, bytes);
        Save("m/red.mtl", "newmtl red\nKd 1 0 0\n");
        fs::create_symlink("../outside.bin", folder + "m/leads-out.bin");
        fs::create_symlink(fs::canonical(folder + "m/own.bin"), folder + "m/leads-in.bin");
    }
    void Save(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder + name, std::ios::binary) << bytes;
    }
};

TEST_F(Importing, ReadsOnlyWhatIsTheModels) {
    const struct {
        std::string name, model, refused;  ///< what the line says; empty where it is packed
    } cases[] = {
        {"a.gltf", Gltf("own.bin"), ""},
        {"a.gltf", Gltf("sub/../sub/own.bin"), ""},
        {"a.gltf", Gltf("leads-in.bin"), ""},
        {"a.gltf",
         Gltf("data:application/octet-stream;base64,"
              "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"),
         ""},
        {"a.gltf", Gltf("/etc/passwd"), "/etc/passwd: not in the model's folder"},
        {"a.gltf", Gltf("../outside.bin"), "../outside.bin: not in the model's folder"},
        {"a.gltf", Gltf("leads-out.bin"), "leads-out.bin: not in the model's folder"},
        {"a.gltf", Gltf("/proc/self/environ"), "/proc/self/environ: not in the model's folder"},
        {"a.gltf", Gltf("fifo"), "fifo: not a regular file"},
        {"a.gltf", Gltf("sub"), "sub: not a regular file"},
        {"a.gltf", Gltf("/dev/zero"), "/dev/zero: not in the model's folder"},
        {"a.obj", Obj("red.mtl"), ""},
        {"a.obj", Obj("nowhere.mtl"), ""},
        {"a.obj", Obj("fifo"), "fifo: not a regular file"},
        {"a.obj", Obj("/proc/self/environ"), "/proc/self/environ: not in the model's folder"},
    };
    for (const auto& [name, model, refused] : cases) {
        Save("m/" + name, model);
        const int status =
            Run("timeout 20 $Z pack --no-preview --force m/" + name + " -o out/x.zvg");
        EXPECT_EQ(status, refused.empty() ? 0 : 3) << model << err;
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << model << err;
        const std::string line = "zvg: m/" + name + ": " + refused + '\n';
        EXPECT_TRUE(refused.empty() || err == line) << err;
        EXPECT_EQ(fs::remove(folder + "out/x.zvg"), refused.empty()) << model;
        EXPECT_TRUE(fs::is_empty(folder + "out")) << model;
    }
    // By every path, and by a link of the user's own, beside which the model's files then are.
    Save("m/a.gltf", Gltf("own.bin"));
    Save("elsewhere.gltf", Gltf("own.bin"));
    fs::create_symlink("../elsewhere.gltf", folder + "m/link.gltf");
    for (const char* path : {"$PWD/m/a.gltf", "m/sub/.././a.gltf", "m/link.gltf"}) {
        EXPECT_EQ(Run(std::string("$Z pack -q --no-preview --force ") + path + " -o out/x.zvg"), 0)
            << path << err;
    }
    EXPECT_EQ(Run("cd m; $Z pack -q --no-preview --force a.gltf -o ../out/x.zvg"), 0) << err;
    // What is no model by its kind is not opened either.
    for (const char* path : {"m/fifo", "m/sub", "/dev/zero"}) {
        EXPECT_EQ(Run(std::string("timeout 20 $Z pack ") + path + " -o out/y.zvg"), 3);
        EXPECT_EQ(err, std::string("zvg: ") + path + ": not a regular file\n");
    }
}

TEST_F(Importing, EndsAtItsLimits) {
    Save("m/endless.ply", endlessPly);
    Save("m/maps.ifc", Ifc("MappedRepresentation", NestedMaps(8)));
    const struct {
        std::string words, says;
    } cases[] = {
        {"m/endless.ply --max-time 0.5", "m/endless.ply: the importer needs more than 0.5 s"},
        {"m/maps.ifc --max-memory 200M", "m/maps.ifc: the importer needs more than 200 MiB"},
        {"m/maps.ifc --max-time 0.5", "m/maps.ifc: the importer needs more than 0.5 s"},
    };
    for (const auto& [words, says] : cases) {
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_EQ(Run(LimitAddresses(4000) + "timeout 60 $Z pack --no-preview " + words +
                      " -o out/x.zvg; S=$?; pgrep -f child-of-zvg.*$PWD; exit $S"),
                  3);
        EXPECT_EQ(err.rfind("zvg: " + says, 0), 0U) << err;
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), 1) << err;
        EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(30));
        EXPECT_TRUE(fs::is_empty(folder + "out"));
    }
    for (const char* words : {"--max-memory 0", "--max-memory -1", "--max-memory x", "--max-time 0",
                              "--max-time nan", "--max-time 1e300"}) {
        EXPECT_EQ(Run(std::string("$Z pack m/endless.ply -o out/x.zvg ") + words), 2) << words;
    }
    EXPECT_EQ(Run("$Z pack -q m/red.mtl -o out/x.zvg --max-memory 1.5Q"), 2);
}

TEST_F(Importing, SaysWhatCannotBeMade) {
    Save("m/good.obj", Obj("red.mtl") + "v 1e20 0 0\nf 2 3 4\n");
    EXPECT_EQ(Run("$Z pack m/good.obj -o out/x.zvg"), 0) << err;
    EXPECT_NE(err.find(" Mesh "), std::string::npos) << err;
    EXPECT_NE(err.find(": 1 triangle or curve left out"), std::string::npos) << err;

    Save("m/bad.obj", Obj("red.mtl", "1e30"));
    EXPECT_EQ(Run("$Z pack m/bad.obj -o out/y.zvg"), 3);
    EXPECT_NE(err.find("zvg: m/bad.obj: nothing in it can be packed\n"), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(folder + "out/y.zvg"));

    Save("m/self.ifc", Ifc("MappedRepresentation",
                           "#100=IFCMAPPEDITEM(#101,$);"
                           "#101=IFCREPRESENTATIONMAP(#5,#25);"));
    EXPECT_EQ(Run("$Z pack --force m/self.ifc -o out/x.zvg"), 0) << err;
    EXPECT_NE(err.find(" #101: the reference to #25 leads back"), std::string::npos) << err;

    Save("m/minus.ifc", Ifc("SweptSolid",
                            "#100=IFCEXTRUDEDAREASOLID(#101,$,#102,1.);"
                            "#101=IFCCIRCLEPROFILEDEF(.AREA.,$,$,-1.);"
                            "#102=IFCDIRECTION((0.,0.,1.));"));
    EXPECT_EQ(Run("$Z pack --force m/minus.ifc -o out/x.zvg"), 0) << err;
    EXPECT_NE(err.find("elements lost their bodies, as at wall"), std::string::npos) << err;
}

/// Looked at through /proc, which shows a process without dumps to root only.
TEST_F(Importing, TheChildSeesNothingOfTheCaller) {
    if (geteuid() != 0) GTEST_SKIP() << "not root";
    const bool caged = Run("$Z --version | grep -q seccomp") == 0;
    Save("m/endless.ply", endlessPly);
    ASSERT_EQ(Run("SECRET=1 $Z pack m/endless.ply -o out/x.zvg 9<outside.bin & P=$!\n"
                  "for i in $(seq 500); do C=$(pgrep -P $P) && break; sleep 0.01; done; sleep 0.5\n"
                  "readlink /proc/$C/fd/* | grep outside; grep -c SECRET /proc/$C/environ; "
                  "ps -o pgid= -p $C | grep -qw $C && echo own group; "
                  "awk '/^Seccomp:/ {print $2}' /proc/$C/status; "
                  "awk '/core file/ {print $5, $6}' /proc/$C/limits; "
                  "kill $P; wait $P; sleep 0.1; grep ^State: /proc/$C/status | grep -v Z; true"),
              0)
        << err;
    EXPECT_EQ(out, std::string("0\nown group\n") + (caged ? "2" : "0") + "\n0 0\n");
}

}  // namespace
