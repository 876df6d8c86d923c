#include <filesystem>
#include <system_error>

#include "ZVSmartModel/Body.h"
#include "model/element/BlockFileImp.h"
#include "model/element/ElementRecord.h"
#include "model/element/Utf8.h"
#include "model/query/ComponentScan.h"
#include "model/query/Tables.h"

namespace ZVSmartModel {

namespace {

/// A table of which a file is read in one go.
class WholeFileScan : public FileScan {
  public:
    using RowsOf = void (*)(QueriedFiles& files, unsigned int file, const Request& request,
                            RowBatch& rows);

    WholeFileScan(QueriedFiles& files, unsigned int file, const Request& request, RowsOf rowsOf)
        : files(files), file(file), request(request), rowsOf(rowsOf) {}

    bool Next(RowBatch& rows) override {
        rowsOf(files, file, request, rows);
        return false;
    }

  private:
    QueriedFiles& files;
    unsigned int file;
    const Request& request;
    RowsOf rowsOf;
};

template <WholeFileScan::RowsOf rowsOf>
std::unique_ptr<FileScan> Scan(QueriedFiles& files, unsigned int file, const Request& request) {
    return std::make_unique<WholeFileScan>(files, file, request, rowsOf);
}

namespace OfFiles {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { path, title, version, bytes, error };

void Rows(QueriedFiles& files, unsigned int file, const Request& request, RowBatch& rows) {
    rows.Begin(file);
    rows.Text(path, files.Path(file));
    constexpr std::uint64_t onlyPath = 1U << path;
    if ((request.columns & ~onlyPath) == 0) return;
    const std::shared_ptr<const BlockFile> itself = files.Open(file);
    if (!itself) {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(files.Path(file), unknown);
        if (!unknown) rows.Integer(bytes, static_cast<std::int64_t>(size));
        if (const auto fault = files.FaultOf(file)) rows.Text(error, fault->reason);
        return;
    }
    itself->Internals().Ask([&rows](OpenedBlock& block) {
        ZVSmartZvg::SZVLGZvgBlockHeadInfo head;
        block.Reader().GetHeadInfo(head);
        rows.Text(title, ToUtf8(head.firstText));
        rows.Integer(version, block.Reader().GetVersion());
        rows.Integer(bytes, static_cast<std::int64_t>(block.FileBytes()));
        if (const auto met = block.Verdict()) rows.Text(error, std::string_view(met->what()));
    });
}

}  // namespace OfFiles

namespace OfFloors {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, idx, name, elevation, height };

void Rows(QueriedFiles& files, unsigned int number, const Request& request, RowBatch& rows) {
    const std::shared_ptr<const BlockFile> itself = files.Open(number);
    if (!itself) return;
    itself->Internals().Ask([&](OpenedBlock& block) {
        const unsigned int floors = block.Reader().GetFloorNum();
        block.Within("floors", [&] {
            for (unsigned int floor = 0; floor < floors; ++floor) {
                if (request.position.value_or(floor) != floor) continue;
                const std::string called = ToUtf8(block.FloorName(floor));
                block.Limits().Work(100 + called.size());
                if (!request.Accepts(name, called)) continue;
                rows.Begin(0);
                rows.Text(file, files.Path(number));
                rows.Integer(idx, floor);
                rows.TextIfAny(name, called);
                const auto [low, high] = block.FloorMetres(floor);
                rows.Real(elevation, low);
                rows.Real(height, high);
            }
        });
        if (const auto verdict = block.Verdict()) files.NoteFault(number, *verdict);
    });
}

}  // namespace OfFloors

/// Notes what a call on a file met; passes on what is not about the file.
template <class Act>
void Guarded(QueriedFiles& files, unsigned int file, Act act) {
    try {
        act();
    } catch (const Error& error) {
        if (error.GetStatus() != Status::Damaged && error.GetStatus() != Status::InputOutput) throw;
        files.NoteFault(file, error);
    }
}

namespace OfShapes {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, key, points, triangles, places };

void Rows(QueriedFiles& files, unsigned int number, const Request& request, RowBatch& rows) {
    const std::shared_ptr<const BlockFile> itself = files.Open(number);
    if (!itself) return;
    Guarded(files, number, [&] {
        const Shapes shapes = ReadShapes(*itself);
        std::vector<std::int64_t> placed(shapes.shapes.size());
        for (const Placement& placement : shapes.placements) ++placed[placement.shape];
        for (std::size_t i = 0; i < shapes.shapes.size(); ++i) {
            const Shape& shape = shapes.shapes[i];
            const std::string* const wanted = request.TextOf(key);
            if (wanted != nullptr && *wanted != shape.key) continue;
            std::int64_t allPoints = 0, allTriangles = 0;
            for (const Triangles& surface : shape.surfaces) {
                allPoints += static_cast<std::int64_t>(surface.points.size());
                allTriangles += static_cast<std::int64_t>(surface.triangles.size());
            }
            rows.Begin(0);
            rows.Text(file, files.Path(number));
            rows.Text(key, std::string_view(shape.key));
            rows.Integer(points, allPoints);
            rows.Integer(triangles, allTriangles);
            rows.Integer(places, placed[i]);
        }
        const auto met =
            itself->Internals().GoOn([](OpenedBlock& block) { return block.Verdict(); });
        if (met) files.NoteFault(number, *met);
    });
}

}  // namespace OfShapes

namespace OfBoxes {

// NOLINTNEXTLINE(readability-identifier-naming): as in SQL
enum : int { file, element, xmin, ymin, zmin, xmax, ymax, zmax, area, volume, closed };

/// The elements whose bodies are to be measured; geometry is not looked at.
void NoteElement(const ComponentAt& at, const Request&, RowBatch& rows) {
    if (at.hasBody) rows.Begin(at.id);
}

class Scan : public FileScan {
  public:
    Scan(QueriedFiles& files, unsigned int number, const Request& request)
        : files(files),
          number(number),
          elements(files, number, request, NoteElement, {NoProperties(), false}) {}

    bool Next(RowBatch& rows) override {
        if (next == found.Rows() && !isOver) {
            found.Clear();
            next = 0;
            isOver = !elements.Next(found);
        }
        for (; next < found.Rows() && !rows.IsFull(); ++next) {
            Guarded(files, number, [&] { Measured(found.Id(next), rows); });
        }
        return next < found.Rows() || !isOver;
    }

  private:
    void Measured(std::int64_t id, RowBatch& rows) {
        const Measures measures = Measure(ReadBody(*elements.File(), ElementId::Of(id)->index));
        if (measures.box.IsEmpty()) return;
        rows.Begin(id);
        rows.Text(file, files.Path(number));
        rows.Integer(element, id);
        for (int axis = 0; axis < 3; ++axis) {
            rows.Real(xmin + axis, measures.box.low[static_cast<std::size_t>(axis)]);
            rows.Real(xmax + axis, measures.box.high[static_cast<std::size_t>(axis)]);
        }
        rows.Real(area, measures.area);
        rows.Real(volume, measures.volume);
        rows.Integer(closed, measures.closed ? 1 : 0);
    }

    QueriedFiles& files;
    unsigned int number;
    ComponentScan elements;
    RowBatch found;
    std::size_t next = 0;
    bool isOver = false;
};

std::unique_ptr<FileScan> Begin(QueriedFiles& files, unsigned int file, const Request& request) {
    return std::make_unique<Scan>(files, file, request);
}

}  // namespace OfBoxes

}  // namespace

std::vector<Table> FileTables() {
    return {{.name = "files",
             .columns = {{"path", "TEXT", Meaning::Path},
                         {"title", "TEXT"},
                         {"version", "INTEGER"},
                         {"bytes", "INTEGER"},
                         {"error", "TEXT"}},
             .rowIsElement = false,
             .rowsPerFile = 1,
             .work = Work::open,
             .scan = Scan<OfFiles::Rows>},
            {.name = "floors",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"idx", "INTEGER", Meaning::Position},
                         {"name", "TEXT", Meaning::Text},
                         {"elevation", "REAL"},
                         {"height", "REAL"}},
             .rowIsElement = false,
             .rowsPerFile = 5,
             .work = Work::open,
             .scan = Scan<OfFloors::Rows>},
            {.name = "shapes",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"key", "TEXT", Meaning::Text},
                         {"points", "INTEGER"},
                         {"triangles", "INTEGER"},
                         {"places", "INTEGER"}},
             .rowIsElement = false,
             .rowsPerFile = 300,
             .work = Work::decodeShapes,
             .scan = Scan<OfShapes::Rows>},
            {.name = "boxes",
             .columns = {{"file", "TEXT", Meaning::Path},
                         {"element", "INTEGER", Meaning::Element},
                         {"xmin", "REAL"},
                         {"ymin", "REAL"},
                         {"zmin", "REAL"},
                         {"xmax", "REAL"},
                         {"ymax", "REAL"},
                         {"zmax", "REAL"},
                         {"area", "REAL"},
                         {"volume", "REAL"},
                         {"closed", "INTEGER"}},
             .rowIsElement = true,
             .rowsPerFile = 200,
             .work = Work::measureBodies,
             .scan = OfBoxes::Begin}};
}

}  // namespace ZVSmartModel
