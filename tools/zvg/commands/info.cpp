#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/element/OpenedBlock.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/CountsDocument.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/reading/RecordDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

using namespace ZVSmartZvg;

namespace {

void AddHead(Document& document, CZVLGBlockReader& reader) {
    SZVLGZvgBlockHeadInfo head;
    reader.GetHeadInfo(head);
    document["version"] = reader.GetVersion();
    document["firstText"] = ToUtf8(head.firstText);
    document["secondText"] = ToUtf8(head.secondText);
    document["flags"] = HexNumber(head.flags, 2);
    if (head.optionalValue != -1) document["optionalValue"] = head.optionalValue;
    if (!head.optionalText.empty()) document["optionalText"] = ToUtf8(head.optionalText);
    if (!head.transf.identity()) document["transf"] = TransfDocument(head.transf);
}

void Info(const std::string& file, const CommonOptions& common) {
    const bool asJson = common.json;
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(file), limits, OptionsOf(common));
    CZVLGBlockReader& reader = block.Reader();
    Document document = NewDocument(file);
    AddHead(document, reader);
    document.update(CountsDocument(block));
    const std::optional<SZVLGZvgGeoImage> preview = block.ReadPreview();
    document["preview"] = nullptr;
    if (preview) document["preview"] = {{"width", preview->width}, {"height", preview->height}};
    document["fileBytes"] = block.FileBytes();
    document["decodedBytes"] = block.DecodedBytes();
    PrintDocument(document, asJson);
    block.ThrowIfDamaged();
}

}  // namespace

void RegisterInfo(CLI::App& app, CommonOptions& common) {
    const auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command = AddReadingCommand(
        app, "info", "Print what a block file says about itself and how much it holds",
        "zvg info house.zvg", *files);
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([files, &common] {
        ForEachFile(*files, common.json ? "" : ": ",
                    [&common](const FileTurn& turn) { Info(turn.file, common); });
    });
}

}  // namespace ZVSmartModel::Tool
