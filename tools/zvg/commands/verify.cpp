#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartModel/Verify.h"
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

namespace {

/// Throws Error InputOutput that names the file where it is not delivered.
std::vector<Damage> FindFaults(OpenedFile& file, bool quiet) {
    Progress line(quiet);
    const auto bytes = static_cast<double>(file.Stream().GetSize());
    const auto show = [&](const std::string& work, double fraction) {
        line.Show(work, fraction * bytes, bytes, "MB");
        return true;
    };
    try {
        return VerifyFile(file.Stream(), show);
    } catch (const Error& error) {
        if (error.GetStatus() == Status::InputOutput) file.ThrowUnread();
        throw;
    }
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
    const std::vector<Damage> findings = FindFaults(file, common.quiet);
    Document document = NewDocument(path);
    document["ok"] = findings.empty();
    document["findings"] = Document::array();
    for (const Damage& finding : findings) {
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
    return {Status::Damaged, InputName(path) + ": " + faults + ", first at position " +
                                 first["position"].dump() + ": " +
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
