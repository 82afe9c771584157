#pragma once
// Each export family's device type, by the family's name: the export layer
// finds a family's model through these names.

#include "models/alpha_panels.h"
#include "models/autopilot_panels.h"
#include "models/engine_ctl.h"
#include "models/engine_start.h"
#include "models/map_ctl.h"
#include "models/radio_panel.h"
#include "models/squawk_panel.h"
#include "models/switch_panels.h"
#include "models/throttle.h"

namespace pelm::families {

using PelmButtons = cPelmButtons;
using PelmToggles = cPelmToggles;
using PelmEngineStart = cPelmEngineStart;
using PelmRadio = cPelmRadio;
using PelmAlpha = cPelmAlpha;
using PelmAlpha2 = cPelmAlpha2;
using PelmSquawk = cPelmSquawk;
using PelmAutopilot = cPelmAutopilot;
using PelmAutopilot2 = cPelmAutopilot2;
using PelmMapCtl = cPelmMapCtl;
using PelmThrottle = cPelmThrottle;
using PelmEngineCtl = cPelmEngineCtl;

}  // namespace pelm::families
