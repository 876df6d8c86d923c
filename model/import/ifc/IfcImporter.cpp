#include "model/import/ifc/IfcImporter.h"

#include <ifcpp/IFC4/EntityFactory.h>
#include <ifcpp/IFC4/include/IfcGrid.h>
#include <ifcpp/IFC4/include/IfcObjectPlacement.h>
#include <ifcpp/IFC4/include/IfcProduct.h>
#include <ifcpp/IFC4/include/IfcProductRepresentation.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/UnitConverter.h>
#include <ifcpp/reader/ReaderSTEP.h>

#include <memory>
#include <set>

#include "model/import/ShapeStore.h"
#include "model/import/ifc/IfcGrids.h"
#include "model/import/ifc/IfcLosses.h"
#include "model/import/ifc/IfcMaterials.h"
#include "model/import/ifc/IfcObjects.h"
#include "model/import/ifc/IfcPlanCurves.h"
#include "model/import/ifc/IfcRepairs.h"
#include "model/import/ifc/IfcShapes.h"
#include "model/import/ifc/IfcStructure.h"
#include "model/import/ifc/IfcUnitSymbols.h"
#include "model/import/ifc/SteadyMemory.h"
#include "model/import/ifc/StepText.h"

namespace ZVSmartModel {

namespace {

void PassOn(void* losses, std::shared_ptr<StatusCallback::Message> message) {
    const auto type = message->m_message_type;
    if (type != StatusCallback::MESSAGE_TYPE_WARNING &&
        type != StatusCallback::MESSAGE_TYPE_ERROR) {
        return;
    }
    const std::wstring& text = message->m_message_text;
    static_cast<IfcLosses*>(losses)->TakeLoadMessage({text.begin(), text.end()});
}

bool IsKnownEntity(const std::string& nameInCapitals) {
    const std::unique_ptr<BuildingEntity> entity(EntityFactory::createEntityObject(nameInCapitals));
    return entity != nullptr;
}

StepText Prepared(const std::string& bytes) {
    StepText step = PrepareStepText(bytes, IsKnownEntity);
    if (step.entityNumbersTooLarge) throw ImportError("entity numbers above 2147483647");
    if (!step.dataEnds)
        throw DamagedModel("the file is cut short or damaged: its data section does not end");
    return step;
}

std::shared_ptr<BuildingModel> Load(StepText& step, IfcLosses& losses) {
    const SteadyMemory steady;
    auto model = std::make_shared<BuildingModel>();
    ReaderSTEP reader;
    reader.setMessageCallBack(&losses, PassOn);
    reader.loadModelFromString(step.text, model);
    if (model->getMapIfcEntities().empty()) {
        throw DamagedModel("no entity can be read (schema " + step.schema + ')');
    }
    if (!model->getIfcProject()) throw ImportError("the file holds no IfcProject");
    return model;
}

/// A GlobalId that no element has yet: files that repeat one, or leave it out, lose no element.
std::wstring UniqueId(std::wstring id, int entity, std::set<std::wstring>& taken) {
    if (id.empty() || taken.count(id) != 0) id += L'#' + std::to_wstring(entity);
    taken.insert(id);
    return id;
}

/// A shape of its own, so that bodies which are the same are stored once whatever their axes.
ModelShape PlanOf(const IfcProduct& product, const IfcUnits& units) {
    ModelShape shape;
    shape.curves = PlanCurvesOf(product, units);
    if (const auto* grid = dynamic_cast<const IfcGrid*>(&product)) {
        shape.curves = AxesOf(*grid, units);
    }
    return shape;
}

/// Adds what is seen of a product.
void AddShapes(const std::shared_ptr<IfcProduct>& product, const IfcUnits& units,
               const std::vector<IfcMaterialUse>& materials, IfcShapes& bodies, ShapeStore& store,
               ModelElement& element) {
    IfcShapes::Body body = bodies.BodyOf(product, materials);
    if (!product->m_Representation) body.placement = PlaceOf(product->m_ObjectPlacement, units);
    const auto shape = store.Add(body.shape);
    if (shape) element.shapes.push_back({*shape, body.placement});
    const auto plan = store.Add(PlanOf(*product, units));
    if (plan) element.shapes.push_back({*plan, body.placement});
}

}  // namespace

Model ImportIfc(std::string bytes, const ImportOptions& options, const ImportReport& report) {
    StepText step = Prepared(bytes);
    std::string().swap(bytes);
    Model model;
    IfcLosses losses(model.findings);
    losses.TakeText(step);
    const std::shared_ptr<BuildingModel> source = Load(step, losses);
    std::string().swap(step.text);
    const auto objects = ObjectsOf(*source);
    if (!AnyContent(objects)) throw ImportError("no building element (schema " + step.schema + ')');

    const double unit = source->getUnitConverter()->getLengthInMeterFactor();
    const IfcUnits units = {unit, source->getUnitConverter()->getAngleInRadiantFactor()};
    const IfcUnitSymbols symbols(*source->getIfcProject());
    const IfcStructure structure(*source, unit);
    RepairForShapes(*source);
    const ImportReport bodyReport = {
        [&losses](const std::string& text) { losses.TakeBodyMessage(text); }, report.progress};
    IfcShapes bodies(source, options.tolerance, bodyReport);
    ShapeStore store;
    PropertyOrder order;
    std::set<std::wstring> takenIds;
    model.schema.assign(step.schema.begin(), step.schema.end());
    for (const auto& object : objects) {
        report.progress(static_cast<double>(model.elements.size()) /
                        static_cast<double>(objects.size()));
        ModelElement element = Described(*object, step, symbols, order, losses);
        element.globalId = UniqueId(element.globalId, object->m_entity_id, takenIds);
        structure.Place(*object, element);
        losses.Begin(element);
        const auto materials = MaterialUsesOf(*object);
        for (const auto& use : materials) {
            element.materials.push_back(MaterialOf(use, unit, symbols));
        }
        const auto product = std::dynamic_pointer_cast<IfcProduct>(object);
        if (product) AddShapes(product, units, materials, bodies, store, element);
        losses.End(element, product.get());
        model.elements.push_back(std::move(element));
    }
    model.storeys = structure.storeys;
    model.buildings = structure.buildings;
    model.shapes = store.Take();
    return model;
}

}  // namespace ZVSmartModel
