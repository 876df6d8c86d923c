#include "tools/zvg/view/ViewerPage.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "ZVSmartModel/Error.h"
#include "model/element/FileSink.h"
#include "model/element/InputSource.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel::Tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view marker = "<!-- zvg:files -->";

std::string PagePath() {
    if (const char* const named = std::getenv("ZVG_VIEWER"); named && *named) return named;
    std::error_code unknown;
    const fs::path tool = fs::read_symlink("/proc/self/exe", unknown);
    const fs::path installed = tool.parent_path().parent_path() / "share/zvg/viewer.html";
    if (!tool.empty() && fs::exists(installed, unknown)) return installed.string();
    const fs::path built = ZVG_VIEWER_PAGE;
    if (!built.empty() && fs::exists(built, unknown)) return built.string();
    throw Error(Status::Usage,
                "the viewer's page is not installed (ZVG_VIEWER may name one: viewer.html)");
}

std::string TextOf(const std::string& path) {
    const std::unique_ptr<InputStream> file = OpenInput(path);
    std::string text(file->GetSize(), '\0');
    ZVSmartFormat::u64 count = text.size();
    if (file->Read(text.data(), &count) && count == text.size()) return text;
    throw Error(Status::InputOutput, path + ": it cannot be read", path);
}

/// Text as the value of an attribute in double quotes.
std::string AttributeText(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

/// RFC 4648, with padding.
void AppendBase64(std::string& text, const std::uint8_t* bytes, std::size_t count) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < count; i += 3) {
        const std::size_t there = std::min<std::size_t>(3, count - i);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k) bits = bits << 8 | (k < there ? bytes[i + k] : 0U);
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= there ? digits[bits >> (18 - 6 * k) & 63U] : '=';
        }
    }
}

}  // namespace

ViewerPage::ViewerPage() {
    const std::string path = PagePath();
    const std::string text = TextOf(path);
    const std::size_t at = text.find(marker);
    if (at == std::string::npos || text.find(marker, at + 1) != std::string::npos) {
        throw Error(Status::InputOutput, path + ": it is no viewer's page of this version", path);
    }
    head = text.substr(0, at);
    tail = text.substr(at + marker.size());
}

void WriteFileElement(const std::string& name, ZVSmartFormat::CZVFTInStream& file,
                      ZVSmartFormat::CZVFTOutStream& out) {
    constexpr std::size_t pieceBytes = std::size_t{3} << 16;  // no padding but at the end
    WriteWhole(out, R"(<script type="application/octet-stream" class="zvg-file" data-name=")" +
                        AttributeText(ToUtf8(FromUtf8(name))) + "\">");
    std::vector<std::uint8_t> piece(pieceBytes);
    std::string text;
    for (ZVSmartFormat::u64 left = file.GetSize(); left != 0;) {
        ZVSmartFormat::u64 count = std::min<ZVSmartFormat::u64>(left, pieceBytes);
        const ZVSmartFormat::u64 wanted = count;
        if (!file.Read(piece.data(), &count) || count != wanted) {
            throw Error(Status::InputOutput, name + ": it cannot be read");
        }
        text.clear();
        AppendBase64(text, piece.data(), count);
        WriteWhole(out, text);
        left -= count;
    }
    WriteWhole(out, "</script>\n");
}

}  // namespace ZVSmartModel::Tool
