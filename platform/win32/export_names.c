/* Preprocessed (not compiled) into the list of the DLL's exported names, from
 * the export table. A callee-cleans name is followed by "@" and its argument
 * count, from which the module-definition file gets its decorated form. */
#define PELM_ARG_COUNT(...) PELM_ARG_COUNT_AT(__VA_OPT__(__VA_ARGS__, ) 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define PELM_ARG_COUNT_AT(a1, a2, a3, a4, a5, a6, a7, a8, a9, n, ...) n
#define PELM_UNPACK(...) __VA_ARGS__
#define PELM_CDECL cdecl
#define PELM_STDCALL stdcall
#define PELM_NAME_cdecl(name, args) name
#define PELM_NAME_stdcall(name, args) name @ PELM_ARG_COUNT(PELM_UNPACK args)
#define PELM_CORE_PAIR(ret, name, params, args) name name##_stdcall @ PELM_ARG_COUNT(PELM_UNPACK args)
#define PELM_NAME(form, name, args) PELM_NAME_FORM(form, name, args)
#define PELM_NAME_FORM(form, name, args) PELM_NAME_##form(name, args)
#define PELM_CORE_SINGLE(ret, form, name, params, args) PELM_NAME(form, name, args)
#define PELM_MODEL_COUNT(family) family##_GetNumDevices family##_GetNumDevices_stdcall @ 0
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) family##_GetNumDevices
#define PELM_MODEL_OP(family, op, params, args) \
  family##_##op family##_##op##_stdcall @ PELM_ARG_COUNT(deviceIndex, PELM_UNPACK args)
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) family##_##op
#include "core/pelm_exports.h"
