#include <memory>
#include <optional>
#include <string>

#include "ZVSmartModel/Diff.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/reading/DifferenceDocument.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/Csv.h"
#include "tools/zvg/text/Document.h"
#include "tools/zvg/text/JsonList.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct DiffArguments {
    std::string fileA, fileB;
    bool csv = false, stat = false;
};

/// Prints differences as they come.
class DifferencePrinter {
  public:
    DifferencePrinter(const DiffArguments& arguments, bool asJson)
        : head({{"schema", 1}, {"fileA", arguments.fileA}, {"fileB", arguments.fileB}}),
          arguments(arguments),
          asJson(asJson) {}

    void Print(const Difference& difference) {
        const Document entry = DifferenceDocument(difference);
        counts.Add(entry);
        if (arguments.stat) return;
        if (asJson) {
            List().Add(entry);
        } else if (arguments.csv) {
            for (const Document& record : DifferenceRecords(entry)) {
                if (!hasHeader) WriteOutput(CsvHeader(record));
                hasHeader = true;
                WriteOutput(CsvRecord(record));
            }
        } else {
            WriteOutput(DifferenceText(entry));
        }
    }

    /// Whether there was any.
    bool End() {
        constexpr unsigned long long mostWithoutSummary = 100;
        if (arguments.stat && asJson) {
            head.update(counts.ToDocument());
            PrintDocument(head, true);
        } else if (asJson) {
            List().End();
        } else if (arguments.csv) {
            // its records say it all
        } else if (counts.All() == 0) {
            WriteOutput("no differences\n");
        } else if (arguments.stat || counts.All() > mostWithoutSummary) {
            WriteOutput(counts.ToText());
        }
        return counts.All() != 0;
    }

  private:
    /// Begun where there is something to say: both files are whole then.
    JsonList& List() {
        if (!json) json.emplace(head, "differences");
        return *json;
    }

    Document head;
    const DiffArguments& arguments;
    bool asJson;
    DifferenceCounts counts;
    std::optional<JsonList> json;
    bool hasHeader = false;
};

void Diff(const DiffArguments& arguments, CommonOptions& common) {
    const BlockFile a = OpenBlockFile(arguments.fileA, common);
    const BlockFile b = OpenBlockFile(arguments.fileB, common);
    DifferencePrinter printer(arguments, common.json);
    Compare(a, b, [&printer](const Difference& difference) {
        printer.Print(difference);
        return true;
    });
    if (printer.End()) common.differs = true;
}

}  // namespace

void RegisterDiff(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<DiffArguments>();
    CLI::App* const command = app.add_subcommand(
        "diff",
        "Print how the second block file differs from the first: floors and components, known by "
        "their GUID names, that were added, removed, moved or renamed; old and new values of "
        "properties, classes and what else changed; how far a body was moved. More than 100 "
        "differences are summed up at the end. What the files say of themselves, their previews "
        "and the order of components are not compared. The exit status is 1 where anything "
        "differs");
    command->add_option("A", arguments->fileA, "The first block file; - is standard input")
        ->required();
    command->add_option("B", arguments->fileB, "The second block file; - is standard input")
        ->required();
    CLI::Option* const csv = command->add_flag(
        "--csv", arguments->csv,
        "Print comma-separated values (RFC 4180), a record for each thing that changed");
    command
        ->add_flag("--stat", arguments->stat,
                   "Print only how many differences there are, by class and by what changed")
        ->excludes(csv);
    command->footer("Example:\n  zvg diff before.zvg after.zvg");
    AddLimitOption(*command, common);
    AddThreadsOption(*command, common.threads);
    command->callback([arguments, &common] {
        if (arguments->csv && common.json) {
            throw Error(Status::Usage, "--csv and --json exclude each other");
        }
        Diff(*arguments, common);
    });
}

}  // namespace ZVSmartModel::Tool
