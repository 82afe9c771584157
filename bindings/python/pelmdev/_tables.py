"""Written by write_tables.py from the C headers; do not edit."""

# Status code: (name, what it means).
STATUSES = {
    0: ('PELM_SUCCESS', 'done'),
    1: ('PELM_ERR_INDEX', 'device index outside 0 to slot count minus 1'),
    2: ('PELM_ERR_NOMEM', 'a report buffer could not be allocated'),
    3: ('PELM_ERR_NODEVICE', 'the slot is empty, or its device is not connected'),
    4: ('PELM_ERR_QUEUE', "the device's output report queue refused the report"),
    5: ('PELM_ERR_IO', 'a feature-report transfer with the device failed'),
    11: ('PELM_ERR_PARAM', 'an argument is invalid'),
    13: ('PELM_ERR_UNSUPPORTED', 'the model has no such function'),
}

# Family: (model type code, ((operation, ((kind, C type, name), ...)), ...)).
FAMILIES = {
    'PelmButtons': (2, (
        ('GetSwitchVals', (('out', 'uint8_t', 'switches'),)),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmToggles': (3, (
        ('GetSwitchVals', (('out', 'uint8_t', 'switches'),)),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmKnobs': (7, (
        ('GetControlVals', (('out', 'int16_t', 'knob1'), ('out', 'int16_t', 'knob2'), ('out', 'int16_t', 'knob3'), ('out', 'int16_t', 'knob4'), ('out', 'uint8_t', 'switches'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmGear': (4, (
        ('GetControlVals', (('out', 'int16_t', 'value'), ('out', 'uint8_t', 'control'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmKeypad': (15, (
        ('GetKeycodes', (('out', 'uint8_t', 'keys'), ('out', 'uint32_t', 'count'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint32_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmGear2': (11, (
        ('GetControlVals', (('out', 'int16_t', 'value1'), ('out', 'int16_t', 'value2'), ('out', 'int16_t', 'value3'), ('out', 'uint8_t', 'control'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
    )),
    'PelmWarning': (18, (
        ('GetControlVals', (('out', 'uint8_t', 'control'),)),
        ('GetBrightness', (('out', 'int32_t', 'level'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('GetIndColor', (('in', 'uint32_t', 'indicator'), ('out', 'uint8_t', 'component1'), ('out', 'uint8_t', 'component2'), ('out', 'uint8_t', 'component3'))),
        ('SetIndColor', (('in', 'uint32_t', 'indicator'), ('in', 'uint32_t', 'component1'), ('in', 'uint32_t', 'component2'), ('in', 'uint32_t', 'component3'))),
        ('GetIndColorValue', (('in', 'uint32_t', 'indicator'), ('out', 'uint8_t', 'colorIndex'))),
        ('SetIndColorValue', (('in', 'uint32_t', 'indicator'), ('in', 'uint32_t', 'colorIndex'))),
    )),
    'PelmIoBoard': (19, (
        ('GetSwitchVals', (('out', 'uint8_t', 'input1'), ('out', 'uint8_t', 'input2'), ('out', 'uint8_t', 'input3'), ('out', 'uint8_t', 'input4'), ('out', 'uint8_t', 'input5'), ('out', 'uint8_t', 'input6'), ('out', 'uint8_t', 'input7'))),
        ('SetIndicators', (('in', 'uint32_t', 'output1'), ('in', 'uint32_t', 'output2'), ('in', 'uint32_t', 'output3'), ('in', 'uint32_t', 'output4'))),
        ('GetIndicators', (('in', 'uint32_t', 'unused1'), ('in', 'uint32_t', 'unused2'), ('in', 'uint32_t', 'unused3'), ('in', 'uint32_t', 'unused4'))),
        ('GetBrightness', (('in', 'uint32_t', 'unused'),)),
        ('SetBrightness', (('in', 'uint32_t', 'unused'),)),
    )),
    'PelmEngineStart': (17, (
        ('GetControlVals', (('out', 'uint8_t', 'selector1'), ('out', 'uint8_t', 'selector2'), ('out', 'uint8_t', 'selector3'))),
    )),
    'PelmRadio': (5, (
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('GetControlVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'), ('out', 'uint8_t', 'switches'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetLDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetLDisplayText', (('text', 'char', 'text'),)),
        ('SetRDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetRDisplayText', (('text', 'char', 'text'),)),
    )),
    'PelmAlpha': (1, (
        ('GetDialVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'))),
        ('SetAlpha', (('text', 'char', 'text'),)),
        ('SetAlphaSegments', (('array', 'uint16_t', 'glyphs'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetNumeric', (('text', 'char', 'text'),)),
        ('SetNumericSegments', (('array', 'uint8_t', 'segments'),)),
    )),
    'PelmAlpha2': (8, (
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('GetControlVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'), ('out', 'uint8_t', 'switches'))),
        ('SetAlpha', (('text', 'char', 'text'),)),
        ('SetAlphaSegments', (('array', 'uint16_t', 'glyphs'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetNumeric', (('text', 'char', 'text'),)),
        ('SetNumericSegments', (('array', 'uint8_t', 'segments'),)),
    )),
    'PelmSquawk': (10, (
        ('GetBrightness', (('out', 'uint32_t', 'level'),)),
        ('GetControlVals', (('out', 'int16_t', 'dial'), ('out', 'uint8_t', 'switches'))),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetDigit', (('text', 'char', 'text'),)),
        ('SetDigitSegments', (('array', 'uint8_t', 'segments'),)),
    )),
    'PelmAutopilot': (6, (
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('GetControlVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'), ('out', 'int16_t', 'dial3'), ('out', 'int16_t', 'dial4'), ('out', 'int16_t', 'dial5'), ('out', 'uint8_t', 'switches1'), ('out', 'uint8_t', 'switches2'))),
        ('GetIndicators', (('out', 'uint8_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetADisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetADisplayText', (('text', 'char', 'text'),)),
        ('SetBDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetBDisplayText', (('text', 'char', 'text'),)),
        ('SetCDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetCDisplayText', (('text', 'char', 'text'),)),
        ('SetDDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetDDisplayText', (('text', 'char', 'text'),)),
        ('SetEDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetEDisplayText', (('text', 'char', 'text'),)),
    )),
    'PelmAutopilot2': (12, (
        ('GetBrightness', (('out', 'uint16_t', 'level'),)),
        ('GetControlVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'), ('out', 'int16_t', 'dial3'), ('out', 'int16_t', 'dial4'), ('out', 'int16_t', 'dial5'), ('out', 'int16_t', 'dial6'), ('out', 'uint32_t', 'switches'))),
        ('GetIndicators', (('out', 'uint32_t', 'indicators'),)),
        ('SetBrightness', (('in', 'uint32_t', 'level'),)),
        ('SetIndicators', (('in', 'uint32_t', 'indicators'),)),
        ('SetADisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetADisplayText', (('text', 'char', 'text'),)),
        ('SetBDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetBDisplayText', (('text', 'char', 'text'),)),
        ('SetCDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetCDisplayText', (('text', 'char', 'text'),)),
        ('SetDDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetDDisplayText', (('text', 'char', 'text'),)),
        ('SetEDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetEDisplayText', (('text', 'char', 'text'),)),
        ('SetFDisplaySegments', (('array', 'uint8_t', 'segments'),)),
        ('SetFDisplayText', (('text', 'char', 'text'),)),
    )),
    'PelmMapCtl': (13, (
        ('GetControlVals', (('out', 'int16_t', 'dial1'), ('out', 'int16_t', 'dial2'), ('out', 'uint16_t', 'switches'), ('out', 'uint8_t', 'selectors'))),
    )),
    'PelmThrottle': (9, (
        ('GetControlVals', (('out', 'uint8_t', 'lever1'), ('out', 'uint8_t', 'lever2'), ('out', 'uint8_t', 'lever3'), ('out', 'uint8_t', 'lever4'), ('out', 'uint8_t', 'lever5'), ('out', 'uint8_t', 'lever6'), ('out', 'uint8_t', 'switches'))),
    )),
    'PelmEngineCtl': (14, (
        ('GetControlVals', (('out', 'uint8_t', 'selector'), ('out', 'uint8_t', 'switch1'), ('out', 'uint8_t', 'threePosition'), ('out', 'uint8_t', 'switch2'), ('out', 'uint16_t', 'switches'))),
    )),
}

# Model type code: (record name, ((field, C type, count), ...)).
INPUT_RECORDS = {
    1: ('Alpha', (('dial_vals', 'int16_t', 2),)),
    2: ('Switches', (('switch_vals', 'uint8_t', 1),)),
    3: ('Switches', (('switch_vals', 'uint8_t', 1),)),
    4: ('Gear', (('control_value', 'int16_t', 1), ('control_byte', 'uint8_t', 1))),
    5: ('Radio', (('dial_vals', 'int16_t', 2), ('switch_vals', 'uint8_t', 1))),
    6: ('Autopilot', (('dial_vals', 'int16_t', 5), ('switch_vals', 'uint8_t', 2))),
    7: ('Knobs', (('knob_counts', 'int16_t', 4), ('switch_byte', 'uint8_t', 1))),
    8: ('Alpha2', (('dial_vals', 'int16_t', 2), ('switch_vals', 'uint8_t', 1))),
    9: ('Throttle', (('axis_vals', 'uint8_t', 6), ('switch_vals', 'uint8_t', 1))),
    10: ('Squawk', (('dial_vals', 'int16_t', 1), ('switch_vals', 'uint8_t', 1))),
    11: ('Gear2', (('control_values', 'int16_t', 3), ('control_byte', 'uint8_t', 1))),
    12: ('Autopilot2', (('dial_vals', 'int16_t', 6), ('switch_vals', 'uint32_t', 1))),
    13: ('MapCtl', (('dial_vals', 'int16_t', 2), ('switch_vals', 'uint16_t', 1), ('selector_vals', 'uint8_t', 1))),
    14: ('EngineCtl', (('control_vals', 'uint8_t', 4), ('switch_vals', 'uint16_t', 1))),
    15: ('Keypad', (('key_code', 'uint8_t', 1), ('unused', 'uint8_t', 3))),
    17: ('EngineStart', (('positions', 'uint8_t', 3),)),
    18: ('Warning', (('control_byte', 'uint8_t', 1),)),
    19: ('IoBoard', (('inputs', 'uint8_t', 7),)),
}

# Constants of the C headers, without their prefixes.
MODEL_ALPHA = 1
MODEL_BUTTONS = 2
MODEL_TOGGLES = 3
MODEL_GEAR = 4
MODEL_RADIO = 5
MODEL_AUTOPILOT = 6
MODEL_KNOBS = 7
MODEL_ALPHA2 = 8
MODEL_THROTTLE = 9
MODEL_SQUAWK = 10
MODEL_GEAR2 = 11
MODEL_AUTOPILOT2 = 12
MODEL_MAPCTL = 13
MODEL_ENGINECTL = 14
MODEL_KEYPAD = 15
MODEL_ENGINESTART = 17
MODEL_WARNING = 18
MODEL_IOBOARD = 19
EVENT_ARRIVAL = 1
EVENT_REMOVAL = 2
SIM_FEATURE_REPORT = 1
SIM_OUTPUT_REPORT = 2
SIM_RADIO_LEFT = 0
SIM_RADIO_RIGHT = 1
SIM_ALPHA_TEXT = 0
SIM_ALPHA_NUMERIC = 1
SIM_SQUAWK_DIGIT = 0
SIM_AUTOPILOT_A = 0
SIM_AUTOPILOT_B = 1
SIM_AUTOPILOT_C = 2
SIM_AUTOPILOT_D = 3
SIM_AUTOPILOT_E = 4
SIM_AUTOPILOT_F = 5
SIM_FAULT_FAIL_OPENS = 1
SIM_FAULT_DENY_ACCESS = 2
SIM_FAULT_FAIL_SENDS = 3
SIM_FAULT_FAIL_READS = 4
