#pragma once
// Each export family's device type, by the family's name: the export layer
// finds a family's model through these names.

#include "models/alpha_panels.h"
#include "models/autopilot_panels.h"
#include "models/engine_ctl.h"
#include "models/engine_start.h"
#include "models/gear2_panel.h"
#include "models/gear_panel.h"
#include "models/io_board.h"
#include "models/keypad.h"
#include "models/knob_panel.h"
#include "models/map_ctl.h"
#include "models/radio_panel.h"
#include "models/squawk_panel.h"
#include "models/switch_panels.h"
#include "models/throttle.h"
#include "models/warning_panel.h"

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
using PelmKnobs = cPelmKnobs;
using PelmGear = cPelmGear;
using PelmKeypad = cPelmKeypad;
using PelmIoBoard = cPelmIoBoard;
using PelmGear2 = cPelmGear2;
using PelmWarning = cPelmWarning;

}  // namespace pelm::families
