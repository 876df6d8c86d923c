#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

#include "ZVSmartModel/Pack.h"
#include "model/element/NewFile.h"
#include "model/pack/ImportProcess.h"
#include "model/pack/PackJob.h"

namespace ZVSmartModel {

namespace {

/// The first things that were lost, on one line; empty where nothing was.
std::string LostText(const std::vector<PackWarning>& warnings) {
    constexpr std::size_t mostTold = 5;
    std::string told;
    std::size_t losses = 0;
    for (const PackWarning& finding : warnings) {
        if (!finding.lost || ++losses > mostTold) continue;
        told += (told.empty() ? "" : "; ") + finding.text;
        if (finding.count > 1) told += " (" + std::to_string(finding.count) + " times)";
        if (!finding.where.empty()) told += ", as at " + finding.where.front();
    }
    if (losses > mostTold) told += "; and " + std::to_string(losses - mostTold) + " more";
    return told;
}

/// Takes what an importer says. It may be in a stranger's hands: little of it is kept.
class ImportListener {
  public:
    ImportListener(const PackOptions& options, PackReport& report)
        : options(options), report(report) {}

    void Take(ChildMessage kind, const std::string& text) {
        switch (kind) {
            case ChildMessage::Warning:
                if (options.warn) options.warn(text);
                break;
            case ChildMessage::Progress:
                TellProgress(text);
                break;
            case ChildMessage::Schema:
                report.schema = text;
                break;
            case ChildMessage::Type:
                if (const auto count = TypeCountOf(text); count && Keep(text)) {
                    report.types.push_back(*count);
                }
                break;
            case ChildMessage::Finding:
                if (const auto finding = FindingOf(text); finding && Keep(text)) {
                    report.warnings.push_back(*finding);
                }
                break;
            case ChildMessage::Result:
                std::istringstream(text) >> report.floors >> report.components >> report.shapes >>
                    report.placements;
                break;
            case ChildMessage::Failure:
                failure = text;
                break;
            case ChildMessage::About:
            case ChildMessage::NoMemory:
            case ChildMessage::Open:
                break;  // answered before, or not asked
        }
    }

    /// Whether the caller wants more, who is asked a few times a second while the child is silent.
    bool IsWanted() {
        constexpr std::chrono::milliseconds pause(300);
        if (!options.progress || Clock::now() - asked < pause) return true;
        asked = Clock::now();
        return options.progress(work, share);
    }

    /// The child's last words; empty where it said none.
    const std::string& Failure() const { return failure; }

  private:
    bool Keep(const std::string& text) {
        constexpr std::size_t mostBytes = 64 << 20;
        kept += text.size() + sizeof(PackWarning);
        return kept < mostBytes;
    }

    void TellProgress(const std::string& text) {
        double done = 0;
        double total = 0;
        char slash = 0;
        if (!options.progress || !(std::istringstream(text) >> done >> slash >> total)) return;
        const std::size_t blank = text.find(' ');
        work = blank == std::string::npos ? "" : text.substr(blank + 1);
        share = total > 0 ? done / total : -1;
        asked = Clock::now();
        if (options.progress(work, share)) return;
        throw Error(Status::Cancelled, "cancelled");
    }

    using Clock = std::chrono::steady_clock;

    const PackOptions& options;
    PackReport& report;
    std::string work = "importing";  ///< as it was told last
    double share = -1;
    Clock::time_point asked = Clock::now();
    std::string failure;
    std::size_t kept = 0;
};

/// A time that the user gives is instead of the one without progress: some models need it.
ImportLimits LimitsOf(const PackOptions& options, unsigned long long modelBytes) {
    ImportLimits limits = ImportLimits::For(modelBytes);
    if (options.maxMemory != 0) limits.memoryBytes = options.maxMemory;
    constexpr double longest = 1e9;
    if (std::isnan(options.maxSeconds) || options.maxSeconds > longest) {
        throw Error(Status::Usage, "the time for importing is no number of seconds");
    }
    if (options.maxSeconds > 0) {
        limits.silence = {};
        limits.time = std::chrono::milliseconds(std::llround(options.maxSeconds * 1000));
    }
    return limits;
}

void CheckReadable(const std::string& path) {
    if (path.empty() || access(path.c_str(), R_OK) == 0) return;
    throw Error(Status::InputOutput, path + ": " + std::strerror(errno), path);
}

void CheckOptions(const PackOptions& options) {
    if (options.formatVersion > 4) throw Error(Status::Usage, "the format version is 0 to 4");
    if (!(options.tolerance > 0)) throw Error(Status::Usage, "the tolerance is above 0");
    CheckReadable(options.settingsPath);
    CheckReadable(options.previewPath);
}

/// A library may end the child in its own way, without a word.
[[noreturn]] void ThrowFailure(const std::string& modelPath, int status,
                               const ImportListener& listener, const PackReport& report) {
    if (status == static_cast<int>(Status::Damaged) && !report.lost.empty()) {
        throw Error(Status::Damaged, modelPath + ": not everything arrived: " + report.lost,
                    modelPath);
    }
    if (listener.Failure().empty() || status > static_cast<int>(Status::NotFound)) {
        throw Error(Status::InputOutput, modelPath + ": the importer failed", modelPath);
    }
    throw Error(static_cast<Status>(status), listener.Failure(), modelPath);
}

/// Asks the importer what it can do.
std::vector<std::string> About(const std::string& importer) {
    std::vector<std::string> answers;
    RunImporter(FindImporter(importer), {std::string(aboutWord)}, childMessages, nullptr,
                ImportLimits::For(0), [&answers](ChildMessage kind, const std::string& text) {
                    constexpr std::size_t mostAnswers = 1000;
                    const bool isAnswer = kind == ChildMessage::About;
                    if (isAnswer && answers.size() < mostAnswers) answers.push_back(text);
                });
    return answers;
}

}  // namespace

std::vector<std::string> ImportFormats(const std::string& importer) try {
    std::vector<std::string> answers = About(importer);
    if (!answers.empty()) answers.pop_back();
    return answers;
} catch (const Error&) {
    return {};
}

std::string ImportCage(const std::string& importer) try {
    const std::vector<std::string> answers = About(importer);
    return answers.empty() ? "none" : answers.back();
} catch (const Error&) {
    return "none";
}

void PackModelFile(const std::string& modelPath, const std::string& blockPath,
                   const PackOptions& options, PackReport* report) {
    NewFile file(blockPath);
    PackModelFile(modelPath, file.Descriptor(), blockPath, options, report);
    file.Commit();
}

void PackModelFile(const std::string& modelPath, int descriptor, const std::string& blockPath,
                   const PackOptions& options, PackReport* report) {
    CheckOptions(options);
    const ModelFolder folder(modelPath);
    PackReport ownReport;
    PackReport& told = report != nullptr ? *report : ownReport;
    told = {};
    PackJob job;
    job.modelPath = modelPath;
    job.outputPath = blockPath;
    job.settingsPath = options.settingsPath;
    job.previewPath = options.previewPath;
    job.drawPreview = options.drawPreview;
    job.geosPerBlock = options.geosPerBlock;
    job.formatVersion = options.formatVersion;
    job.fast = options.fast;
    job.seal = options.seal;
    job.strict = options.strict;
    job.tolerance = options.tolerance;
    job.threads = options.threads != 0 ? options.threads : std::thread::hardware_concurrency();
    ImportListener listener(options, told);
    ImportLimits limits = LimitsOf(options, folder.ModelBytes());
    limits.wanted = [&listener] { return listener.IsWanted(); };
    int status = 0;
    try {
        status = RunImporter(
            FindImporter(options.importer), WordsOf(job), descriptor, &folder, limits,
            [&](ChildMessage kind, const std::string& text) { listener.Take(kind, text); });
    } catch (const Error& error) {
        told.lost = LostText(told.warnings);
        throw Error(error.GetStatus(), modelPath + ": " + error.what(), modelPath);
    }
    told.lost = LostText(told.warnings);
    if (status != 0) ThrowFailure(modelPath, status, listener, told);
}

}  // namespace ZVSmartModel
