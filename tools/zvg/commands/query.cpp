#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "ZVSmartModel/Query.h"
#include "model/element/Utf8.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/InputFiles.h"
#include "tools/zvg/text/Csv.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/JsonList.h"
#include "tools/zvg/text/Progress.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct QueryArguments {
    std::string sql;
    std::vector<std::string> files;
    bool csv = false, table = false;
};

Document ValueDocument(const QueryValue& value) {
    if (const auto* const integer = std::get_if<std::int64_t>(&value)) return *integer;
    if (const auto* const real = std::get_if<double>(&value)) return RealNumber(*real);
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    return nullptr;
}

Document RowDocument(const QueryRow& row) {
    Document values = Document::array();
    for (const QueryValue& value : row) values.push_back(ValueDocument(value));
    return values;
}

/// As it stands in a line; nothing for null.
std::string ValueText(const QueryValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) return EscapeControls(*text);
    return std::holds_alternative<std::monostate>(value) ? "" : ValueDocument(value).dump();
}

void PrintText(Query& query) {
    for (QueryRow row; query.Next(row);) {
        std::string line;
        for (const QueryValue& value : row) line += ValueText(value) + '\t';
        line.back() = '\n';
        WriteOutput(line);
    }
}

void PrintCsv(Query& query) {
    WriteOutput(CsvRecord(Document(query.Columns())));
    for (QueryRow row; query.Next(row);) WriteOutput(CsvRecord(RowDocument(row)));
}

void PrintJson(Query& query) {
    JsonList list({{"schema", 1}, {"columns", query.Columns()}}, "rows");
    for (QueryRow row; query.Next(row);) list.Add(RowDocument(row));
    list.End();
}

/// The characters of UTF-8 text, each taken to be as wide as any other.
std::size_t WidthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

/// Columns below their names; numbers stand to the right. Keeps all rows.
void PrintTable(Query& query) {
    std::vector<std::vector<std::string>> lines = {query.Columns()};
    std::vector<bool> isNumber(query.Columns().size(), true);
    for (QueryRow row; query.Next(row);) {
        std::vector<std::string>& line = lines.emplace_back();
        for (std::size_t i = 0; i < row.size(); ++i) {
            line.push_back(ValueText(row[i]));
            if (std::holds_alternative<std::string>(row[i])) isNumber[i] = false;
        }
    }
    std::vector<std::size_t> widths(query.Columns().size());
    for (const auto& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths[i], WidthOf(line[i]));
    }
    std::vector<std::string> rule;
    for (const std::size_t width : widths) rule.emplace_back(width, '-');
    lines.insert(lines.begin() + 1, rule);
    for (const auto& line : lines) {
        std::string out;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const std::string blanks(widths[i] - WidthOf(line[i]), ' ');
            out += (i == 0 ? "" : "  ") + (isNumber[i] ? blanks + line[i] : line[i] + blanks);
        }
        out.erase(out.find_last_not_of(' ') + 1);
        WriteOutput(out + '\n');
    }
}

/// A lone "-" stands for the paths that are read from standard input, one a line.
std::vector<std::string> PathsOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> paths;
    for (const std::string& argument : arguments) {
        if (argument != "-") {
            paths.push_back(argument);
            continue;
        }
        for (std::string line; std::getline(std::cin, line);) {
            if (!line.empty()) paths.push_back(line);
        }
    }
    return paths;
}

void RunQuery(const QueryArguments& arguments, const CommonOptions& common) {
    if (arguments.csv + arguments.table + common.json > 1) {
        throw Error(Status::Usage, "--csv, --json and --table exclude each other");
    }
    Progress line(common.quiet);
    QueryOptions options;
    options.open.unlimited = common.noLimit;
    options.threads = common.threads;
    const std::vector<std::string> files = InputFiles(PathsOf(arguments.files));
    Query query(files, arguments.sql, options, line.Shares());
    const auto print = common.json       ? PrintJson
                       : arguments.csv   ? PrintCsv
                       : arguments.table ? PrintTable
                                         : PrintText;
    print(query);
    line.Clear();
    const std::vector<FileFault> faults = query.Faults();
    if (faults.empty()) return;
    for (std::size_t i = 0; i + 1 < faults.size(); ++i) WriteError(faults[i].reason);
    throw Error(faults.front().status, faults.back().reason);
}

}  // namespace

void RegisterQuery(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<QueryArguments>();
    CLI::App* const command = app.add_subcommand(
        "query",
        "Answer SQL over block files, one line a row with tabs between its values. The tables are "
        "files(path, title, version, bytes, error), floors(file, idx, name, elevation, height), "
        "elements(file, floor, idx, guid, name, class, type, material, colour, parent, id), "
        "properties(file, element, set, name, value, number, unit), "
        "materials(file, element, idx, name, category, thickness), "
        "relations(file, element, kind, target), shapes(file, key, points, triangles, places) and "
        "boxes(file, element, xmin, ymin, zmin, xmax, ymax, zmax, area, volume, closed); element "
        "is an elements.id, floor a floors.idx. What cannot be read is left out and told at the "
        "end");
    command->add_option("SQL", arguments->sql, "One statement that asks, in SQLite's SQL")
        ->required();
    command
        ->add_option("FILE", arguments->files,
                     "Block files, and folders that are searched for *.zvg; - reads paths from "
                     "standard input, one a line")
        ->required();
    CLI::Option* const csv =
        command->add_flag("--csv", arguments->csv, "Comma-separated values, with a heading");
    command->add_flag("--table", arguments->table, "Columns below their names, for people")
        ->excludes(csv);
    AddThreadsOption(*command, common.threads);
    AddLimitOption(*command, common);
    command->footer(
        "Examples:\n"
        "  zvg query 'SELECT class, count(*) FROM elements GROUP BY 1' models/ --table\n"
        "  zvg query \"SELECT e.guid, p.value FROM elements e JOIN properties p "
        "ON p.element = e.id WHERE e.class = 'IfcDoor' AND p.name = 'FireRating'\" house.zvg");
    command->callback([arguments, &common] { RunQuery(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
