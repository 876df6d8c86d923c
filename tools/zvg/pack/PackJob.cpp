#include "tools/zvg/pack/PackJob.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "ZVSmartFormat/StreamException.h"
#include "tools/zvg/Command.h"
#include "tools/zvg/import/Cage.h"
#include "tools/zvg/import/ChildProcess.h"
#include "tools/zvg/import/Importers.h"
#include "tools/zvg/output/FileSink.h"
#include "tools/zvg/output/OutOfMemory.h"
#include "tools/zvg/pack/PackModel.h"
#include "tools/zvg/pack/PackReport.h"

namespace {

using Words = std::vector<std::string_view>;

constexpr std::size_t wordCount = 11;

constexpr const char* noMemory = "out of memory";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// The words point into `argv`, so each ends in a zero byte.
PackOptions OptionsOf(const Words& words) {
    PackOptions options;
    options.modelPath = words[0].data();
    options.outputPath = words[1].data();
    options.settings.LoadFile(words[2].data());
    options.previewPath = words[3].data();
    options.geosPerBlock = static_cast<unsigned int>(std::strtoul(words[4].data(), nullptr, 10));
    options.formatVersion = static_cast<unsigned int>(std::strtoul(words[5].data(), nullptr, 10));
    options.fast = words[6] == "fast";
    options.drawPreview = words[7] == "draw";
    options.seal = words[8] == "seal";
    options.tolerance = std::strtod(words[9].data(), nullptr);
    options.strict = words[10] == "strict";
    return options;
}

int Fail(ExitStatus status, const std::string& message) {
    TellParent(ChildMessage::Failure, message);
    return static_cast<int>(status);
}

/// At most once for each percent of each work.
void TellProgress(const char* work, std::size_t done, std::size_t total) {
    static std::string told;
    const std::size_t percent = total == 0 ? 0 : done * 100 / total;
    const std::string step = work + std::to_string(percent);
    if (step == told) return;
    told = step;
    const std::string count = std::to_string(done) + '/' + std::to_string(total) + ' ';
    TellParent(ChildMessage::Progress, count + work);
}

Model Imported(const PackOptions& options) {
    std::vector<std::string> warnings;
    const ImportReport report = {
        [&warnings](const std::string& message) { warnings.push_back(message); },
        [](double fraction) {
            TellProgress("importing", static_cast<std::size_t>(fraction * 100), 100);
        }};
    TellProgress("reading", 0, 0);
    Model model = ImportModel(options.modelPath, AskParentFor,
                              {.tolerance = options.tolerance / 1000}, report);
    for (const std::string& warning : warnings) model.findings.Add("import", warning, true, "");
    return model;
}

/// In pieces, as a message is no longer than its reader allows.
void TellReport(const Model& model, const PackOptions& options) {
    constexpr std::size_t pieceBytes = 4096;
    const std::string report = PackReport(model, options.modelPath);
    for (std::size_t at = 0; at < report.size(); at += pieceBytes) {
        TellParent(ChildMessage::Report, std::string_view(report).substr(at, pieceBytes));
    }
}

std::string Counted(std::size_t count, const char* noun) {
    return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

std::string Told(const PackSummary& summary) {
    return Counted(summary.components, "component") + " on " + Counted(summary.floors, "floor") +
           ", " + Counted(summary.shapes, "shape") + " in " + Counted(summary.placements, "place");
}

int Write(const Model& model, const PackOptions& options) {
    const std::string cannotWrite = std::string("cannot write ") + options.outputPath + ": ";
    FileSink sink(childOutput);
    try {
        const PackSummary summary = PackModel(model, options, sink, TellProgress);
        if (!summary.previewFailure.empty()) {
            TellParent(ChildMessage::Warning, "no preview: " + summary.previewFailure);
        }
        if (sink.Close()) {
            TellParent(ChildMessage::Result, Told(summary));
            return static_cast<int>(ExitStatus::Done);
        }
    } catch (const ZVSmartFormat::CZVFTStreamException& error) {
        if (IsOutOfMemory(error)) throw;
        if (sink.Failure() == 0) return Fail(ExitStatus::InputOutput, cannotWrite + error.what());
    }
    return Fail(ExitStatus::InputOutput, cannotWrite + std::strerror(sink.Failure()));
}

int RunPackJob(const PackOptions& options) {
    const auto failInput = [&options](const char* reason) {
        return Fail(ExitStatus::InputOutput, std::string(options.modelPath) + ": " + reason);
    };
    try {
        const Model model = Imported(options);
        TellReport(model, options);
        const std::string lost = model.findings.Told();
        if (!lost.empty() && options.strict) {
            return Fail(ExitStatus::Damaged,
                        std::string(options.modelPath) + ": not everything arrived: " + lost);
        }
        if (!lost.empty()) TellParent(ChildMessage::Warning, "not everything arrived: " + lost);
        return Write(model, options);
    } catch (const ToolError& error) {
        return Fail(error.Status(), error.what());
    } catch (const std::exception& error) {
        if (IsOutOfMemory(error)) {
            TellParent(ChildMessage::NoMemory, noMemory);
            return static_cast<int>(ExitStatus::Internal);
        }
        return failInput(error.what());  // whatever an importer throws, its input is the reason
    }
}

}  // namespace

std::vector<std::string> PackJobArguments(const PackJob& job) {
    return {job.modelPath,
            job.outputPath,
            job.settingsPath,
            job.previewPath,
            std::to_string(job.geosPerBlock),
            std::to_string(job.formatVersion),
            job.fast ? "fast" : "best",
            job.drawPreview ? "draw" : "none",
            job.seal ? "seal" : "open",
            std::to_string(job.tolerance),
            job.strict ? "strict" : "lenient"};
}

int RunChildIfAsked(int argc, char** argv) {
    const auto words = ChildArguments(argc, argv);
    if (!words) return -1;
    if (words->size() != wordCount) return static_cast<int>(ExitStatus::Usage);
    EndWhenOutOfMemory([](const char* reason) {
        const bool lacksMemory = std::strcmp(reason, noMemory) == 0;
        TellParent(lacksMemory ? ChildMessage::NoMemory : ChildMessage::Failure, reason);
    });
    PackOptions options = OptionsOf(*words);
    const File preview(*options.previewPath ? std::fopen(options.previewPath, "rb") : nullptr);
    if (*options.previewPath && !preview) {
        return Fail(ExitStatus::InputOutput,
                    std::string(options.previewPath) + ": " + std::strerror(errno));
    }
    options.preview = preview.get();
    EnterCage({true, true});
    // Without taking down what an importer holds: that would cost time, and may crash as well.
    std::_Exit(RunPackJob(options));
}
