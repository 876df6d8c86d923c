#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Element.h"
#include "ZVSmartModel/ModelApi.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// A floor of a model that a host makes.
struct NewFloor {
    std::string name;      ///< not empty, and no other floor's
    double elevation = 0;  ///< metres
    double height = 0;     ///< metres up to the next floor; 0 for the topmost
};

/// A body, and the curves beside it, in coordinates of its own; elements place it. Normals are not
/// stored. Surfaces that look the same are read back as one.
struct NewShape {
    /// One for each look.
    std::vector<Triangles> surfaces;
    /// Plan symbols, axes.
    std::vector<Polyline> curves;
};

/// Where a shape stands, as a part of an element.
struct NewPlacement {
    std::size_t shape = 0;  ///< as `Builder::AddShape` numbered it
    /// The shape's coordinates to the model's.
    Transform toWorld = identityTransform;
};

/// An element of a model that a host makes. Its fields mean what those of Element do.
struct NewElement {
    std::string guid;                  ///< its GlobalId, or any name that no other element has
    std::string name;                  ///< stored as its property "Element.Name"; may be empty
    std::string className;             ///< not empty; the names of IFC, such as IfcWall, serve well
    std::string predefinedType;        ///< may be empty
    std::string typeName;              ///< may be empty
    std::optional<std::size_t> floor;  ///< as `Builder::AddFloor` numbered it; none for no floor
    /// Its body; empty for none.
    std::vector<NewPlacement> shapes;
    /// In the order in which they are read back.
    std::vector<Property> properties;
    std::vector<Material> materials;   ///< a thickness is stored as the property "LayerThickness"
    std::vector<std::string> parents;  ///< GUIDs, also of elements that come later
    std::string group;                 ///< GUID of the group it is in; may be empty
};

/// What a model is a model of.
struct NewBuilding {
    /// Of the building; each may be empty.
    /// @{
    std::string guid, name, longName;
    /// @}
    /// Of its site; each may be empty.
    /// @{
    std::string siteGuid, siteName;
    /// @}
};

/// How to write a model.
struct BuilderOptions {
    std::string title;  ///< what the model is and where it comes from
    /// What a host says besides.
    std::string remark = "geometry in metres, values in the units beside them";
    NewBuilding building;            ///< to which all elements belong, unless it is left empty
    unsigned int formatVersion = 4;  ///< 0 to 4; 0 stores no materials
    unsigned int geosPerBlock = 0;   ///< 0 chooses by the sizes of the first geometries
    /// Compress faster and weaker. The choice holds for the whole process: of files that are
    /// written at the same time, the one begun last decides.
    bool fast = false;
    bool seal = false;  ///< write a checksum of the file behind its end
};

/// Writes a model that a host makes, in one pass, as a block file. What is stored is what packing
/// a file with the same content stores.
///
/// Floors, shapes and elements may be added in any order in which whatever refers to a floor or a
/// shape comes after it. Geometry is written as it comes, so that memory is taken by elements and
/// names, not by their bodies. Objects may be moved, not copied; one that was moved from may only
/// be destroyed or assigned to. One thread at a time uses one.
///
/// Every call throws Error. Usage tells a mistake, or more than a block file holds: nothing of it
/// is stored, and the builder is as good as before. InputOutput tells that the file or the stream
/// does not take what is written, Internal that memory ran out: then no file comes of it, and every
/// later call throws the same. Texts that are no UTF-8 are stored with U+FFFD in the wrong places.
class ZVSM_API Builder {
  public:
    /// Begins a file that appears under `path`, whole, at `Finish`, and replaces one of that name;
    /// without it nothing stays.
    explicit Builder(const std::string& path, const BuilderOptions& options = {});
    /// Begins a file where `out` stands. `out` is borrowed until `Finish` returns, which neither
    /// flushes nor closes it; without `Finish` what was written is no block file.
    explicit Builder(ZVSmartFormat::CZVFTOutStream& out, const BuilderOptions& options = {});
    ~Builder();
    /// One that was moved from may only be destroyed or assigned to.
    /// @{
    Builder(Builder&&) noexcept;
    Builder& operator=(Builder&&) noexcept;
    /// @}

    /// The number of the floor. Add the lowest first, as readers show floors in this order; a floor
    /// is in the file once an element is on it. Elements without a floor are on one that is named
    /// "unassigned".
    std::size_t AddFloor(const NewFloor& floor);

    /// Stores a shape, and gives its number. One that was added before is not stored again and has
    /// the number that it had. Points are rounded to 2^-24 m; triangles and polylines that come to
    /// nothing by that are left out, so that a shape may be empty and stand nowhere. Usage: a
    /// coordinate that is no number or beyond 1e11 m, a triangle that leads to no point.
    std::size_t AddShape(const NewShape& shape);

    /// Stores an element. Usage: a GUID that is empty, "none", or taken; no class; a number that no
    /// floor or shape has; a placement as above; a property without a name, or whose kind is not
    /// one word; a thickness that is not above 0.
    void AddElement(const NewElement& element);

    /// Stores the picture that the file shows. Usage: no pixels, not 4 bytes for each, or a picture
    /// was set before.
    void SetPreview(const Picture& picture);

    /// Writes the rest and ends the file. Every later call throws Error, Usage.
    void Finish();

  private:
    class ZVFT_LOCAL Imp;
    std::unique_ptr<Imp> imp;
};

}  // namespace ZVSmartModel
