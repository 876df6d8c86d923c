#include "tools/zvg/reading/ReportDocument.h"

#include "tools/zvg/text/Document.h"

namespace ZVSmartModel::Tool {

std::string ReportLine(const PackReport& report, const std::string& modelPath) {
    Document document = {{"schema", 1},
                         {"model", modelPath},
                         {"modelSchema", report.schema},
                         {"complete", report.lost.empty()},
                         {"types", Document::array()},
                         {"findings", Document::array()}};
    for (const PackTypeCount& count : report.types) {
        document["types"].push_back({{"type", count.type},
                                     {"inModel", count.inModel},
                                     {"arrived", count.arrived},
                                     {"withBody", count.withBody}});
    }
    for (const PackWarning& finding : report.warnings) {
        document["findings"].push_back({{"kind", finding.kind},
                                        {"text", finding.text},
                                        {"lost", finding.lost},
                                        {"count", finding.count},
                                        {"where", finding.where}});
    }
    return ToJson(document);
}

}  // namespace ZVSmartModel::Tool
