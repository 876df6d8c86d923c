#include "model/import/ifc/IfcShapes.h"

#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcMaterial.h>
#include <ifcpp/IFC4/include/IfcMaterialDefinitionRepresentation.h>
#include <ifcpp/IFC4/include/IfcRelVoidsElement.h>
#include <ifcpp/IFC4/include/IfcSurfaceStyle.h>
#include <ifcpp/model/BuildingModel.h>

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "model/import/ifc/BooleanStep.h"
#include "model/import/ifc/CheckedBoolean.h"
#include "model/import/ifc/IfcColours.h"
#include "model/import/ifc/IfcRoundness.h"
#include "model/import/ifc/LibraryGeometry.h"
#include "model/import/ifc/SolidLines.h"
#include "model/import/ifc/SteadyMemory.h"
#include "model/import/ifc/Texts.h"

namespace ZVSmartModel {

namespace {

struct StyledLook {
    std::optional<Rgba> colour;
    std::wstring styleName;
};

using Appearances = std::vector<std::shared_ptr<AppearanceData>>;
using MeshSet = carve::mesh::MeshSet<3>;

/// Whether a representation is something else than the body: its plan, its axis, its box.
bool IsNoBody(const std::wstring& identifier) {
    for (const wchar_t* other : {L"Box", L"FootPrint", L"Axis", L"Annotation", L"Profile"}) {
        if (identifier == other) return true;
    }
    return false;
}

/// Corners of triangles of a face with `count` vertices that begin at `first` in the shell.
std::vector<carve::triangulate::tri_idx> CutIntoTriangles(const MeshSet::face_t& face,
                                                          std::size_t count) {
    if (count == 3) return {{0, 1, 2}};
    const SteadyMemory steady;
    std::vector<carve::geom::vector<2>> projected;
    face.getProjectedVertices(projected);
    std::vector<carve::triangulate::tri_idx> triangles;
    carve::triangulate::triangulate(projected, triangles);
    return triangles;
}

void AddFace(const MeshSet::face_t& face, ModelShell& shell) {
    std::vector<MeshSet::vertex_t*> vertices;
    face.getVertices(vertices);
    if (vertices.size() < 3) return;
    const auto first = static_cast<std::uint32_t>(shell.points.size());
    for (const auto* vertex : vertices) {
        shell.points.push_back({vertex->v.x, vertex->v.y, vertex->v.z});
    }
    for (const auto& triangle : CutIntoTriangles(face, vertices.size())) {
        const bool inside = std::max({triangle.a, triangle.b, triangle.c}) < vertices.size();
        if (!inside) continue;
        shell.triangles.push_back({first + triangle.a, first + triangle.b, first + triangle.c});
    }
}

void AddMeshes(const std::vector<std::shared_ptr<MeshSet>>& sets, ShapePart& part) {
    for (const auto& set : sets) {
        if (!set) continue;
        for (const auto* mesh : set->meshes) {
            ModelShell& shell = part.shells.emplace_back();
            for (const auto* face : mesh->faces) AddFace(*face, shell);
        }
    }
}

Transform PlacementOf(const carve::math::Matrix& matrix) {
    Transform placement = {};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 4; ++column) {
            placement[row * 4 + column] = matrix.m[column][row];
        }
    }
    return WithoutNoise(placement);
}

std::string Narrow(const std::wstring& text) {
    return {text.begin(), text.end()};  // the library's messages are ASCII
}

std::string NameOf(const IfcRoot& root) {
    return std::string(root.className()) + ' ' + Narrow(TextOf(root.m_GlobalId));
}

/// Calls `visit` with each item of a product's body.
template <typename Visit>
void ForEachItem(const ProductShapeData& data, const Visit& visit) {
    for (const auto& representation : data.m_vec_representations) {
        if (!representation || IsNoBody(representation->m_representation_identifier)) continue;
        for (const auto& item : representation->m_vec_item_data) {
            if (item) visit(*item);
        }
    }
}

template <typename Meshsets>
bool AnyHas(const ProductShapeData& data, Meshsets ItemShapeData::*sets) {
    bool found = false;
    ForEachItem(data, [&](const ItemShapeData& item) { found = found || !(item.*sets).empty(); });
    return found;
}

/// Around all surfaces of a product's body, with `placement` applied; where there is none, its
/// low corner is above its high one.
SolidBox BoxOf(const ProductShapeData& data, const carve::math::Matrix& placement) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    SolidVector low = carve::geom::VECTOR(infinity, infinity, infinity);
    SolidVector high = -low;
    ForEachItem(data, [&](const ItemShapeData& item) {
        for (const auto* sets : {&item.m_meshsets, &item.m_meshsets_open}) {
            for (const auto& set : *sets) {
                if (!set) continue;
                for (const auto& vertex : set->vertex_storage) {
                    const SolidVector point = placement * vertex.v;
                    carve::geom::assign_op(low, low, point, carve::util::min_functor());
                    carve::geom::assign_op(high, high, point, carve::util::max_functor());
                }
            }
        }
    });
    return {low, high};
}

}  // namespace

}  // namespace ZVSmartModel

bool CSG_Adapter::checkMeshSetValidAndClosed(const std::shared_ptr<meshset_t>& solid,
                                             StatusCallback*, BuildingEntity*) {
    if (!solid || solid->meshes.empty() || !ZVSmartModel::IsClosed(*solid)) return false;
    ZVSmartModel::TurnRightSideOut(*solid);
    return true;
}

void CSG_Adapter::computeCSG(std::shared_ptr<meshset_t>& a, std::shared_ptr<meshset_t>& b,
                             carve::csg::CSG::OP operation, std::shared_ptr<meshset_t>& result,
                             StatusCallback*, BuildingEntity* entity) {
    using namespace ZVSmartModel;
    if (!a) a = EmptySolid();
    if (!b) b = EmptySolid();
    result = CheckedBoolean(*a, *b, operation);
    if (auto* step = BooleanStep::Current()) {
        step->Take(result != nullptr, entity ? entity->m_entity_id : 0);
    }
    if (!result) result = operation == BooleanOperation::UNION ? Together(*a, *b) : a;
}

namespace ZVSmartModel {

class IfcShapes::Maker {
  public:
    Maker(std::shared_ptr<BuildingModel> loaded, double tolerance, const ImportReport& report)
        : model(std::move(loaded)), tolerance(tolerance), report(report), converter(model) {
        converter.setMessageCallBack(this, &Maker::TakeMessage);
        converter.getGeomSettings()->setNumVerticesPerCircleGivenRadius(
            [tolerance](double radius) { return SidesOfCircle(radius, tolerance); });
        carve::setEpsilon(1.5e-5 * model->getUnitConverter()->getLengthInMeterFactor());
    }

    Body BodyOf(const std::shared_ptr<IfcProduct>& product,
                const std::vector<IfcMaterialUse>& materials) {
        auto data = std::make_shared<ProductShapeData>(product->m_entity_id);
        data->m_ifc_object_definition = product;
        SetSidesOfRevolved(*product);
        const auto element = std::dynamic_pointer_cast<IfcElement>(product);
        if (element) {
            // Openings are cut one by one afterwards, so that it is known which is being cut.
            auto openings = std::exchange(element->m_HasOpenings_inverse, {});
            Try(*product, [&] { MakeWhole(*product, data); });
            element->m_HasOpenings_inverse = std::move(openings);
            CutOpenings(*product, element, data);
        } else {
            Try(*product, [&] { MakeWhole(*product, data); });
        }
        CutOpeningsOfWhole(*product, data);
        Body body;
        body.placement = PlacementOf(data->getTransform());
        const StyledLook materialLook = LookOf(materials);
        const StyledLook productLook = LookOf(data->getAppearances());
        for (const auto& representation : data->m_vec_representations) {
            if (!representation || IsNoBody(representation->m_representation_identifier)) continue;
            const StyledLook representationLook =
                LookOf(representation->m_vec_representation_appearances);
            for (const auto& item : representation->m_vec_item_data) {
                if (!item) continue;
                AddItem(*item,
                        {LookOf(item->m_vec_item_appearances), representationLook, productLook,
                         materialLook},
                        body.shape);
            }
        }
        return body;
    }

  private:
    /// The library asks for one number of sides for all revolved solids: here that of the largest
    /// circle that a point of the element's runs along.
    void SetSidesOfRevolved(const IfcProduct& element) {
        double radius = 0;
        for (const auto& solid : RevolvedSolidsOf(element)) {
            Try(*solid, [&] { radius = std::max(radius, RadiusOf(*solid)); });
        }
        converter.getGeomSettings()->setNumVerticesPerCircle(SidesOfCircle(radius, tolerance));
    }

    double RadiusOf(IfcRevolvedAreaSolid& solid) {
        if (!solid.m_SweptArea) return 0;
        const auto& shapes = converter.getRepresentationConverter();
        const auto profile = shapes->getProfileCache()->getProfileConverter(solid.m_SweptArea);
        const double unit = model->getUnitConverter()->getLengthInMeterFactor();
        double radius = 0;
        for (const auto& loop : profile->getCoordinates()) {
            for (const auto& corner : loop) {
                radius = std::max(radius, DistanceFromAxis(solid, corner.x, corner.y, unit));
            }
        }
        return radius;
    }

    void MakeWhole(const IfcProduct& element, std::shared_ptr<ProductShapeData>& data) {
        const BooleanStep step([&](int entity) {
            Warn("a boolean (#" + std::to_string(entity) + ") in " + NameOf(element) +
                 " could not be made: its first operand is kept as it is");
        });
        converter.convertIfcProductShape(data);
    }

    /// The parts of an assembled element lose what is cut out of the whole.
    void CutOpeningsOfWhole(const IfcProduct& part, std::shared_ptr<ProductShapeData>& data) {
        for (const auto& weakRelation : part.m_Decomposes_inverse) {
            const auto relation = weakRelation.lock();
            if (!relation) continue;
            const auto whole = std::dynamic_pointer_cast<IfcElement>(relation->m_RelatingObject);
            if (whole) CutOpenings(part, whole, data);
        }
    }

    /// Cuts the openings of `host` out of what has been made of `element`.
    void CutOpenings(const IfcProduct& element, const std::shared_ptr<IfcElement>& host,
                     std::shared_ptr<ProductShapeData>& data) {
        const auto openings = host->m_HasOpenings_inverse;
        for (const auto& weakRelation : openings) {
            const auto relation = weakRelation.lock();
            const auto opening = relation ? relation->m_RelatedOpeningElement : nullptr;
            if (!opening || !opening->m_Representation) continue;
            host->m_HasOpenings_inverse = {weakRelation};
            CutOpening(element, host, opening, data);
        }
        host->m_HasOpenings_inverse = openings;
    }

    void CutOpening(const IfcProduct& element, const std::shared_ptr<IfcElement>& host,
                    const std::shared_ptr<IfcFeatureElementSubtraction>& opening,
                    std::shared_ptr<ProductShapeData>& data) {
        const bool closed = AnyHas(*data, &ItemShapeData::m_meshsets);
        if (!closed && !AnyHas(*data, &ItemShapeData::m_meshsets_open)) return;
        const std::string what = NameOf(*opening) + " could not be cut out of " + NameOf(element);
        bool failed = false;
        const BooleanStep step([&](int) { failed = true; });
        Try(element, [&] { converter.getRepresentationConverter()->subtractOpenings(host, data); });
        if (failed) {
            Warn(what + ": it is left closed");
        } else if (!closed) {
            if (ReachesInto(opening, *data)) Warn(what + ", whose surface is not closed");
        } else if (step.Count() == 0) {
            Warn(what + ": the opening has no closed body");
        }
    }

    /// Whether an opening is where something has been made of its host: by a millimetre at least,
    /// or by all of a host that is thinner.
    bool ReachesInto(const std::shared_ptr<IfcFeatureElementSubtraction>& opening,
                     ProductShapeData& host) {
        auto data = std::make_shared<ProductShapeData>(opening->m_entity_id);
        data->m_ifc_object_definition = opening;
        carve::math::Matrix toHost;
        Try(*opening, [&] {
            converter.convertIfcProductShape(data);
            GeomUtils::computeInverse(host.getTransform(), toHost);
        });
        const SolidBox whole = BoxOf(host, carve::math::Matrix::IDENT());
        const SolidBox shared = whole.Overlap(BoxOf(*data, toHost * data->getTransform()));
        for (unsigned int axis = 0; axis < 3; ++axis) {
            const double enough = std::min(0.001, whole.high[axis] - whole.low[axis]);
            if (shared.high[axis] - shared.low[axis] < enough) return false;
        }
        return true;
    }

    void AddItem(ItemShapeData& item, const std::vector<StyledLook>& looks, ModelShape& shape) {
        ShapePart part;
        const auto look = std::find_if(looks.begin(), looks.end(),
                                       [](const StyledLook& l) { return l.colour.has_value(); });
        if (look != looks.end()) {
            part.colour = look->colour;
            part.styleName = look->styleName;
        }
        AddMeshes(item.m_meshsets, part);
        AddMeshes(item.m_meshsets_open, part);
        shape.parts.push_back(std::move(part));
    }

    /// Of the first that tells a surface's colour; styles of curves, fillings and texts do not.
    StyledLook LookOf(const Appearances& appearances) const {
        const auto& entities = model->getMapIfcEntities();
        for (const auto& appearance : appearances) {
            if (!appearance) continue;
            const auto entity = entities.find(appearance->m_step_style_id);
            if (entity == entities.end()) return LookOfProperty(*appearance);
            const auto style = std::dynamic_pointer_cast<IfcSurfaceStyle>(entity->second);
            const auto colour = style ? ColourOf(*style) : std::nullopt;
            if (colour) return {colour, TextOf(style->m_Name)};
        }
        return {};
    }

    /// Of a property called "Color", which the library reads.
    static StyledLook LookOfProperty(const AppearanceData& appearance) {
        const vec4& colour = appearance.m_color_diffuse;
        return {MakeColour(colour.r(), colour.g(), colour.b(), appearance.m_transparency), {}};
    }

    StyledLook LookOf(const std::vector<IfcMaterialUse>& materials) {
        for (const IfcMaterialUse& use : materials) {
            for (const auto& weakShown : use.material->m_HasRepresentation_inverse) {
                const auto shown = weakShown.lock();
                if (!shown) continue;
                StyledLook look = LookOf(AppearancesOf(*shown));
                if (look.colour) return look;
            }
        }
        return {};
    }

    Appearances AppearancesOf(const IfcMaterialDefinitionRepresentation& shown) {
        Appearances appearances;
        for (const auto& representation : shown.m_Representations) {
            if (!representation) continue;
            for (const auto& item : representation->m_Items) {
                const auto styled = std::dynamic_pointer_cast<IfcStyledItem>(item);
                if (!styled) continue;
                Try(*styled, [&] {
                    const auto& styles =
                        converter.getRepresentationConverter()->getStylesConverter();
                    styles->convertIfcStyledItem(styled, appearances);
                });
            }
        }
        return appearances;
    }

    /// One entity's failure must not cost the others.
    template <typename Work>
    void Try(const BuildingEntity& entity, const Work& work) {
        try {
            const SteadyMemory steady;
            work();
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const carve::exception& error) {
            Warn('#' + std::to_string(entity.m_entity_id) + ": " + error.str());
        } catch (const std::exception& error) {
            Warn('#' + std::to_string(entity.m_entity_id) + ": " + error.what());
        }
    }

    void Warn(const std::string& text) const { report.warn(text); }

    static void TakeMessage(void* self, std::shared_ptr<StatusCallback::Message> message) {
        const auto type = message->m_message_type;
        const bool matters = type == StatusCallback::MESSAGE_TYPE_WARNING ||
                             type == StatusCallback::MESSAGE_TYPE_ERROR;
        if (!matters) return;
        const auto* maker = static_cast<Maker*>(self);
        const std::string text = Narrow(message->m_message_text);
        const auto* entity = message->m_entity;
        maker->Warn(entity ? '#' + std::to_string(entity->m_entity_id) + ": " + text : text);
    }

    std::shared_ptr<BuildingModel> model;
    double tolerance;
    const ImportReport& report;
    GeometryConverter converter;
};

IfcShapes::IfcShapes(const std::shared_ptr<BuildingModel>& model, double tolerance,
                     const ImportReport& report) {
    const SteadyMemory steady;
    maker = std::make_unique<Maker>(model, tolerance, report);
}

IfcShapes::~IfcShapes() = default;

IfcShapes::Body IfcShapes::BodyOf(const std::shared_ptr<IfcProduct>& product,
                                  const std::vector<IfcMaterialUse>& materials) {
    return maker->BodyOf(product, materials);
}

}  // namespace ZVSmartModel
