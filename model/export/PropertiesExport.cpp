#include "model/export/PropertiesExport.h"

#include "model/element/FileSink.h"

namespace ZVSmartModel {

namespace {

constexpr std::size_t bytesAtOnce = 1 << 16;

std::string JsonText(const Extras& value) {
    return value.dump(-1, ' ', false, Extras::error_handler_t::replace);
}

}  // namespace

std::size_t EncodeProperties(OpenedBlock& block, const ExportOptions& options,
                             ZVSmartFormat::CZVFTOutStream& out, ProgressPace& pace) {
    constexpr std::uint64_t bytesOfName = 300;  // that is remembered
    std::string text = R"({"schema":1,"source":)" + JsonText(SourceOf(block)) + R"(,"elements":{)";
    UniqueNames names;
    const char* separator = "\n";
    const std::size_t count =
        ForEachChosen(block, options, pace, nullptr, [&](const ChosenComponent& chosen) {
            Extras element = ComponentExtras(chosen.index, chosen.comp, true);
            element["name"] = ComponentName(chosen.comp);
            block.Limits().Memory(bytesOfName);
            const std::string name = names.Of(element["globalId"].get<std::string>());
            text += separator + JsonText(name) + ':' + JsonText(element);
            separator = ",\n";
            if (text.size() < bytesAtOnce) return;
            WriteWhole(out, text);
            text.clear();
        });
    WriteWhole(out, text + "\n}}\n");
    return count;
}

}  // namespace ZVSmartModel
