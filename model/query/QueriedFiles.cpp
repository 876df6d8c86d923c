#include "model/query/QueriedFiles.h"

#include <algorithm>

#include "model/element/BlockFileImp.h"
#include "model/query/Request.h"

namespace ZVSmartModel {

namespace {

/// What opening a file met.
std::optional<Error> VerdictOf(const BlockFile& file) {
    return file.Internals().Ask([](OpenedBlock& block) { return block.Verdict(); });
}

}  // namespace

QueriedFiles::QueriedFiles(const std::vector<std::string>& given, const OpenOptions& options,
                           std::size_t kept)
    : paths(given), options(options), kept(kept), unopened(given.size()) {
    if (paths.size() > ElementId::mostFiles) {
        throw Error(Status::Usage, std::to_string(paths.size()) +
                                       " files: one query asks at most " +
                                       std::to_string(ElementId::mostFiles));
    }
    for (unsigned int file = 0; file < Count(); ++file) numbers.emplace(paths[file], file);
}

std::optional<unsigned int> QueriedFiles::NumberOf(const std::string& path) const {
    const auto found = numbers.find(path);
    if (found == numbers.end()) return std::nullopt;
    return found->second;
}

std::shared_ptr<const BlockFile> QueriedFiles::Open(unsigned int file) {
    {
        const std::lock_guard<std::mutex> alone(mutex);
        if (unopened[file]) return nullptr;
        const auto found = std::find_if(opened.begin(), opened.end(),
                                        [file](const Opened& each) { return each.first == file; });
        if (found != opened.end()) {
            opened.splice(opened.begin(), opened, found);
            return found->second;
        }
    }
    std::shared_ptr<const BlockFile> itself;
    try {
        itself = std::make_shared<const BlockFile>(paths[file], options);
        if (const auto verdict = VerdictOf(*itself)) NoteFault(file, *verdict);
    } catch (const Error& error) {
        if (error.GetStatus() == Status::Internal) throw;
        NoteFault(file, error);
    }
    const std::lock_guard<std::mutex> alone(mutex);
    unopened[file] = itself == nullptr;
    if (!itself) return nullptr;
    opened.emplace_front(file, itself);
    if (opened.size() > kept) opened.pop_back();
    return itself;
}

void QueriedFiles::NoteFault(unsigned int file, const Error& error) {
    const std::lock_guard<std::mutex> alone(mutex);
    faults.try_emplace(file, FileFault{paths[file], error.GetStatus(), error.what()});
}

std::optional<FileFault> QueriedFiles::FaultOf(unsigned int file) const {
    const std::lock_guard<std::mutex> alone(mutex);
    const auto found = faults.find(file);
    if (found == faults.end()) return std::nullopt;
    return found->second;
}

std::vector<FileFault> QueriedFiles::Faults() const {
    const std::lock_guard<std::mutex> alone(mutex);
    std::vector<FileFault> all;
    for (const auto& [file, fault] : faults) all.push_back(fault);
    return all;
}

}  // namespace ZVSmartModel
