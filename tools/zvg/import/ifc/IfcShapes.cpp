#include "tools/zvg/import/ifc/IfcShapes.h"

// The one file that includes the geometry part of libifcplusplus, which takes the compiler most
// of a gigabyte each time. Where solids meet, the library goes through their points and faces in
// the order of their addresses, and its results differ with it: it works in steady memory.
#include <ifcpp/IFC4/include/IfcMaterial.h>
#include <ifcpp/IFC4/include/IfcMaterialDefinitionRepresentation.h>
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#include <ifcpp/model/BuildingModel.h>

#include <algorithm>
#include <new>

#include "tools/zvg/import/SteadyMemory.h"
#include "tools/zvg/import/ifc/Texts.h"

namespace {

struct Look {
    std::optional<Colour> colour;
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
std::vector<carve::triangulate::tri_idx> Triangles(const MeshSet::face_t& face, std::size_t count) {
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
    for (const auto& triangle : Triangles(face, vertices.size())) {
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

Placement PlacementOf(const carve::math::Matrix& matrix) {
    Placement placement = {};
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

}  // namespace

class IfcShapes::Maker {
  public:
    Maker(std::shared_ptr<BuildingModel> loaded, const ImportReport& report)
        : model(std::move(loaded)), report(report), converter(model) {
        converter.setMessageCallBack(this, &Maker::TakeMessage);
        carve::setEpsilon(1.5e-5 * model->getUnitConverter()->getLengthInMeterFactor());
    }

    Body BodyOf(const std::shared_ptr<IfcElement>& element,
                const std::vector<IfcMaterialUse>& materials) {
        auto data = std::make_shared<ProductShapeData>(element->m_entity_id);
        data->m_ifc_object_definition = element;
        Try(*element, [&] { converter.convertIfcProductShape(data); });
        Try(*element, [&] { CutOpeningsOfWhole(*element, data); });
        Body body;
        body.placement = PlacementOf(data->getTransform());
        const Look materialLook = LookOf(materials);
        const Look productLook = LookOf(data->getAppearances());
        for (const auto& representation : data->m_vec_representations) {
            if (!representation || IsNoBody(representation->m_representation_identifier)) continue;
            const Look representationLook =
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
    /// The parts of an assembled element lose what is cut out of the whole.
    void CutOpeningsOfWhole(const IfcElement& element, std::shared_ptr<ProductShapeData>& data) {
        for (const auto& weakRelation : element.m_Decomposes_inverse) {
            const auto relation = weakRelation.lock();
            if (!relation) continue;
            const auto whole = std::dynamic_pointer_cast<IfcElement>(relation->m_RelatingObject);
            if (whole) converter.getRepresentationConverter()->subtractOpenings(whole, data);
        }
    }

    void AddItem(ItemShapeData& item, const std::vector<Look>& looks, Shape& shape) {
        ShapePart part;
        const auto look = std::find_if(looks.begin(), looks.end(),
                                       [](const Look& l) { return l.colour.has_value(); });
        if (look != looks.end()) {
            part.colour = look->colour;
            part.styleName = look->styleName;
        }
        AddMeshes(item.m_meshsets, part);
        AddMeshes(item.m_meshsets_open, part);
        shape.parts.push_back(std::move(part));
    }

    Look LookOf(const Appearances& appearances) const {
        for (const auto& appearance : appearances) {
            const bool ofSurface =
                appearance &&
                appearance->m_apply_to_geometry_type != AppearanceData::GEOM_TYPE_CURVE &&
                appearance->m_apply_to_geometry_type != AppearanceData::GEOM_TYPE_TEXT;
            if (!ofSurface) continue;
            const vec4& colour = appearance->m_color_diffuse;
            return {MakeColour(colour.r(), colour.g(), colour.b(), appearance->m_transparency),
                    StyleName(appearance->m_step_style_id)};
        }
        return {};
    }

    std::wstring StyleName(int entity) const {
        const auto found = model->getMapIfcEntities().find(entity);
        if (found == model->getMapIfcEntities().end()) return {};
        const auto style = std::dynamic_pointer_cast<IfcPresentationStyle>(found->second);
        return style ? TextOf(style->m_Name) : std::wstring();
    }

    Look LookOf(const std::vector<IfcMaterialUse>& materials) {
        for (const IfcMaterialUse& use : materials) {
            for (const auto& weakShown : use.material->m_HasRepresentation_inverse) {
                const auto shown = weakShown.lock();
                if (!shown) continue;
                Look look = LookOf(AppearancesOf(*shown));
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
            Warn(entity.m_entity_id, error.str());
        } catch (const std::exception& error) {
            Warn(entity.m_entity_id, error.what());
        }
    }

    void Warn(int entity, const std::string& text) const {
        report.warn('#' + std::to_string(entity) + ": " + text);
    }

    static void TakeMessage(void* self, std::shared_ptr<StatusCallback::Message> message) {
        const auto type = message->m_message_type;
        const bool matters = type == StatusCallback::MESSAGE_TYPE_WARNING ||
                             type == StatusCallback::MESSAGE_TYPE_ERROR;
        if (!matters) return;
        const auto* maker = static_cast<Maker*>(self);
        const std::string text = Narrow(message->m_message_text);
        if (message->m_entity) {
            maker->Warn(message->m_entity->m_entity_id, text);
        } else {
            maker->report.warn(text);
        }
    }

    std::shared_ptr<BuildingModel> model;
    const ImportReport& report;
    GeometryConverter converter;
};

IfcShapes::IfcShapes(const std::shared_ptr<BuildingModel>& model, const ImportReport& report) {
    const SteadyMemory steady;
    maker = std::make_unique<Maker>(model, report);
}

IfcShapes::~IfcShapes() = default;

IfcShapes::Body IfcShapes::BodyOf(const std::shared_ptr<IfcElement>& element,
                                  const std::vector<IfcMaterialUse>& materials) {
    return maker->BodyOf(element, materials);
}
