#include "model/pack/PackJob.h"

#include <charconv>

namespace ZVSmartModel {

namespace {

/// Hands every part of a job to `part`, in the order of the words.
template <class Job, class Part>
void ForEachPart(Job& job, Part part) {
    part(job.modelPath);
    part(job.outputPath);
    part(job.settingsPath);
    part(job.previewPath);
    part(job.drawPreview);
    part(job.geosPerBlock);
    part(job.formatVersion);
    part(job.fast);
    part(job.seal);
    part(job.strict);
    part(job.tolerance);
    part(job.threads);
}

std::string Word(const std::string& text) {
    return text;
}

std::string Word(bool value) {
    return value ? "1" : "0";
}

/// Numbers come back as they were, whatever the locale.
template <class Number>
std::string Word(Number value) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

bool Take(std::string_view word, std::string& text) {
    text = word;
    return true;
}

bool Take(std::string_view word, bool& value) {
    value = word == "1";
    return value || word == "0";
}

template <class Number>
bool Take(std::string_view word, Number& value) {
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return error == std::errc() && stop == end;
}

}  // namespace

std::vector<std::string> WordsOf(const PackJob& job) {
    std::vector<std::string> words;
    ForEachPart(job, [&words](const auto& value) { words.push_back(Word(value)); });
    return words;
}

std::optional<PackJob> JobOf(const std::vector<std::string_view>& words) {
    PackJob job;
    std::size_t next = 0;
    bool isJob = true;
    ForEachPart(job, [&](auto& value) {
        isJob = isJob && next < words.size() && Take(words[next], value);
        ++next;
    });
    if (!isJob || next != words.size()) return std::nullopt;
    return job;
}

}  // namespace ZVSmartModel
