/*
 * The export table: one line per exported function (or pair of calling forms),
 * with its contract. No include guard: pelm_dev.h includes it to declare the
 * exports, the library includes it again to define them, and the build reads
 * it to write the Windows module-definition file.
 *
 *   PELM_CORE_PAIR(ret, name, params, args)          name and name_stdcall, same behaviour
 *   PELM_CORE_SINGLE(ret, form, name, params, args)  one function of one calling form
 *   PELM_MODEL_COUNT(family)                         family_GetNumDevices, both forms
 *   PELM_MODEL_OP(family, op, params, args)          family_op, both forms; device index first
 *   *_DEFAULT_ONLY                                   the default form alone
 *
 * Model operations check the device index first: outside 0 to the model's slot
 * count minus 1 they return PELM_ERR_INDEX, on an empty slot PELM_ERR_NODEVICE,
 * without touching any output variable.
 *
 * Threads: unless its comment says otherwise, an export may be called from any
 * thread and from inside any callback (pelm_dev.h). Model operations of one
 * device may run on several threads at once; a setter queues its report for
 * the device's writer and returns without waiting for the transfer, a getter
 * that reads a feature report waits for it on the calling thread.
 */

/* ---- Library ---------------------------------------------------------- */

/* Closes whatever a previous Init opened and forgets every callback, then opens
 * every panel present. A non-null `instance` (the host's module instance) turns
 * hot-plug notification on. 0; the GetNumDevices functions tell what was found.
 * Register callbacks after Init. From inside a callback: 1, nothing done. */
PELM_CORE_PAIR(uint32_t, PelmDev_Init, (void* instance), (instance))
/* Stops notification, forgets every callback and closes every device, waiting
 * for running input and wakeup callbacks; on return no thread of the library
 * runs. 0; from inside a callback 1, nothing done. */
PELM_CORE_PAIR(uint32_t, PelmDev_Terminate, (void), ())

/* Describes the device in slot `deviceIndex` of model `modelType`: its path
 * (upper-case) and HID version number. PELM_SUCCESS without writing anything
 * for a type code that names no model; PELM_ERR_INDEX outside the model's
 * slots; PELM_ERR_NODEVICE for an empty slot (an unplugged device still in its
 * slot is described); PELM_ERR_PARAM for a null or unwritable record. No
 * device transfer. Only the path's bytes up to its terminator are written. */
PELM_CORE_PAIR(int32_t, PelmDev_GetDeviceInfo, (int32_t modelType, int32_t deviceIndex, PelmDevInfo* info),
               (modelType, deviceIndex, info))
/* As PelmDev_GetDeviceInfo, with the serial number (empty for models that do
 * not read one) and, for the class-based models (types 11, 17, 18, 19), the
 * output report length; the field keeps the host's value for the others. The
 * host sets structSize to sizeof(PelmDevInfo2) (331) first: any other size gives
 * PELM_SUCCESS without writing. The record must be writable for 331 bytes.
 * Default form only. */
PELM_CORE_SINGLE(int32_t, PELM_CDECL, PelmDev_GetDeviceInfo2,
                 (int32_t modelType, int32_t deviceIndex, PelmDevInfo2* info), (modelType, deviceIndex, info))

/* Connect callback: (model type, device index, PELM_EVENT_ARRIVAL or _REMOVAL)
 * on the thread that called PelmDev_Init. 1 when stored; 0 for null (the
 * registered one stays). Each form has its own slot; both are called, default
 * form first. */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_RegisterConnectCallback, (PelmConnectCallback callback), (callback))
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_RegisterConnectCallback_stdcall,
                 (PelmConnectCallbackStdcall callback), (callback))
/* 1 when the own form's connect callback was set and is now cleared, else 0.
 * Returns once no connect callback runs (but for a call from inside one). */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_UnregisterConnectCallback, (void), ())
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_UnregisterConnectCallback_stdcall, (void), ())

/* Input callback: (model type, device index, record) after every input report,
 * on the device's reader thread, serialised across devices and processes by a
 * named mutex; an event whose callback cannot start within 1000 ms is dropped.
 * Registering one form replaces the other. 1 when stored; 0 for null or when
 * the mutex cannot be created. */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_RegisterInputCallback, (PelmInputCallback callback), (callback))
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_RegisterInputCallback_stdcall,
                 (PelmInputCallbackStdcall callback), (callback))
/* 1 when the own form's input callback was set and is now cleared, else 0.
 * Returns once no input callback runs (but for a call from inside one). */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_UnregisterInputCallback, (void), ())
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_UnregisterInputCallback_stdcall, (void), ())

/* Wakeup callback: called every `intervalMs` milliseconds on the library's
 * wakeup thread (default form first when both are set); the first call comes
 * one interval after registration. 0 for a null callback or an interval of 0
 * or -1; else 1. A later registration changes the shared interval from the
 * next cycle on. */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_RegisterWakeupCallback,
                 (PelmWakeupCallback callback, int32_t intervalMs), (callback, intervalMs))
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_RegisterWakeupCallback_stdcall,
                 (PelmWakeupCallbackStdcall callback, int32_t intervalMs), (callback, intervalMs))
/* Either form stops the wakeup calls of both forms at once and returns once no
 * wakeup callback runs (but for a call from inside one); 1 when the own form's
 * callback was set (it is cleared), else 0. */
PELM_CORE_SINGLE(uint32_t, PELM_CDECL, PelmDev_UnregisterWakeupCallback, (void), ())
PELM_CORE_SINGLE(uint32_t, PELM_STDCALL, PelmDev_UnregisterWakeupCallback_stdcall, (void), ())

/* ---- Button panel (type 2) and toggle panel (type 3), 32 slots each --------- */

PELM_MODEL_COUNT(PelmButtons)
/* Writes the switch bit mask of the latest input report (or of the open-time
 * read). No device transfer. PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmButtons, GetSwitchVals, (uint8_t* switches), (switches))
/* Reads the indicator mask back from the device: PELM_ERR_IO when the read
 * fails (the variable is then untouched). */
PELM_MODEL_OP(PelmButtons, GetIndicators, (uint8_t* indicators), (indicators))
/* Reads the brightness level back from the device. */
PELM_MODEL_OP(PelmButtons, GetBrightness, (uint16_t* level), (level))
/* Queues the indicator mask (low byte). PELM_ERR_QUEUE when 25 reports wait. */
PELM_MODEL_OP(PelmButtons, SetIndicators, (uint32_t indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmButtons, SetBrightness, (uint32_t level), (level))

PELM_MODEL_COUNT(PelmToggles)
PELM_MODEL_OP(PelmToggles, GetSwitchVals, (uint8_t* switches), (switches))
PELM_MODEL_OP(PelmToggles, GetIndicators, (uint8_t* indicators), (indicators))
PELM_MODEL_OP(PelmToggles, GetBrightness, (uint16_t* level), (level))
PELM_MODEL_OP(PelmToggles, SetIndicators, (uint32_t indicators), (indicators))
PELM_MODEL_OP(PelmToggles, SetBrightness, (uint32_t level), (level))

/* ---- Knob panel (type 7), 32 slots ----------------------------------------- */

PELM_MODEL_COUNT(PelmKnobs)
/* Writes the count of each knob's latest report (-128 to 127) and clears it, so
 * a count is handed out once; then the switch byte, which is not cleared. A
 * null or unwritable pointer is skipped and its knob keeps its count. No device
 * transfer. The input callback's record: four counts as little-endian 16-bit
 * integers, then the switch byte (9 bytes). */
PELM_MODEL_OP(PelmKnobs, GetControlVals,
              (int16_t* knob1, int16_t* knob2, int16_t* knob3, int16_t* knob4, uint8_t* switches),
              (knob1, knob2, knob3, knob4, switches))
/* Reads the indicator byte back from the device: PELM_ERR_IO when the read
 * fails (the variable is then untouched). PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmKnobs, GetIndicators, (uint8_t* indicators), (indicators))
/* Reads the brightness level back from the device. */
PELM_MODEL_OP(PelmKnobs, GetBrightness, (uint16_t* level), (level))
/* Reads the indicators back, then queues the new byte (low byte). PELM_ERR_QUEUE
 * when 25 reports wait; otherwise the read-back's status: PELM_ERR_IO when it
 * failed, although the new byte is queued then too. */
PELM_MODEL_OP(PelmKnobs, SetIndicators, (uint32_t indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmKnobs, SetBrightness, (uint32_t level), (level))

/* ---- Gear panel (type 4), 16 slots ------------------------------------------ */

PELM_MODEL_COUNT(PelmGear)
/* Writes the latest report's control value (-128 to 127) and clears it, written
 * or not; then the control byte, which is not cleared. A null or unwritable
 * pointer is skipped. No device transfer. The input callback's record: the
 * value as a little-endian 16-bit integer, then the control byte (3 bytes). */
PELM_MODEL_OP(PelmGear, GetControlVals, (int16_t* value, uint8_t* control), (value, control))
/* Reads the indicator byte back from the device: PELM_ERR_IO when the read
 * fails (the variable is then untouched). PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmGear, GetIndicators, (uint8_t* indicators), (indicators))
/* Reads the brightness level back from the device. */
PELM_MODEL_OP(PelmGear, GetBrightness, (uint16_t* level), (level))
/* Queues the indicator byte (low byte) with bits 0 and 1 always set.
 * PELM_ERR_QUEUE when 25 reports wait. */
PELM_MODEL_OP(PelmGear, SetIndicators, (uint32_t indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmGear, SetBrightness, (uint32_t level), (level))

/* ---- Keyboard unit (type 15), 4 slots --------------------------------------- */

PELM_MODEL_COUNT(PelmKeypad)
/* Fills `keys` (four bytes) with the non-zero key codes that the unit reported
 * when it was opened, then zeros, and sets `count` to how many are valid. The
 * same every call. PELM_ERR_PARAM for a null pointer. Key presses come through
 * the input callback alone: its record is the key code and three zero bytes. */
PELM_MODEL_OP(PelmKeypad, GetKeycodes, (uint8_t* keys, uint32_t* count), (keys, count))
/* Reads the indicator byte back from the device: PELM_ERR_IO when the read
 * fails (the variable is then untouched). PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmKeypad, GetIndicators, (uint8_t* indicators), (indicators))
/* Reads the brightness level back from the device, widened to 32 bits. */
PELM_MODEL_OP(PelmKeypad, GetBrightness, (uint32_t* level), (level))
/* Queues the indicator byte (low byte). PELM_ERR_QUEUE when 25 reports wait. */
PELM_MODEL_OP(PelmKeypad, SetIndicators, (uint32_t indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmKeypad, SetBrightness, (uint32_t level), (level))

/* ---- Second gear panel (type 11), 8 slots ----------------------------------- */

PELM_MODEL_COUNT(PelmGear2)
/* Writes the latest report's three control values (-128 to 127) and clears
 * them, written or not; then the control byte, which is not cleared. A null or
 * unwritable pointer is skipped. No device transfer. The input callback's
 * record: three little-endian 16-bit values, then the control byte (7 bytes). */
PELM_MODEL_OP(PelmGear2, GetControlVals, (int16_t* value1, int16_t* value2, int16_t* value3, uint8_t* control),
              (value1, value2, value3, control))
/* Reads the indicator byte back from the device: PELM_ERR_IO when the read
 * fails (the variable is then untouched). PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmGear2, GetIndicators, (uint8_t* indicators), (indicators))
/* Reads the brightness level back from the device. */
PELM_MODEL_OP(PelmGear2, GetBrightness, (uint16_t* level), (level))
/* Queues the indicator byte (low byte). PELM_ERR_QUEUE when 100 reports wait. */
PELM_MODEL_OP(PelmGear2, SetIndicators, (uint32_t indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmGear2, SetBrightness, (uint32_t level), (level))

/* ---- Warning panel (type 18), 32 slots -------------------------------------- */
/* Indicators are numbered 1 to 6 by the low byte of their argument; another
 * number gives PELM_ERR_PARAM. Colour indices run 0 (dark) to 7. */

PELM_MODEL_COUNT(PelmWarning)
/* Writes the control byte if the pointer is writable; PELM_SUCCESS either way.
 * The input callback's record is the control byte (1 byte). */
PELM_MODEL_OP(PelmWarning, GetControlVals, (uint8_t* control), (control))
/* Writes the brightness level (15 after open). PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmWarning, GetBrightness, (int32_t* level), (level))
/* Stores the level (low 16 bits; neither clamped nor refused) and sends every
 * indicator again in its colour index at the new level, whose components are
 * level / 15 * 100 (wrapping in eight bits above 100). PELM_SUCCESS always;
 * nothing happens when the panel is not connected. */
PELM_MODEL_OP(PelmWarning, SetBrightness, (uint32_t level), (level))
/* Writes the indicator's last sent components, each where its pointer is writable. */
PELM_MODEL_OP(PelmWarning, GetIndColor,
              (uint32_t indicator, uint8_t* component1, uint8_t* component2, uint8_t* component3),
              (indicator, component1, component2, component3))
/* Queues the three components (low bytes) as given, without brightness
 * scaling, and stores them; the colour index is unchanged. PELM_ERR_QUEUE when
 * 100 reports wait (the stored components are then unchanged). */
PELM_MODEL_OP(PelmWarning, SetIndColor,
              (uint32_t indicator, uint32_t component1, uint32_t component2, uint32_t component3),
              (indicator, component1, component2, component3))
/* Writes the indicator's colour index if the pointer is writable. */
PELM_MODEL_OP(PelmWarning, GetIndColorValue, (uint32_t indicator, uint8_t* colorIndex), (indicator, colorIndex))
/* Sets the colour index (low byte) and queues its components at the current
 * brightness. PELM_SUCCESS, also when the report could not be queued; an index
 * of 8 or more changes and sends nothing. */
PELM_MODEL_OP(PelmWarning, SetIndColorValue, (uint32_t indicator, uint32_t colorIndex), (indicator, colorIndex))

/* ---- I/O board (type 19), 4 slots; default calling form only ---------------- */

PELM_MODEL_COUNT_DEFAULT_ONLY(PelmIoBoard)
/* Writes input bytes 1 to 7 of the latest input report (or of the open-time
 * read) in order. PELM_SUCCESS with nothing written when the first pointer is
 * null or unwritable; otherwise PELM_ERR_PARAM, with nothing written, when any
 * other pointer is null. Nothing is reset. The input callback's record is the
 * seven input bytes. */
PELM_MODEL_OP_DEFAULT_ONLY(PelmIoBoard, GetSwitchVals,
                           (uint8_t* input1, uint8_t* input2, uint8_t* input3, uint8_t* input4, uint8_t* input5,
                            uint8_t* input6, uint8_t* input7),
                           (input1, input2, input3, input4, input5, input6, input7))
/* Queues the four output bytes (low bytes) in a report as long as the board's
 * output report. PELM_ERR_PARAM for a board whose output report cannot hold
 * them; PELM_ERR_QUEUE when 100 reports wait. */
PELM_MODEL_OP_DEFAULT_ONLY(PelmIoBoard, SetIndicators, (uint32_t output1, uint32_t output2, uint32_t output3,
                                                       uint32_t output4),
                           (output1, output2, output3, output4))
/* The board has none of these: PELM_ERR_UNSUPPORTED once the index and slot
 * checks pass; the further arguments are ignored. */
PELM_MODEL_OP_DEFAULT_ONLY(PelmIoBoard, GetIndicators, (uint32_t unused1, uint32_t unused2, uint32_t unused3,
                                                       uint32_t unused4),
                           (unused1, unused2, unused3, unused4))
PELM_MODEL_OP_DEFAULT_ONLY(PelmIoBoard, GetBrightness, (uint32_t unused), (unused))
PELM_MODEL_OP_DEFAULT_ONLY(PelmIoBoard, SetBrightness, (uint32_t unused), (unused))

/* ---- Engine-start module (type 17), 8 slots --------------------------------- */

PELM_MODEL_COUNT(PelmEngineStart)
/* Writes the positions of selectors 1 to 3, each only where its pointer is
 * writable. Nothing is reset; no device transfer. */
PELM_MODEL_OP(PelmEngineStart, GetControlVals, (uint8_t* selector1, uint8_t* selector2, uint8_t* selector3),
              (selector1, selector2, selector3))

/* ---- Radio panel (type 5), 16 slots ---------------------------------------- */

PELM_MODEL_COUNT(PelmRadio)
/* Writes the brightness level read back from the panel. PELM_ERR_IO when the
 * read fails (the variable is then untouched); PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmRadio, GetBrightness, (uint16_t* level), (level))
/* Writes the two dials' movement counts of the latest input report and sets
 * them to 0, and the switch bits (which stay). A null or unwritable pointer is
 * skipped, and its dial keeps its count. No device transfer. The input
 * callback's record (5 bytes): dial 1 and dial 2 (int16), switches (uint8). */
PELM_MODEL_OP(PelmRadio, GetControlVals, (int16_t* dial1, int16_t* dial2, uint8_t* switches),
              (dial1, dial2, switches))
/* Writes the indicator bits read back from the panel; as GetBrightness. */
PELM_MODEL_OP(PelmRadio, GetIndicators, (uint8_t* indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected; PELM_ERR_QUEUE when 25 reports wait. */
PELM_MODEL_OP(PelmRadio, SetBrightness, (uint32_t level), (level))
/* Queues the indicator bits (low byte). */
PELM_MODEL_OP(PelmRadio, SetIndicators, (uint32_t indicators), (indicators))
/* Queues six segment bytes for the left display, position 0 first. */
PELM_MODEL_OP(PelmRadio, SetLDisplaySegments, (const uint8_t* segments), (segments))
/* Draws the text on the left display's six positions, left to right; a point
 * lights the point of the character before it. */
PELM_MODEL_OP(PelmRadio, SetLDisplayText, (const char* text), (text))
/* As SetLDisplaySegments and SetLDisplayText, for the right display. */
PELM_MODEL_OP(PelmRadio, SetRDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmRadio, SetRDisplayText, (const char* text), (text))

/* ---- Alphanumeric panel (type 1) and second alphanumeric panel (type 8),
 *      16 slots each ---------------------------------------------------------- */

PELM_MODEL_COUNT(PelmAlpha)
/* Writes the two dials' movement counts of the latest input report and sets
 * them to 0. A null or unwritable pointer is skipped, and its dial keeps its
 * count. No device transfer. The input callback's record (4 bytes): dial 1 and
 * dial 2 (int16). */
PELM_MODEL_OP(PelmAlpha, GetDialVals, (int16_t* dial1, int16_t* dial2), (dial1, dial2))
/* Draws the text on the four sixteen-segment characters, left to right. */
PELM_MODEL_OP(PelmAlpha, SetAlpha, (const char* text), (text))
/* Queues four sixteen-segment glyph codes, position 0 first. */
PELM_MODEL_OP(PelmAlpha, SetAlphaSegments, (const uint16_t* glyphs), (glyphs))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmAlpha, SetBrightness, (uint32_t level), (level))
/* Draws the text on the numeric display, its first character on position 0
 * (5 positions; 6 on the second panel). Only digits, space, "-", "[" and "]"
 * are drawn; other characters leave their position blank. */
PELM_MODEL_OP(PelmAlpha, SetNumeric, (const char* text), (text))
/* Queues one segment byte per numeric position, position 0 first. PELM_SUCCESS
 * without sending when the device is not connected. */
PELM_MODEL_OP(PelmAlpha, SetNumericSegments, (const uint8_t* segments), (segments))

PELM_MODEL_COUNT(PelmAlpha2)
/* Writes the brightness level read back from the panel. PELM_ERR_IO when the
 * read fails (the variable is then untouched); PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmAlpha2, GetBrightness, (uint16_t* level), (level))
/* As PelmAlpha_GetDialVals, plus the switch bits, which stay. The input
 * callback's record (5 bytes): dial 1 and dial 2 (int16), switches (uint8). */
PELM_MODEL_OP(PelmAlpha2, GetControlVals, (int16_t* dial1, int16_t* dial2, uint8_t* switches),
              (dial1, dial2, switches))
PELM_MODEL_OP(PelmAlpha2, SetAlpha, (const char* text), (text))
PELM_MODEL_OP(PelmAlpha2, SetAlphaSegments, (const uint16_t* glyphs), (glyphs))
PELM_MODEL_OP(PelmAlpha2, SetBrightness, (uint32_t level), (level))
PELM_MODEL_OP(PelmAlpha2, SetNumeric, (const char* text), (text))
PELM_MODEL_OP(PelmAlpha2, SetNumericSegments, (const uint8_t* segments), (segments))

/* ---- Transponder-code panel (type 10), 8 slots ------------------------------ */

PELM_MODEL_COUNT(PelmSquawk)
/* Writes the brightness level read back from the panel as a 32-bit value.
 * PELM_ERR_IO when the read fails (the variable is then untouched);
 * PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmSquawk, GetBrightness, (uint32_t* level), (level))
/* Writes the dial's movement count of the latest input report and sets it to 0,
 * and the switch bits (which stay). A null or unwritable pointer is skipped,
 * and the dial then keeps its count. No device transfer. The input callback's
 * record (3 bytes): dial (int16), switches (uint8). */
PELM_MODEL_OP(PelmSquawk, GetControlVals, (int16_t* dial, uint8_t* switches), (dial, switches))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmSquawk, SetBrightness, (uint32_t level), (level))
/* Draws the first character of the text on the digit, its point lit when the
 * second character is ".". Only digits, "-", "[", "]" and "." are drawn. */
PELM_MODEL_OP(PelmSquawk, SetDigit, (const char* text), (text))
/* Queues one segment byte for the digit. PELM_SUCCESS without sending when the
 * device is not connected. */
PELM_MODEL_OP(PelmSquawk, SetDigitSegments, (const uint8_t* segments), (segments))

/* ---- Autopilot panel (type 6) and second autopilot panel (type 12),
 *      4 slots each ------------------------------------------------------------ */

PELM_MODEL_COUNT(PelmAutopilot)
/* Writes the brightness level read back from the panel. PELM_ERR_IO when the
 * read fails (the variable is then untouched); PELM_ERR_PARAM for a null pointer. */
PELM_MODEL_OP(PelmAutopilot, GetBrightness, (uint16_t* level), (level))
/* Writes the five dials' movement counts and sets them to 0, and the two switch
 * bytes (which stay). Until the first input report the dials are those the
 * panel reported at open. A null or unwritable pointer is skipped, and its dial
 * keeps its count. No device transfer. The input callback's record (12 bytes):
 * dials 1 to 5 (int16), switch bytes 1 and 2 (uint8). */
PELM_MODEL_OP(PelmAutopilot, GetControlVals,
              (int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4, int16_t* dial5, uint8_t* switches1,
               uint8_t* switches2),
              (dial1, dial2, dial3, dial4, dial5, switches1, switches2))
/* Writes the indicator bits read back from the panel; as GetBrightness. */
PELM_MODEL_OP(PelmAutopilot, GetIndicators, (uint8_t* indicators), (indicators))
/* Queues the brightness level (low four bits). PELM_SUCCESS without sending
 * when the device is not connected. */
PELM_MODEL_OP(PelmAutopilot, SetBrightness, (uint32_t level), (level))
/* Queues the indicator bits (low byte). */
PELM_MODEL_OP(PelmAutopilot, SetIndicators, (uint32_t indicators), (indicators))
/* Display setters: segment bytes, position 0 first, or text drawn left to
 * right, for displays A, B and C (3 positions) and D and E (6 positions). A
 * point lights the point of the character before it; a point that follows no
 * character lights on a position of its own. */
PELM_MODEL_OP(PelmAutopilot, SetADisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot, SetADisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot, SetBDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot, SetBDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot, SetCDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot, SetCDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot, SetDDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot, SetDDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot, SetEDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot, SetEDisplayText, (const char* text), (text))

PELM_MODEL_COUNT(PelmAutopilot2)
PELM_MODEL_OP(PelmAutopilot2, GetBrightness, (uint16_t* level), (level))
/* As PelmAutopilot_GetControlVals, with six dials and a 32-bit switch word.
 * The input callback's record (16 bytes): dials 1 to 6 (int16), switches
 * (uint32). */
PELM_MODEL_OP(PelmAutopilot2, GetControlVals,
              (int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4, int16_t* dial5, int16_t* dial6,
               uint32_t* switches),
              (dial1, dial2, dial3, dial4, dial5, dial6, switches))
/* Writes the indicator word of the last SetIndicators whose report was queued
 * (0 before the first); the panel is not asked. A null or unwritable pointer is
 * skipped, and the result is still PELM_SUCCESS. */
PELM_MODEL_OP(PelmAutopilot2, GetIndicators, (uint32_t* indicators), (indicators))
PELM_MODEL_OP(PelmAutopilot2, SetBrightness, (uint32_t level), (level))
/* Queues the 32-bit indicator word and remembers it once queued. */
PELM_MODEL_OP(PelmAutopilot2, SetIndicators, (uint32_t indicators), (indicators))
/* Display setters as on the first panel, for displays A and F (3 positions)
 * and B to E (5 positions). */
PELM_MODEL_OP(PelmAutopilot2, SetADisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetADisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot2, SetBDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetBDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot2, SetCDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetCDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot2, SetDDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetDDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot2, SetEDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetEDisplayText, (const char* text), (text))
PELM_MODEL_OP(PelmAutopilot2, SetFDisplaySegments, (const uint8_t* segments), (segments))
PELM_MODEL_OP(PelmAutopilot2, SetFDisplayText, (const char* text), (text))

/* ---- Display-control panel (type 13), 4 slots ------------------------------- */

PELM_MODEL_COUNT(PelmMapCtl)
/* Writes the dial counts of the latest input report (detents, signed) and sets
 * each to 0 as it is handed out, then the button bits and the selector
 * positions (first selector in bits 0-1, second in bits 4-6). Each value only
 * where its pointer is writable; a dial skipped keeps its count for a later
 * call. No device transfer. The input callback's record (7 bytes): dial 1 and
 * dial 2 (int16), buttons (uint16), selectors (uint8), of every report. */
PELM_MODEL_OP(PelmMapCtl, GetControlVals, (int16_t* dial1, int16_t* dial2, uint16_t* switches, uint8_t* selectors),
              (dial1, dial2, switches, selectors))

/* ---- Throttle quadrant (type 9), 4 slots ------------------------------------- */

PELM_MODEL_COUNT(PelmThrottle)
/* Writes the positions of levers 1 to 6 and the switch bits (contacts in bits
 * 1-4) of the latest input report, each where its pointer is not null; an
 * unwritable pointer is skipped. Nothing is reset; no device transfer. The
 * quadrant is read at most 20 times a second; the input callback's record
 * (7 bytes): the six positions, then the switch bits. */
PELM_MODEL_OP(PelmThrottle, GetControlVals,
              (uint8_t* lever1, uint8_t* lever2, uint8_t* lever3, uint8_t* lever4, uint8_t* lever5, uint8_t* lever6,
               uint8_t* switches),
              (lever1, lever2, lever3, lever4, lever5, lever6, switches))

/* ---- Engine-control module (type 14), 8 slots -------------------------------- */

PELM_MODEL_COUNT(PelmEngineCtl)
/* Writes the rotary selector position (1 to 5; 0 before any report set it),
 * the first two-contact switch (0 or 1), the three-position switch (2 up,
 * 1 middle, 0 down), the second two-contact switch (0 or 1) and the twelve
 * contact bits, each only where its pointer is writable. Nothing is reset; no device transfer.
 * The input callback comes only for reports with a selector contact closed;
 * its record (6 bytes): the four values (uint8 each), then the contacts
 * (uint16). */
PELM_MODEL_OP(PelmEngineCtl, GetControlVals,
              (uint8_t* selector, uint8_t* switch1, uint8_t* threePosition, uint8_t* switch2, uint16_t* switches),
              (selector, switch1, threePosition, switch2, switches))
