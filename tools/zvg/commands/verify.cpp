#include <memory>
#include <string>
#include <vector>

#include "ZVSmartZvg/BlockVerifier.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/CountsDocument.h"
#include "tools/zvg/reading/OpenedBlock.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"
#include "tools/zvg/text/Utf8.h"

using namespace ZVSmartZvg;

namespace {

/// Shows how far a stream has been read.
class WatchedStream : public ZVSmartFormat::CZVFTInStream {
  public:
    WatchedStream(ZVSmartFormat::CZVFTInStream& stream, bool quiet)
        : stream(stream), progress(quiet), size(stream.GetSize()) {}

    bool Read(void* buffer, u64* count) override {
        const bool good = stream.Read(buffer, count);
        progress.Show("verifying", static_cast<double>(stream.GetPos()), static_cast<double>(size),
                      "MB");
        return good;
    }
    u64 GetPos() override { return stream.GetPos(); }
    int Seek(u64 pos) override { return stream.Seek(pos); }
    u64 GetSize() override { return size; }

  private:
    ZVSmartFormat::CZVFTInStream& stream;
    Progress progress;
    u64 size;
};

std::vector<SZVLGBlockFinding> FindFaults(const std::string& path, bool quiet) {
    OpenedFile file(path);
    WatchedStream stream(file.Stream(), quiet);
    std::vector<SZVLGBlockFinding> findings;
    const bool good = CZVLGBlockVerifier().Verify(&stream, findings);
    if (!good && findings.empty()) findings.push_back({0, "the file does not verify"});
    return findings;
}

void WriteText(const Document& document) {
    for (const Document& finding : document["findings"]) {
        WriteOutput(finding["position"].dump() + ": " +
                    EscapeControls(finding["reason"].get_ref<const std::string&>()) + '\n');
    }
    if (!document["ok"].get<bool>()) return;
    std::string line;
    for (const auto& [name, count] : document["counts"].items()) {
        line += (line.empty() ? "ok: " : ", ") + name + ' ' + count.dump();
    }
    WriteOutput(line + '\n');
}

void Verify(const std::string& file, const CommonOptions& common) {
    const std::vector<SZVLGBlockFinding> findings = FindFaults(file, common.quiet);
    Document document = NewDocument(file);
    document["ok"] = findings.empty();
    document["findings"] = Document::array();
    for (const SZVLGBlockFinding& finding : findings) {
        document["findings"].push_back(
            {{"position", finding.position}, {"reason", finding.reason}});
    }
    if (findings.empty()) {
        OpenedBlock block(file);
        document["counts"] = CountsDocument(block);
    }
    if (common.json) {
        PrintDocument(document, common.json);
    } else {
        WriteText(document);
    }
    if (findings.empty()) return;
    const SZVLGBlockFinding& first = findings.front();
    const std::string faults =
        std::to_string(findings.size()) + (findings.size() == 1 ? " fault" : " faults");
    throw ToolError(ExitStatus::Damaged, (file == "-" ? "standard input" : file) + ": " + faults +
                                             ", first at position " +
                                             std::to_string(first.position) + ": " + first.reason);
}

}  // namespace

void RegisterVerify(CLI::App& app, CommonOptions& common) {
    const auto file = std::make_shared<std::string>();
    AddReadingCommand(app, "verify",
                      "Check everything in a block file; print the position and the reason of each "
                      "fault",
                      "zvg verify house.zvg", *file)
        ->callback([file, &common] { Verify(*file, common); });
}
