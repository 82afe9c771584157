#include "core/model_table.h"

#include "core/pelm_dev.h"
#include "models/model_factories.h"

namespace pelm {
namespace {

constexpr std::array<ModelDescriptor, kModelCount> kProbeOrder = {{
    {PELM_MODEL_ALPHA, "PelmAlpha", 0x0010, 16, ModelKind::FunctionBased, factories::kAlpha},
    {PELM_MODEL_ALPHA2, "PelmAlpha2", 0x0018, 16, ModelKind::FunctionBased, factories::kAlpha2},
    {PELM_MODEL_BUTTONS, "PelmButtons", 0x0020, 32, ModelKind::FunctionBased, factories::kButtons},
    {PELM_MODEL_KNOBS, "PelmKnobs", 0x0028, 32, ModelKind::FunctionBased, factories::kKnobs},
    {PELM_MODEL_WARNING, "PelmWarning", 0x002C, 32, ModelKind::ClassBased, factories::kWarning},
    {PELM_MODEL_TOGGLES, "PelmToggles", 0x0030, 32, ModelKind::FunctionBased, factories::kToggles},
    {PELM_MODEL_GEAR, "PelmGear", 0x0040, 16, ModelKind::FunctionBased, factories::kGear},
    {PELM_MODEL_GEAR2, "PelmGear2", 0x0048, 8, ModelKind::ClassBased, factories::kGear2},
    {PELM_MODEL_RADIO, "PelmRadio", 0x0050, 16, ModelKind::FunctionBased, factories::kRadio},
    {PELM_MODEL_AUTOPILOT, "PelmAutopilot", 0x0060, 4, ModelKind::FunctionBased, factories::kAutopilot},
    {PELM_MODEL_AUTOPILOT2, "PelmAutopilot2", 0x0064, 4, ModelKind::FunctionBased, factories::kAutopilot2},
    {PELM_MODEL_MAPCTL, "PelmMapCtl", 0x0300, 4, ModelKind::FunctionBased, factories::kMapCtl},
    {PELM_MODEL_SQUAWK, "PelmSquawk", 0x0070, 8, ModelKind::FunctionBased, factories::kSquawk},
    {PELM_MODEL_ENGINECTL, "PelmEngineCtl", 0x0038, 8, ModelKind::FunctionBased, factories::kEngineCtl},
    {PELM_MODEL_ENGINESTART, "PelmEngineStart", 0x003C, 8, ModelKind::ClassBased, factories::kEngineStart},
    {PELM_MODEL_KEYPAD, "PelmKeypad", 0x0074, 4, ModelKind::FunctionBased, factories::kKeypad},
    {PELM_MODEL_THROTTLE, "PelmThrottle", 0x0200, 4, ModelKind::FunctionBased, factories::kThrottle},
    {PELM_MODEL_IOBOARD, "PelmIoBoard", 0x002D, 4, ModelKind::ClassBased, factories::kIoBoard},
}};

}  // namespace

const std::array<ModelDescriptor, kModelCount>& ModelsInProbeOrder() { return kProbeOrder; }

const ModelDescriptor* ModelByTypeCode(int32_t typeCode) {
  for (const ModelDescriptor& model : kProbeOrder) {
    if (model.typeCode == typeCode) return &model;
  }
  return nullptr;
}

const ModelDescriptor* ModelByProductId(uint16_t productId) {
  for (const ModelDescriptor& model : kProbeOrder) {
    if (model.productId == productId) return &model;
  }
  return nullptr;
}

}  // namespace pelm
