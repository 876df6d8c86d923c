// Writes what the functions of the web's module answer about a file, all of it, one answer behind
// the other: u32 status, u32 bytes, the bytes. The tests hold it against what the module itself
// answers.
//   web_answers FILE > ANSWERS

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "web/native/Module.h"

using ZVSmartModel::Web::Session;

namespace {

void Put(std::uint32_t number) {
    std::fwrite(&number, sizeof number, 1, stdout);
}

/// Writes what was answered, and returns whether there was anything.
bool Tell(Session* session, int status) {
    const std::uint32_t size = zvg_answer_size(session);
    Put(static_cast<std::uint32_t>(status));
    Put(size);
    std::fwrite(zvg_answer(session), 1, size, stdout);
    return status == 0 && size != 0;
}

void AppendText(std::vector<std::uint8_t>& request, const std::string& text) {
    request.push_back(static_cast<std::uint8_t>(text.size()));
    request.insert(request.end(), 3, 0);
    request.insert(request.end(), text.begin(), text.end());
}

void TellScene(Session* session, const std::vector<std::string>& texts) {
    std::vector<std::uint8_t> request;
    for (const std::string& text : texts) AppendText(request, text);
    ZVSmartModel::Web::Scene* const scene =
        zvg_scene(session, request.data(), static_cast<std::uint32_t>(request.size()));
    while (Tell(session, zvg_scene_next(scene))) {
    }
    zvg_scene_end(scene);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::ifstream in(argv[1], std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    Session* const session = zvg_begin(static_cast<double>(bytes.size()), 0);
    zvg_bring(session, 0, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    Tell(session, zvg_open(session));
    Tell(session, zvg_floors(session));
    for (std::uint32_t floor = 0; Tell(session, zvg_floor(session, floor)); ++floor) {
    }
    Tell(session, zvg_find(session, nullptr, 0));
    for (std::uint32_t floor = 0; floor < 64; ++floor) {
        for (std::uint32_t position = 0; position < 1000; ++position) {
            if (!Tell(session, zvg_element(session, floor, position))) break;
        }
    }
    Tell(session, zvg_preview(session));
    TellScene(session, {});
    TellScene(session, {"normals", "flat", "doubles", "true"});
    TellScene(session, {"elementsAtOnce", "5"});
    Tell(session, zvg_damage(session));
    Tell(session, zvg_verify(session));
    zvg_end(session);
    return 0;
}
