#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartZvg/ZVSmartZvg.h"

// What the tests that run the built tool share.

inline std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Writes a block file with what `fill` adds.
inline void WriteBlock(const std::string& path,
                       const std::function<void(ZVSmartZvg::CZVLGBlockSaver&)>& fill,
                       const ZVSmartZvg::SZVLGZvgBlockHeadInfo& head = {},
                       unsigned int geosPerBlock = 0) {
    ZVSmartFormat::CZVFTFileOutStream stream(path);
    ASSERT_TRUE(stream.Open());
    ZVSmartZvg::CZVLGBlockSaver saver;
    saver.Init(&stream, head, "", geosPerBlock);
    fill(saver);
    saver.WriteEnd();
    stream.Close();
}

/// The text of a GLB file; discarded where the file is none or its text no JSON in UTF-8.
inline nlohmann::json JsonOfGlb(const std::string& bytes) {
    std::uint32_t head[5] = {};  // magic, version, file size, size and kind of the first chunk
    std::memcpy(head, bytes.data(), std::min(bytes.size(), sizeof head));
    const bool isGlb = bytes.rfind("glTF", 0) == 0 && head[1] == 2 && head[2] == bytes.size() &&
                       head[3] <= bytes.size() - sizeof head && head[4] == 0x4E4F534A;
    return nlohmann::json::parse(isGlb ? bytes.substr(20, head[3]) : "", nullptr, false);
}

/// A mesh that the library behind the importer never finishes.
constexpr const char* endlessPly =
    "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
    "property float z\nelement face 1\nproperty list uchar int vertex_indices\n"
    "end_head1.0\nelement vertex 3\nproperty float x\nprer\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";

#ifdef __SANITIZE_ADDRESS__
constexpr bool addressSanitizer = true;
#else
constexpr bool addressSanitizer = false;
#endif

/// Words for the shell that limit the addresses of what it runs next. The address sanitizer's
/// shadow alone is terabytes of them: under it, nothing is limited.
inline std::string LimitAddresses(int mebibytes) {
    return addressSanitizer ? "" : "ulimit -v " + std::to_string(mebibytes * 1024) + "; ";
}

/// A folder of its own for each test, in which the tool runs.
class ToolFixture : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "zvgtest-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name + "/";
    }
    void TearDown() override { std::filesystem::remove_all(folder); }

    /// Runs a shell's words in the folder, $Z being the tool, and gives their exit status; what
    /// was said is in `out`, unless the words lead it elsewhere, and in `err`.
    int Run(const std::string& words) {
        const std::string command =
            "cd " + folder + "; Z=" ZVG_BINARY "; (" + words + ") >stdout 2>stderr";
        const int status = std::system(command.c_str());  // NOLINT(cert-env33-c)
        out = ReadAll(folder + "stdout");
        err = ReadAll(folder + "stderr");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string folder, out, err;
};
