#include "tools/zvg/import/IfcImporter.h"

#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcProject.h>
#include <ifcpp/IFC4/include/IfcRelDefinesByType.h>
#include <ifcpp/IFC4/include/IfcTypeObject.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/UnitConverter.h>
#include <ifcpp/reader/ReaderSTEP.h>

#include <cstring>
#include <set>

#include "tools/zvg/import/ShapeStore.h"
#include "tools/zvg/import/StepText.h"
#include "tools/zvg/import/ifc/IfcMaterials.h"
#include "tools/zvg/import/ifc/IfcPlanCurves.h"
#include "tools/zvg/import/ifc/IfcProperties.h"
#include "tools/zvg/import/ifc/IfcRepairs.h"
#include "tools/zvg/import/ifc/IfcShapes.h"
#include "tools/zvg/import/ifc/IfcStructure.h"
#include "tools/zvg/import/ifc/Texts.h"

namespace {

void PassOn(void* report, std::shared_ptr<StatusCallback::Message> message) {
    const auto type = message->m_message_type;
    if (type != StatusCallback::MESSAGE_TYPE_WARNING &&
        type != StatusCallback::MESSAGE_TYPE_ERROR) {
        return;
    }
    const std::wstring& text = message->m_message_text;
    static_cast<const ImportReport*>(report)->warn({text.begin(), text.end()});
}

StepText Prepared(const std::string& bytes) {
    StepText step = PrepareStepText(bytes);
    if (step.entityNumbersTooLarge) throw ImportError("entity numbers above 2147483647");
    if (!step.dataEnds)
        throw ImportError("the file is cut short or damaged: its data section does not end");
    return step;
}

std::shared_ptr<BuildingModel> Load(StepText& step, const ImportReport& report) {
    auto model = std::make_shared<BuildingModel>();
    ReaderSTEP reader;
    // The library's callback takes no pointer to const, and passes it on untouched.
    reader.setMessageCallBack(const_cast<ImportReport*>(&report), PassOn);
    reader.loadModelFromString(step.text, model);
    if (model->getMapIfcEntities().empty()) {
        throw ImportError("no entity can be read (schema " + step.schema + ')');
    }
    if (!model->getIfcProject()) throw ImportError("the file holds no IfcProject");
    return model;
}

std::vector<std::shared_ptr<IfcElement>> ElementsOf(const BuildingModel& model) {
    std::vector<std::shared_ptr<IfcElement>> elements;
    for (const auto& [id, entity] : model.getMapIfcEntities()) {
        const auto element = std::dynamic_pointer_cast<IfcElement>(entity);
        const bool opening =
            std::dynamic_pointer_cast<IfcFeatureElementSubtraction>(entity) != nullptr;
        if (element && !opening) elements.push_back(element);
    }
    return elements;
}

std::shared_ptr<IfcTypeObject> TypeOf(const IfcElement& element) {
    for (const auto& weakRelation : element.m_IsTypedBy_inverse) {
        const auto relation = weakRelation.lock();
        if (relation && relation->m_RelatingType) return relation->m_RelatingType;
    }
    return nullptr;
}

/// A GlobalId that no element has yet: files that repeat one, or leave it out, lose no element.
std::wstring UniqueId(const IfcElement& element, std::set<std::wstring>& taken) {
    std::wstring id = TextOf(element.m_GlobalId);
    if (id.empty() || taken.count(id) != 0) id += L'#' + std::to_wstring(element.m_entity_id);
    taken.insert(id);
    return id;
}

ModelElement Described(const IfcElement& source) {
    ModelElement element;
    element.entityType.assign(source.className(),
                              source.className() + std::strlen(source.className()));
    const auto type = TypeOf(source);
    if (type) element.typeName = TextOf(type->m_Name);
    if (element.typeName.empty()) element.typeName = TextOf(source.m_ObjectType);
    element.predefinedType = EnumeratorOf(source, "PredefinedType");
    if (element.predefinedType.empty() && type) {
        element.predefinedType = EnumeratorOf(*type, "PredefinedType");
    }
    element.properties = PropertiesOf(source);
    return element;
}

/// A shape of its own, so that bodies which are the same are stored once whatever their axes.
Shape PlanOf(const IfcElement& element, const IfcUnits& units) {
    Shape shape;
    shape.curves = PlanCurvesOf(element, units);
    return shape;
}

}  // namespace

Model ImportIfc(std::string bytes, const ImportOptions& options, const ImportReport& report) {
    StepText step = Prepared(bytes);
    std::string().swap(bytes);
    const std::shared_ptr<BuildingModel> source = Load(step, report);
    std::string().swap(step.text);
    const auto elements = ElementsOf(*source);
    if (elements.empty()) throw ImportError("no building element (schema " + step.schema + ')');

    const double unit = source->getUnitConverter()->getLengthInMeterFactor();
    const IfcUnits units = {unit, source->getUnitConverter()->getAngleInRadiantFactor()};
    const IfcStructure structure(*source, unit);
    RepairForShapes(*source);
    IfcShapes bodies(source, options.tolerance, report);
    ShapeStore store;
    std::set<std::wstring> takenIds;
    Model model;
    model.schema.assign(step.schema.begin(), step.schema.end());
    for (const auto& sourceElement : elements) {
        report.progress(static_cast<double>(model.elements.size()) /
                        static_cast<double>(elements.size()));
        ModelElement element = Described(*sourceElement);
        element.globalId = UniqueId(*sourceElement, takenIds);
        structure.Place(*sourceElement, element);
        const auto materials = MaterialUsesOf(*sourceElement);
        for (const auto& use : materials) element.materials.push_back(MaterialOf(use, unit));
        IfcShapes::Body body = bodies.BodyOf(sourceElement, materials);
        const auto shape = store.Add(std::move(body.shape));
        if (shape) element.shapes.push_back({*shape, body.placement});
        const auto plan = store.Add(PlanOf(*sourceElement, units));
        if (plan) element.shapes.push_back({*plan, body.placement});
        model.elements.push_back(std::move(element));
    }
    model.storeys = structure.storeys;
    model.buildings = structure.buildings;
    model.shapes = store.Take();
    return model;
}
