#include "tools/zvg/view/ServedFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <string_view>
#include <utility>

#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

namespace fs = std::filesystem;

namespace {

/// All but what RFC 3986 leaves unreserved becomes %XX; `kept` stays too.
std::string Escaped(const std::string& text, char kept) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                             (byte >= 'a' && byte <= 'z') || c == '-' || c == '.' || c == '_' ||
                             c == '~' || c == kept;
        if (isPlain) {
            escaped += c;
        } else {
            escaped += {'%', digits[byte >> 4U], digits[byte & 15U]};
        }
    }
    return escaped;
}

std::optional<std::uint64_t> NumberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

std::string ServedFiles::AddPath(const std::string& path) {
    return Add(fs::path(path).filename().string(),
               {fs::absolute(path).string(), OwnedDescriptor()});
}

std::string ServedFiles::AddOpen(const std::string& name, OwnedDescriptor descriptor) {
    return Add(name, {"", std::move(descriptor)});
}

std::string ServedFiles::Add(const std::string& wanted, Entry entry) {
    const fs::path name = ToUtf8(FromUtf8(wanted));
    const std::lock_guard lock(mutex);
    std::string free = name.string();
    for (int number = 2; entries.contains(free); ++number) {
        free = name.stem().string() + '-' + std::to_string(number) + name.extension().string();
    }
    entries.emplace(free, std::move(entry));
    return free;
}

std::optional<OpenedServedFile> ServedFiles::Open(const std::string& name) const {
    const std::lock_guard lock(mutex);
    const auto found = entries.find(name);
    if (found == entries.end()) return std::nullopt;
    const auto& [path, descriptor] = found->second;
    OpenedServedFile file;
    file.descriptor = OwnedDescriptor(
        path.empty() ? fcntl(descriptor.Number(), F_DUPFD_CLOEXEC, 0)
                     : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (file.descriptor.Number() < 0 || fstat(file.descriptor.Number(), &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    file.bytes = static_cast<std::uint64_t>(status.st_size);
    file.tag = '"' + std::to_string(status.st_dev) + '-' + std::to_string(status.st_ino) + '-' +
               std::to_string(status.st_size) + '-' + std::to_string(status.st_mtim.tv_sec) + '.' +
               std::to_string(status.st_mtim.tv_nsec) + '"';
    return file;
}

std::size_t ServedFiles::Count() const {
    const std::lock_guard lock(mutex);
    return entries.size();
}

std::string AddressOf(const std::string& name) {
    return "/files/" + Escaped(name, '-');
}

std::string EscapedParameter(const std::string& text) {
    return Escaped(text, '/');
}

AskedRange AskedOf(const std::string& header, std::uint64_t bytes) {
    const AskedRange all = {ByteRange{0, bytes}, false};
    constexpr std::string_view unit = "bytes=";
    std::string_view said = header;
    if (said.substr(0, unit.size()) != unit) return all;
    said.remove_prefix(unit.size());
    const std::size_t dash = said.find('-');
    if (dash == std::string_view::npos) return all;
    const std::optional<std::uint64_t> from = NumberOf(said.substr(0, dash));
    const std::optional<std::uint64_t> to = NumberOf(said.substr(dash + 1));
    const bool isOpen = dash + 1 == said.size();
    if (dash == 0) {  // the last bytes
        if (!to) return all;
        const std::uint64_t count = std::min(*to, bytes);
        if (count == 0) return {std::nullopt, true};
        return {ByteRange{bytes - count, count}, true};
    }
    if (!from || (!to && !isOpen) || (to && *to < *from)) return all;
    if (*from >= bytes) return {std::nullopt, true};
    const std::uint64_t end = to && *to < bytes ? *to + 1 : bytes;
    return {ByteRange{*from, end - *from}, true};
}

}  // namespace ZVSmartModel::Tool
