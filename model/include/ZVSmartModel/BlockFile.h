#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/Element.h"
#include "ZVSmartModel/ElementView.h"
#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

/// A floor of a file.
struct Floor {
    /// It may be empty.
    std::string name;
    unsigned int order = 0;  ///< as the host numbered it; lower is further down in packed files
    double elevation = 0;    ///< metres, in files that this library wrote
    double height = 0;       ///< metres up to the next floor; 0 for the topmost
    /// How many stand on it.
    unsigned int elements = 0;
};

/// How many elements are of one class.
struct ClassCount {
    /// Such as IfcWall.
    std::string className;
    /// How many are of it.
    std::size_t elements = 0;
};

/// What a file says of itself.
struct FileInfo {
    std::string firstText;           ///< of its head: where it comes from
    std::string secondText;          ///< of its head: what the host says besides
    unsigned int version = 0;        ///< of the format, 0 to 4
    std::uint64_t bytes = 0;         ///< of the file
    std::uint64_t decodedBytes = 0;  ///< of all its blocks
    /// How many there are.
    unsigned int floors = 0;
    /// How many compressed blocks hold geometry.
    unsigned int geometryBlocks = 0;
    unsigned int identifications = 0;  ///< names under which geometry is stored
};

/// Something of a file that cannot be read.
struct Damage {
    std::uint64_t position = 0;  ///< the byte in the file
    /// What is wrong there.
    std::string reason;
};

/// How to open a file.
struct OpenOptions {
    /// Take what work and memory a file asks for. Else each call takes no more than files of this
    /// size need, with much room, and ends with Error, Damaged, beyond: a stranger's file of a few
    /// bytes may ask for years of work.
    bool unlimited = false;
    /// What is decoded stays decoded up to so many bytes; what was used least lately goes first,
    /// and what was used last stays in any case.
    std::uint64_t cacheBytes = std::uint64_t{64} << 20;
    /// How many threads, up to 64, decode ahead while a call goes through a file: all elements, all
    /// bodies, an export, a comparison, a plan. 0 takes as many as there are processors; with 1
    /// there is none but the caller's. Answers do not depend on it, and the file, or the host's
    /// stream, is read by the calling thread alone; of two files that are compared each is read by
    /// a thread of its own where both have more than 1. For each thread two floors and two
    /// geometry blocks are in memory beside what `cacheBytes` says, and no more once the floors, or
    /// the blocks, take 64 MiB. Where all bodies are wanted a thread makes the shapes of its block
    /// as well, of at most 64 MiB, and as much again waits in all to be placed.
    unsigned int threads = 1;
};

/// A property that an element has.
struct PropertyTest {
    std::string name;   ///< "SET.NAME", or the name alone for that of any set
    std::string value;  ///< as the file has it, without its unit
};

/// Which elements are wanted; what is not named takes all.
struct Selection {
    std::optional<std::string> floor;     ///< its number, else its name
    std::vector<std::string> classNames;  ///< any of these, on any level of the classification
    std::vector<ElementIndex> elements;   ///< any of these
    bool rooms = true;                    ///< rooms as well, where no class and no element is named
    std::vector<PropertyTest> properties = {};  ///< all of these
};

/// A block file, opened to be read. Nothing but its head and index is read at first; floors and
/// geometries are decoded when they are asked for, and stay decoded as far as the options say.
/// Objects may be moved, not copied. Several threads may ask one object; they wait for each other.
///
/// Every call throws Error: InputOutput where the system does not deliver the file, Damaged for
/// what is asked for and cannot be read, Internal where memory runs out. The object is as good as
/// before then. What a call leaves out because it is damaged it remembers for `DamageMet`.
class ZVSM_API BlockFile {
  public:
    /// Opens a file. Throws Error: InputOutput where it cannot be opened or is no file, Damaged
    /// where it is no block file or its index cannot be read.
    explicit BlockFile(const std::string& path, const OpenOptions& options = {});
    /// Opens a file that lies in memory; `bytes` is copied where it is not moved.
    explicit BlockFile(std::vector<std::uint8_t> bytes, const OpenOptions& options = {});
    /// Opens a file that begins where `stream` stands; `stream` is borrowed and must outlive this.
    explicit BlockFile(ZVSmartFormat::CZVFTInStream& stream, const OpenOptions& options = {});
    ~BlockFile();
    /// One that was moved from may only be destroyed or assigned to.
    /// @{
    BlockFile(BlockFile&&) noexcept;
    BlockFile& operator=(BlockFile&&) noexcept;
    /// @}

    /// What the file says of itself.
    FileInfo Info() const;
    /// The same with `decodedBytes` 0, for a file that is far away: asks it for nothing that
    /// opening did not read.
    FileInfo Head() const;
    /// All floors, in the file's order. Decodes each floor once.
    std::vector<Floor> Floors() const;
    /// A floor, by its number. Throws Error, NotFound, where the file has no such floor. Decodes
    /// it.
    Floor ReadFloor(unsigned int floor) const;
    /// The number of elements on all floors, as the file's index has it.
    std::size_t ElementCount() const;
    /// The number of elements on a floor, by its number; 0 where there is no such floor, or none
    /// that can be read, which is remembered. Decodes that floor.
    unsigned int ElementCount(unsigned int floor) const;
    /// All classes with their elements, by name. Decodes the file's elements once.
    std::vector<ClassCount> Classes() const;
    /// The picture that the file shows; 0 × 0 where it holds none. Throws Error, Damaged, where
    /// there may be one that cannot be read.
    Picture Preview() const;

    /// Reads an element. Throws Error, NotFound, where the file has no such place.
    Element Read(ElementIndex index) const;
    /// Hands each selected element to `use`, floor by floor, in the file's order, until `use`
    /// answers false. `use` may ask this object. What cannot be read is left out and remembered.
    /// Throws Error, NotFound, for a floor that is not there; what `use` throws passes through.
    void ForEach(const Selection& selection,
                 const std::function<bool(const Element& element)>& use) const;
    /// The same without copies: what `element` looks at is there until `use` returns. Reading all
    /// elements of a file so takes about what decoding them does.
    void ForEachView(const Selection& selection,
                     const std::function<bool(const ElementView& element)>& use) const;

    /// The element of this GUID; the first of several. None where there is none; throws Error,
    /// Damaged, where it may be among those that cannot be read. The first call reads the identity
    /// of every element; later ones look it up.
    std::optional<ElementIndex> FindGuid(const std::string& guid) const;
    /// The elements of this name, in the file's order, as above.
    std::vector<ElementIndex> FindName(const std::string& name) const;
    /// The elements whose parents include this GUID, in the file's order, as above.
    std::vector<ElementIndex> PartsOf(const std::string& guid) const;

    /// What was met so far that cannot be read, each once, at most a thousand.
    std::vector<Damage> DamageMet() const;

    class Imp;
    /// For this library's own functions on files.
    Imp& Internals() const { return *imp; }

  private:
    explicit BlockFile(std::unique_ptr<Imp> imp);

    std::unique_ptr<Imp> imp;
};

}  // namespace ZVSmartModel
