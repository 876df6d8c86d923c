#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "model/element/ElementReader.h"
#include "model/query/Tables.h"

namespace ZVSmartModel {

/// A component of one of a query's files.
struct ComponentAt {
    const std::string& path;
    ElementIndex index;
    std::int64_t id;
    const ElementView& element;
    bool hasBody;
};

/// Reads components of a file, those on the floors and at the places that are asked for alone, and
/// makes rows of them. What cannot be read is left out and noted as the file's fault.
class ComponentScan : public FileScan {
  public:
    /// Adds a component's rows.
    using RowsOf = void (*)(const ComponentAt& at, const Request& request, RowBatch& rows);

    /// `rowsOf` is given what is wanted of components.
    ComponentScan(QueriedFiles& files, unsigned int file, const Request& request, RowsOf rowsOf,
                  ElementReader::Wants wants);

    ~ComponentScan() override;
    ComponentScan(const ComponentScan&) = delete;
    ComponentScan& operator=(const ComponentScan&) = delete;

    /// Null where it cannot be opened.
    const std::shared_ptr<const BlockFile>& File() const { return itself; }
    /// Of what is asked for, only these are read; they are in order.
    void Only(std::vector<ElementIndex> places) { only = std::move(places); }

    bool Next(RowBatch& rows) override;

  private:
    void Begin(OpenedBlock& block);
    void ReadSome(OpenedBlock& block, RowBatch& rows);
    void ReadOnly(OpenedBlock& block, RowBatch& rows);
    bool FindFloor(OpenedBlock& block);
    void Read(OpenedBlock& block, ElementIndex index, RowBatch& rows);
    void NoteTooMany(const OpenedBlock& block, const char* what);

    QueriedFiles& files;
    unsigned int file;
    const Request& request;
    RowsOf rowsOf;
    ElementReader reader;
    std::shared_ptr<const BlockFile> itself;
    std::optional<std::vector<ElementIndex>> only;
    std::size_t nextOnly = 0;
    std::optional<FileWalk> walk;  ///< where several floors are read; begun and ended while asking
    bool isBegun = false, isOnFloor = false, isOver = false;
    unsigned int floor = 0, endOfFloors = 0, position = 0, endOfPositions = 0;
};

}  // namespace ZVSmartModel
