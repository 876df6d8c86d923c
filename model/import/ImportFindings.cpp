#include "model/import/ImportFindings.h"

#include <algorithm>

namespace ZVSmartModel {

void ImportFindings::Add(const std::string& kind, const std::string& text, bool lost,
                         const std::string& where, std::size_t count) {
    const auto [place, added] = places.emplace(std::make_pair(kind, text), findings.size());
    if (added) findings.push_back({kind, text, lost, 0, {}});
    ImportFinding& finding = findings[place->second];
    finding.count += count;
    const bool known = !finding.where.empty() && finding.where.back() == where;
    if (!where.empty() && !known && finding.where.size() < ImportFinding::mostPlaces) {
        finding.where.push_back(where);
    }
}

bool ImportFindings::AnythingLost() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const ImportFinding& finding) { return finding.lost; });
}

}  // namespace ZVSmartModel
