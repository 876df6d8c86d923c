#include "tools/zvg/pack/PackReport.h"

#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/Utf8.h"

std::string PackReport(const Model& model, const std::string& modelPath) {
    Document report = {{"schema", 1},
                       {"model", modelPath},
                       {"modelSchema", ToUtf8(model.schema)},
                       {"complete", !model.findings.AnythingLost()},
                       {"types", Document::array()},
                       {"findings", Document::array()}};
    for (const auto& [type, count] : model.findings.elements) {
        report["types"].push_back({{"type", type},
                                   {"inModel", count.inModel},
                                   {"arrived", count.arrived},
                                   {"withBody", count.withBody}});
    }
    for (const ImportFinding& finding : model.findings.findings) {
        report["findings"].push_back({{"kind", finding.kind},
                                      {"text", finding.text},
                                      {"lost", finding.lost},
                                      {"count", finding.count},
                                      {"where", finding.where}});
    }
    return ToJson(report);
}
