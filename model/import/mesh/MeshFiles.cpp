#include "model/import/mesh/MeshFiles.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace ZVSmartModel {

namespace {

/// Reading only. Positions beyond the end are refused.
class MeshStream : public Assimp::IOStream {
  public:
    explicit MeshStream(ModelFile file) : file(std::move(file)) {}

    std::size_t Read(void* buffer, std::size_t size, std::size_t count) override {
        if (size == 0) return 0;
        const std::uint64_t whole = (file.Size() - position) / size;
        const std::size_t wanted = size * std::min<std::uint64_t>(count, whole);
        const std::size_t got = file.Read(position, static_cast<char*>(buffer), wanted);
        position += got;
        return got / size;
    }
    std::size_t Write(const void*, std::size_t, std::size_t) override { return 0; }
    aiReturn Seek(std::size_t offset, aiOrigin origin) override {
        const std::uint64_t base = origin == aiOrigin_CUR   ? position
                                   : origin == aiOrigin_END ? file.Size()
                                                            : 0;
        const std::uint64_t target = base + offset;  // wraps where the offset is meant as negative
        if (target > file.Size()) return aiReturn_FAILURE;
        position = target;
        return aiReturn_SUCCESS;
    }
    std::size_t Tell() const override { return position; }
    std::size_t FileSize() const override { return file.Size(); }
    void Flush() override {}

  private:
    ModelFile file;
    std::uint64_t position = 0;
};

}  // namespace

std::unique_ptr<Assimp::IOStream> MeshFiles::Opened(const std::string& name) const {
    if (name.empty()) return nullptr;
    std::optional<ModelFile> file = open(name == modelName ? "" : name);
    if (!file) return nullptr;
    return std::make_unique<MeshStream>(std::move(*file));
}

Assimp::IOStream* MeshFiles::Open(const char* name, const char* mode) {
    const bool writes = std::strpbrk(mode, "wa+") != nullptr;
    return writes ? nullptr : Opened(name).release();
}

void MeshFiles::Close(Assimp::IOStream* stream) {
    const std::unique_ptr<Assimp::IOStream> closed(stream);
}

}  // namespace ZVSmartModel
