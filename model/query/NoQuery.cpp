#include "ZVSmartModel/Query.h"

namespace ZVSmartModel {

bool CanQuery() {
    return false;
}

class Query::Imp {};

Query::Query(const std::vector<std::string>&, const std::string&, const QueryOptions&,
             const Progress&) {
    throw Error(Status::Usage, "this build answers no SQL (it needs SQLite)");
}

Query::~Query() = default;
Query::Query(Query&&) noexcept = default;
Query& Query::operator=(Query&&) noexcept = default;

const std::vector<std::string>& Query::Columns() const {
    static const std::vector<std::string> none;
    return none;
}

bool Query::Next(QueryRow&) {
    return false;
}

std::vector<FileFault> Query::Faults() const {
    return {};
}

QueryTable AskQuery(const std::vector<std::string>& paths, const std::string& sql,
                    const QueryOptions& options, const Progress& progress) {
    const Query query(paths, sql, options, progress);
    return {};
}

}  // namespace ZVSmartModel
