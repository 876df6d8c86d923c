// Reads a stranger's model and packs it: the process that the model library starts for that.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartModel/Error.h"
#include "model/element/FileSink.h"
#include "model/element/LackOfMemory.h"
#include "model/element/Utf8.h"
#include "model/import/Importers.h"
#include "model/pack/ImportProcess.h"
#include "model/pack/PackModel.h"
#include "model/preview/Renderer.h"
#include "tools/zvg-import/Cage.h"
#include "tools/zvg-import/ParentLink.h"
#include "tools/zvg/output/OutOfMemory.h"

namespace ZVSmartModel::Tool {

namespace {

constexpr int done = 0;

constexpr const char* noMemory = "out of memory";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

int Fail(Status status, const std::string& message) {
    TellParent(ChildMessage::Failure, message);
    return static_cast<int>(status);
}

/// At most once for each percent of each work.
void TellProgress(const char* work, std::size_t part, std::size_t total) {
    static std::string told;
    const std::size_t percent = total == 0 ? 0 : part * 100 / total;
    const std::string step = work + std::to_string(percent);
    if (step == told) return;
    told = step;
    const std::string count = std::to_string(part) + '/' + std::to_string(total) + ' ';
    TellParent(ChildMessage::Progress, count + work);
}

Model Imported(const PackJob& job) {
    std::vector<std::string> warnings;
    const ImportReport report = {
        [&warnings](const std::string& message) { warnings.push_back(message); },
        [](double fraction) {
            TellProgress("importing", static_cast<std::size_t>(fraction * 100), 100);
        }};
    TellProgress("reading", 0, 0);
    Model model = ImportModel(job.modelPath, AskParentFor, {.tolerance = job.tolerance}, report);
    for (const std::string& warning : warnings) model.findings.Add("import", warning, true, "");
    return model;
}

void TellFindings(const Model& model) {
    TellParent(ChildMessage::Schema, ToUtf8(model.schema));
    for (const auto& [type, count] : model.findings.elements) {
        TellParent(ChildMessage::Type,
                   TextOf(PackTypeCount{type, count.inModel, count.arrived, count.withBody}));
    }
    for (const ImportFinding& finding : model.findings.findings) {
        TellParent(ChildMessage::Finding,
                   TextOf(PackWarning{finding.kind, finding.text, finding.lost, finding.count,
                                      finding.where}));
    }
}

int Write(const Model& model, const PackInput& input) {
    const std::string cannotWrite = "cannot write " + input.job.outputPath + ": ";
    FileSink sink(childOutput);
    try {
        const PackSummary summary = PackModel(model, input, sink, TellProgress);
        if (!summary.previewFailure.empty()) {
            TellParent(ChildMessage::Warning, "no preview: " + summary.previewFailure);
        }
        if (sink.Close()) {
            std::string counts;
            for (const std::size_t count :
                 {summary.floors, summary.components, summary.shapes, summary.placements}) {
                counts += std::to_string(count) + ' ';
            }
            TellParent(ChildMessage::Result, counts);
            return done;
        }
    } catch (const ZVSmartFormat::CZVFTStreamException& error) {
        if (IsOutOfMemory(error)) throw;
        if (sink.Failure() == 0) return Fail(Status::InputOutput, cannotWrite + error.what());
    }
    return Fail(Status::InputOutput, cannotWrite + std::strerror(sink.Failure()));
}

int Pack(const PackInput& input) {
    try {
        const Model model = Imported(input.job);
        TellFindings(model);
        if (input.job.strict && model.findings.AnythingLost()) {
            return static_cast<int>(Status::Damaged);  // what was lost is told
        }
        return Write(model, input);
    } catch (const Error& error) {
        return Fail(error.GetStatus(), error.what());
    } catch (const std::exception& error) {
        if (IsOutOfMemory(error)) {
            TellParent(ChildMessage::NoMemory, noMemory);
            return static_cast<int>(Status::Internal);
        }
        // Whatever a library throws, its input is the reason.
        const bool isDamaged = dynamic_cast<const DamagedModel*>(&error) != nullptr ||
                               dynamic_cast<const ImportError*>(&error) == nullptr;
        return Fail(isDamaged ? Status::Damaged : Status::InputOutput,
                    input.job.modelPath + ": " + error.what());
    }
}

int TellAbout() {
    for (const std::string& name : ImporterNames()) TellParent(ChildMessage::About, name);
    TellParent(ChildMessage::About, CageText(AvailableCage()));
    return done;
}

/// Where memory does not suffice for it, no preview is drawn.
void LoadWhatDraws() {
    try {
        CanRender();
    } catch (const std::bad_alloc&) {
        return;
    }
}

int Run(const std::vector<std::string_view>& words) {
    if (words.size() == 1 && words[0] == aboutWord) return TellAbout();
    const std::optional<PackJob> job = JobOf(words);
    if (!job) {
        std::fputs("zvg-import is started by other programs, such as zvg pack\n", stderr);
        return static_cast<int>(Status::Usage);
    }
    EndWhenOutOfMemory([](const char* reason) {
        const bool lacksMemory = std::strcmp(reason, noMemory) == 0;
        TellParent(lacksMemory ? ChildMessage::NoMemory : ChildMessage::Failure, reason);
    });
    PackInput input;
    input.job = *job;
    input.settings.LoadFile(job->settingsPath);
    const std::string& path = job->previewPath;
    const File preview(path.empty() ? nullptr : std::fopen(path.c_str(), "rb"));
    if (!path.empty() && !preview) {
        return Fail(Status::InputOutput, path + ": " + std::strerror(errno));
    }
    input.preview = preview.get();
    if (job->drawPreview && path.empty()) LoadWhatDraws();  // for the cage lets nothing in
    EnterCage({true, true});
    // Without taking down what an importer holds: that would cost time, and may crash as well.
    std::_Exit(Pack(input));
}

}  // namespace

}  // namespace ZVSmartModel::Tool

int main(int argc, char** argv) {
    return ZVSmartModel::Tool::Run(std::vector<std::string_view>(argv + 1, argv + argc));
}
