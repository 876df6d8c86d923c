#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartZvg/BlockVerifier.h"
#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/CountsDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

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

std::vector<SZVLGBlockFinding> FindFaults(OpenedFile& file, bool quiet) {
    WatchedStream stream(file.Stream(), quiet);
    std::vector<SZVLGBlockFinding> findings;
    bool good = false;
    try {
        good = CZVLGBlockVerifier().Verify(&stream, findings);
    } catch (const ZVSmartFormat::CZVFTStreamException&) {
        file.ThrowIfUnread();
        throw;
    }
    file.ThrowIfUnread();
    if (!good && findings.empty()) findings.push_back({0, "the file does not verify"});
    return findings;
}

Document CountsOf(OpenedFile file, bool noLimit) {
    file.Stream().Seek(0);
    Budget limits(noLimit, "--no-limit");
    OpenedBlock block(std::move(file), limits);
    Document counts = CountsDocument(block);
    block.ThrowIfDamaged();
    return counts;
}

/// What is to be said of one file. Throws Error where it cannot be read.
Document Verified(const std::string& path, const CommonOptions& common) {
    OpenedFile file = OpenNamed(path);
    const std::vector<SZVLGBlockFinding> findings = FindFaults(file, common.quiet);
    Document document = NewDocument(path);
    document["ok"] = findings.empty();
    document["findings"] = Document::array();
    for (const SZVLGBlockFinding& finding : findings) {
        document["findings"].push_back(
            {{"position", finding.position}, {"reason", finding.reason}});
    }
    if (findings.empty()) document["counts"] = CountsOf(std::move(file), common.noLimit);
    return document;
}

/// Each line begins with `prefix`.
void WriteText(const Document& document, const std::string& prefix) {
    for (const Document& finding : document["findings"]) {
        WriteOutput(prefix + finding["position"].dump() + ": " +
                    EscapeControls(finding["reason"].get_ref<const std::string&>()) + '\n');
    }
    if (!document["ok"].get<bool>()) return;
    std::string line;
    for (const auto& [name, count] : document["counts"].items()) {
        line += (line.empty() ? "ok: " : ", ") + name + ' ' + count.dump();
    }
    WriteOutput(prefix + line + '\n');
}

Error Verdict(const Document& document, const std::string& path) {
    const Document& findings = document["findings"];
    const Document& first = findings.front();
    const std::string faults =
        std::to_string(findings.size()) + (findings.size() == 1 ? " fault" : " faults");
    return {Status::Damaged, (path == "-" ? "standard input" : path) + ": " + faults +
                                 ", first at position " + first["position"].dump() + ": " +
                                 first["reason"].get<std::string>()};
}

/// Prints what is to be said of one file; what is wrong with it is returned.
std::optional<Error> VerifyOne(const std::string& path, const CommonOptions& common,
                               const std::string& prefix) {
    Document document;
    try {
        document = Verified(path, common);
    } catch (const Error& error) {
        return error;
    }
    if (common.json) {
        PrintDocument(document, common.json);
    } else {
        WriteText(document, prefix);
    }
    if (document["ok"].get<bool>()) return std::nullopt;
    return Verdict(document, path);
}

/// Every file is verified, whatever is wrong with another; the first one that fails gives the
/// status.
void Verify(const std::vector<std::string>& paths, const CommonOptions& common) {
    std::optional<Error> failure;
    Status status = Status::Internal;  // set with the failure
    for (const std::string& path : paths) {
        const std::string prefix = paths.size() == 1 ? "" : EscapeControls(path) + ": ";
        const std::optional<Error> verdict = VerifyOne(path, common, prefix);
        if (!verdict) continue;
        if (failure) WriteError(failure->what());
        if (!failure) status = verdict->GetStatus();
        failure.emplace(*verdict);
    }
    if (failure) throw Error(status, failure->what());
}

}  // namespace

void RegisterVerify(CLI::App& app, CommonOptions& common) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = app.add_subcommand(
        "verify",
        "Check everything in block files; print the position and the reason of each fault");
    command->add_option("FILE", *files, "The block files; - is standard input")->required();
    command->footer("Example:\n  zvg verify house.zvg");
    AddLimitOption(*command, common);
    command->callback([files, &common] { Verify(*files, common); });
}

}  // namespace ZVSmartModel::Tool
