/* Preprocessed (not compiled) into the list of the DLL's exported names, one
 * name per macro expansion, from the export table. */
#define PELM_CORE_PAIR(ret, name, params, args) name name##_stdcall
#define PELM_CORE_SINGLE(ret, form, name, params, args) name
#define PELM_MODEL_COUNT(family) family##_GetNumDevices family##_GetNumDevices_stdcall
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) family##_GetNumDevices
#define PELM_MODEL_OP(family, op, params, args) family##_##op family##_##op##_stdcall
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) family##_##op
#include "core/pelm_exports.h"
