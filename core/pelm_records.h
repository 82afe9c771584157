#ifndef PELM_RECORDS_H
#define PELM_RECORDS_H
/*
 * The records input callbacks receive, one per model, packed (no padding) with
 * multi-byte values in little-endian order (except where noted). The callback's `record` argument
 * points at the record of the model its `modelType` names; it belongs to the
 * library and is valid only during the call.
 */

#include <stdint.h>

#pragma pack(push, 1)

/* PELM_MODEL_ALPHA: the two dial counts. */
typedef struct PelmAlphaInputRecord {
  int16_t dialVals[2];
} PelmAlphaInputRecord;

/* PELM_MODEL_ALPHA2: the two dial counts and the switches. */
typedef struct PelmAlpha2InputRecord {
  int16_t dialVals[2];
  uint8_t switchVals;
} PelmAlpha2InputRecord;

/* PELM_MODEL_BUTTONS and PELM_MODEL_TOGGLES: the switch byte. */
typedef struct PelmSwitchesInputRecord {
  uint8_t switchVals;
} PelmSwitchesInputRecord;

/* PELM_MODEL_GEAR: the control value and the control byte. */
typedef struct PelmGearInputRecord {
  int16_t controlValue;
  uint8_t controlByte;
} PelmGearInputRecord;

/* PELM_MODEL_RADIO: the two dial counts and the switches. */
typedef struct PelmRadioInputRecord {
  int16_t dialVals[2];
  uint8_t switchVals;
} PelmRadioInputRecord;

/* PELM_MODEL_AUTOPILOT: five dial counts and two switch bytes. */
typedef struct PelmAutopilotInputRecord {
  int16_t dialVals[5];
  uint8_t switchVals[2];
} PelmAutopilotInputRecord;

/* PELM_MODEL_KNOBS: the four knob counts and the switch byte. */
typedef struct PelmKnobsInputRecord {
  int16_t knobCounts[4];
  uint8_t switchByte;
} PelmKnobsInputRecord;

/* PELM_MODEL_THROTTLE: the six lever positions and the switches. */
typedef struct PelmThrottleInputRecord {
  uint8_t axisVals[6];
  uint8_t switchVals;
} PelmThrottleInputRecord;

/* PELM_MODEL_SQUAWK: the dial count and the switches. */
typedef struct PelmSquawkInputRecord {
  int16_t dialVals;
  uint8_t switchVals;
} PelmSquawkInputRecord;

/* PELM_MODEL_GEAR2: the three control values and the control byte. */
typedef struct PelmGear2InputRecord {
  int16_t controlValues[3];
  uint8_t controlByte;
} PelmGear2InputRecord;

/* PELM_MODEL_AUTOPILOT2: six dial counts and the switches. */
typedef struct PelmAutopilot2InputRecord {
  int16_t dialVals[6];
  uint32_t switchVals; /* in the host's byte order */
} PelmAutopilot2InputRecord;

/* PELM_MODEL_MAPCTL: the two dial counts, the switches and the selectors. */
typedef struct PelmMapCtlInputRecord {
  int16_t dialVals[2];
  uint16_t switchVals;
  uint8_t selectorVals;
} PelmMapCtlInputRecord;

/* PELM_MODEL_ENGINECTL: the four control values and the switches. */
typedef struct PelmEngineCtlInputRecord {
  uint8_t controlVals[4];
  uint16_t switchVals;
} PelmEngineCtlInputRecord;

/* PELM_MODEL_KEYPAD: the key code and three zero bytes. */
typedef struct PelmKeypadInputRecord {
  uint8_t keyCode;
  uint8_t unused[3];
} PelmKeypadInputRecord;

/* PELM_MODEL_ENGINESTART: the three selector positions. */
typedef struct PelmEngineStartInputRecord {
  uint8_t positions[3];
} PelmEngineStartInputRecord;

/* PELM_MODEL_WARNING: the control byte. */
typedef struct PelmWarningInputRecord {
  uint8_t controlByte;
} PelmWarningInputRecord;

/* PELM_MODEL_IOBOARD: the seven input bytes. */
typedef struct PelmIoBoardInputRecord {
  uint8_t inputs[7];
} PelmIoBoardInputRecord;

#pragma pack(pop)

#endif /* PELM_RECORDS_H */
