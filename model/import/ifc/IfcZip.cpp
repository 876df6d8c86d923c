#include "model/import/ifc/IfcZip.h"

#include <unistd.h>
#include <zip.h>

#include <cstdint>
#include <memory>
#include <string_view>

#include "model/import/ImportReport.h"

namespace ZVSmartModel {

namespace {

struct CloseArchive {
    void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, CloseArchive>;

struct CloseEntry {
    void operator()(zip_file_t* entry) const { zip_fclose(entry); }
};
using Entry = std::unique_ptr<zip_file_t, CloseEntry>;

Archive Opened(const std::string& bytes) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
    Archive archive(source ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr);
    if (!archive) {
        const std::string reason = zip_error_strerror(&error);
        if (source) zip_source_free(source);
        zip_error_fini(&error);
        throw DamagedModel("the archive cannot be opened: " + reason);
    }
    zip_error_fini(&error);
    return archive;
}

bool IsIfc(std::string_view name) {
    constexpr std::string_view ending = ".ifc";
    if (name.size() < ending.size()) return false;
    for (std::size_t i = 0; i < ending.size(); ++i) {
        const char c = name[name.size() - ending.size() + i];
        if ((c >= 'A' && c <= 'Z' ? c + 32 : c) != ending[i]) return false;
    }
    return true;
}

zip_uint64_t TheOneIfc(zip_t* archive) {
    std::int64_t found = -1;
    for (zip_int64_t i = 0; i < zip_get_num_entries(archive, 0); ++i) {
        const char* name = zip_get_name(archive, static_cast<zip_uint64_t>(i), 0);
        if (!name || !IsIfc(name)) continue;
        if (found >= 0) throw ImportError("the archive holds several IFC files: unpack it first");
        found = i;
    }
    if (found < 0) throw ImportError("the archive holds no .ifc file");
    return static_cast<zip_uint64_t>(found);
}

std::uint64_t MostBytes() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageBytes <= 0) return std::uint64_t{1} << 30;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageBytes) / 4;
}

}  // namespace

std::string UnpackedIfc(const std::string& bytes) {
    const Archive archive = Opened(bytes);
    const zip_uint64_t index = TheOneIfc(archive.get());
    zip_stat_t stat;
    if (zip_stat_index(archive.get(), index, 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE)) {
        throw DamagedModel("the archive is damaged");
    }
    if (stat.size > MostBytes()) {
        throw ImportError("the archive's file has " + std::to_string(stat.size) +
                          " bytes, more than a quarter of this machine's memory");
    }
    const Entry entry(zip_fopen_index(archive.get(), index, 0));
    if (!entry) throw ImportError(zip_strerror(archive.get()));
    std::string unpacked;
    std::string piece(1 << 16, '\0');
    zip_int64_t count = 0;
    while ((count = zip_fread(entry.get(), piece.data(), piece.size())) > 0) {
        unpacked.append(piece, 0, static_cast<std::size_t>(count));
        if (unpacked.size() > stat.size) break;
    }
    // Its check sum is compared when all of it was read.
    if (count < 0 || unpacked.size() != stat.size) throw DamagedModel("the archive is damaged");
    return unpacked;
}

}  // namespace ZVSmartModel
