#include "ZVSmartFormat/FileStream.h"

#include <limits>

#ifndef _WIN32
#include <sys/types.h>
#endif

namespace ZVSmartFormat {

namespace {

constexpr u64 lost = std::numeric_limits<u64>::max();

// `long`, which fseek and ftell take, ends at 2 GiB on Windows and where pointers have 32 bits.
#ifdef _WIN32
using FileOffset = __int64;
int SeekTo(std::FILE* file, FileOffset offset, int from) {
    return _fseeki64(file, offset, from);
}
FileOffset OffsetOf(std::FILE* file) {
    return _ftelli64(file);
}
#else
using FileOffset = off_t;
int SeekTo(std::FILE* file, FileOffset offset, int from) {
    return fseeko(file, offset, from);
}
FileOffset OffsetOf(std::FILE* file) {
    return ftello(file);
}
#endif
static_assert(sizeof(FileOffset) == 8, "set _FILE_OFFSET_BITS to 64");

std::FILE* OpenFile(const std::string& path, bool forWrite) {
    if (path.empty()) return nullptr;
    std::FILE* const file = std::fopen(path.c_str(), forWrite ? "wb+" : "rb");
    if (file == nullptr) return nullptr;
    if (std::ferror(file) == 0) return file;
    std::fclose(file);
    return nullptr;
}

void CloseFile(std::FILE*& file) {
    if (file == nullptr) return;
    std::fclose(file);
    file = nullptr;
}

int SeekFile(std::FILE* file, u64 pos) {
    constexpr auto furthest = static_cast<u64>(std::numeric_limits<FileOffset>::max());
    if (file == nullptr || pos > furthest) return -1;
    return SeekTo(file, static_cast<FileOffset>(pos), SEEK_SET);
}

u64 FilePosition(std::FILE* file) {
    return file == nullptr ? lost : static_cast<u64>(OffsetOf(file));
}

}  // namespace

CZVFTFileInStream::CZVFTFileInStream(const std::string& path, bool forWrite)
    : path(path), forWrite(forWrite) {}

CZVFTFileInStream::~CZVFTFileInStream() {
    Close();
}

bool CZVFTFileInStream::Open() {
    Close();
    file = OpenFile(path, forWrite);
    return file != nullptr;
}

void CZVFTFileInStream::Close() {
    CloseFile(file);
}

bool CZVFTFileInStream::Read(void* buffer, u64* size) {
    if (*size == 0) return true;
    if (file == nullptr) return false;
    const u64 wanted = *size;
    *size = std::fread(buffer, 1, wanted, file);
    return *size == wanted || std::ferror(file) == 0;
}

u64 CZVFTFileInStream::GetPos() {
    return FilePosition(file);
}

int CZVFTFileInStream::Seek(u64 pos) {
    return SeekFile(file, pos);
}

u64 CZVFTFileInStream::GetSize() {
    if (file == nullptr) return 0;
    const FileOffset here = OffsetOf(file);
    if (here < 0 || SeekTo(file, 0, SEEK_END) != 0) return 0;
    const FileOffset size = OffsetOf(file);
    SeekTo(file, here, SEEK_SET);
    return size < 0 ? 0 : static_cast<u64>(size);
}

CZVFTFileOutStream::CZVFTFileOutStream(const std::string& path, bool forWrite)
    : path(path), forWrite(forWrite) {}

CZVFTFileOutStream::~CZVFTFileOutStream() {
    Close();
}

bool CZVFTFileOutStream::Open() {
    Close();
    file = OpenFile(path, forWrite);
    return file != nullptr;
}

void CZVFTFileOutStream::Close() {
    CloseFile(file);
}

u64 CZVFTFileOutStream::Write(const void* buffer, u64 size) {
    if (file == nullptr || size == 0) return 0;
    return std::fwrite(buffer, 1, size, file);
}

// A flush that fails inside fseek loses bytes that Write had accepted; the error flag remembers.
u64 CZVFTFileOutStream::GetPos() {
    if (file != nullptr && std::ferror(file) != 0) return lost;
    return FilePosition(file);
}

int CZVFTFileOutStream::Seek(u64 pos) {
    return SeekFile(file, pos);
}

bool CZVFTFileOutStream::Reserve(u64) {
    return true;
}

}  // namespace ZVSmartFormat
