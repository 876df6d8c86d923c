#include <memory>
#include <string>
#include <vector>

#include "ZVSmartModel/Verify.h"
#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

/// Throws Error InputOutput that names the file where it is not delivered.
std::vector<Damage> FindFaults(OpenedFile& file, bool quiet, unsigned int threads,
                               BlockCounts& counts) {
    Progress line(quiet);
    const auto bytes = static_cast<double>(file.Stream().GetSize());
    const auto show = [&](const std::string& work, double fraction) {
        line.Show(work, fraction * bytes, bytes, "MB");
        return true;
    };
    try {
        return VerifyFile(file.Stream(), show, threads, &counts);
    } catch (const Error& error) {
        if (error.GetStatus() == Status::InputOutput) file.ThrowUnread();
        throw;
    }
}

Document CountsDocument(const BlockCounts& counts) {
    return {{"floors", counts.floors},
            {"components", counts.components},
            {"geometryBlocks", counts.geometryBlocks},
            {"geometries", counts.geometries},
            {"identifications", counts.identifications}};
}

/// What is to be said of one file. Throws Error where it cannot be read.
Document Verified(const std::string& path, unsigned int threads, const CommonOptions& common) {
    OpenedFile file = OpenNamed(path);
    BlockCounts counts;
    const std::vector<Damage> findings = FindFaults(file, common.quiet, threads, counts);
    Document document = NewDocument(path);
    document["ok"] = findings.empty();
    document["findings"] = Document::array();
    for (const Damage& finding : findings) {
        document["findings"].push_back(
            {{"position", finding.position}, {"reason", finding.reason}});
    }
    if (findings.empty()) document["counts"] = CountsDocument(counts);
    return document;
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

Error Verdict(const Document& document, const std::string& path) {
    const Document& findings = document["findings"];
    const Document& first = findings.front();
    const std::string faults =
        std::to_string(findings.size()) + (findings.size() == 1 ? " fault" : " faults");
    return {Status::Damaged, InputName(path) + ": " + faults + ", first at position " +
                                 first["position"].dump() + ": " +
                                 first["reason"].get<std::string>()};
}

/// Prints what is to be said of one file. Throws Error where anything is wrong with it.
void VerifyOne(const std::string& path, unsigned int threads, const CommonOptions& common) {
    const Document document = Verified(path, threads, common);
    if (common.json) {
        PrintDocument(document, common.json);
    } else {
        WriteText(document);
    }
    if (!document["ok"].get<bool>()) throw Verdict(document, path);
}

}  // namespace

void RegisterVerify(CLI::App& app, CommonOptions& common) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = AddReadingCommand(
        app, "verify",
        "Check everything in block files; print the position and the reason of each fault",
        "zvg verify house.zvg", *files);
    const auto threads = std::make_shared<unsigned int>(0);
    AddThreadsOption(*command, *threads);
    command->callback([files, threads, &common] {
        ForEachFile(*files, common.json ? "" : ": ",
                    [&](const FileTurn& turn) { VerifyOne(turn.file, *threads, common); });
    });
}

}  // namespace ZVSmartModel::Tool
