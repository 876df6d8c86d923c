#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartZvg/BlockReader.h"
#include "tools/zvg/Command.h"
#include "tools/zvg/reading/InputStream.h"

/// An input file, opened; see OpenInput for what it may be and what opening throws.
class OpenedFile {
  public:
    explicit OpenedFile(const std::string& path);

    InputStream& Stream() { return *stream; }
    /// As messages name it.
    const std::string& Path() const { return path; }

    /// Throws ToolError InputOutput where a read has failed: nothing that was found is true then.
    void ThrowIfUnread() const;

  private:
    std::string path;
    std::unique_ptr<InputStream> stream;
};

/// A block file, opened for queries. What is wrong with the file becomes a ToolError that names
/// the file, the place in it and the reason.
///
/// What cannot be read, and what an answer leaves out without saying so, is remembered as damage,
/// so that a command can show what is whole before `ThrowIfDamaged` ends it. Each function here
/// throws ToolError InputOutput where the system does not deliver the file.
class OpenedBlock {
  public:
    /// Throws ToolError InputOutput for a file that cannot be opened, Damaged for one that is no
    /// block file or has no readable index.
    explicit OpenedBlock(const std::string& path) : OpenedBlock(OpenedFile(path)) {}
    /// The same for a file that is open.
    explicit OpenedBlock(OpenedFile file);

    ZVSmartZvg::CZVLGBlockReader& Reader() { return reader; }
    const std::string& Path() const { return file.Path(); }
    unsigned long long FileBytes() { return file.Stream().GetSize(); }

    /// A floor's name and its order; empty and ZVLG_NONE, remembered as damage, where they cannot
    /// be read.
    std::wstring FloorName(unsigned int floor);
    unsigned int FloorOrder(unsigned int floor);

    /// The floor that `text` names: by its number where there is a floor with that number, else
    /// by its name. Throws ToolError NotFound; Damaged where it may be one whose name is damaged.
    unsigned int FindFloor(const std::string& text);

    /// The first floor and the one behind the last: of all, or of the one that is named.
    std::pair<unsigned int, unsigned int> FindFloors(const std::optional<std::string>& text);

    /// The number of components on a floor. A floor whose components cannot be decoded counts 0
    /// and is remembered as damage.
    unsigned int FloorCompNum(unsigned int floor);
    /// The number of geometries in a block, as above.
    unsigned int GeoNumInBlock(unsigned int block);

    /// Reads the component at `index`, which is within the floor's number of components. False,
    /// remembered as damage, where it cannot be read.
    bool ReadComp(const ZVSmartZvg::SZVLGCompIndex& index, ZVSmartZvg::SZVLGZvgComp& comp);
    /// Hands every readable component of a floor to `use(index, comp)`, in order.
    template <class Use>
    void ForEachComp(unsigned int floor, Use use) {
        ZVSmartZvg::SZVLGZvgComp comp;
        const unsigned int count = FloorCompNum(floor);
        for (unsigned int position = 0; position < count; ++position) {
            const ZVSmartZvg::SZVLGCompIndex index{floor, position};
            if (ReadComp(index, comp)) use(index, comp);
        }
    }
    /// Reads a geometry that is within the block's number of geometries. Throws ToolError Damaged,
    /// which is remembered as well.
    void ReadGeo(const ZVSmartZvg::SZVLGZvgGeoIndex& index, ZVSmartZvg::SZVLGZvgGeo& geo);
    /// Reads the geometry of an identification into `geo`, which is fresh. False where there is
    /// none. Throws as above.
    bool ReadGeo(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo);
    /// Reads the preview image; nothing where there is none.
    std::optional<ZVSmartZvg::SZVLGZvgGeoImage> ReadPreview();
    /// The bytes that all blocks take when decoded.
    unsigned int DecodedBytes();

    /// The number of different damages that were remembered, as far as they are told apart.
    std::size_t DamageCount() const { return damages.size(); }
    /// Throws ToolError Damaged for what was remembered, if anything was.
    void ThrowIfDamaged() const;

    /// A ToolError about this file.
    ToolError Error(ExitStatus status, const std::string& reason) const;

  private:
    template <class Query>
    bool Ask(Query query);
    std::optional<std::string> LastDamage();
    void RememberDamage(const std::string& damage);
    [[noreturn]] void ThrowLastDamage();
    [[noreturn]] void ThrowForeign(const std::string& reason);

    OpenedFile file;
    ZVSmartZvg::CZVLGBlockReader reader;
    std::string firstDamage;
    bool knowsOnlyMisfit = false;
    std::set<std::string> damages;
};

/// "FLOOR:POS" or "BLOCK:POS".
std::string PlaceText(unsigned int table, unsigned int position);

/// `text` as a number that is written in digits alone and fits 32 bits.
std::optional<unsigned int> ParseNumber(std::string_view text);
