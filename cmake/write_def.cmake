# Turns the preprocessed list of export names into PELMDEV.def. On 32-bit x86 a
# callee-cleans export is written with its decoration (name@bytes), which the
# link's --kill-at strips from the exported name: the DLL exports plain names,
# and its import library still resolves the decorated references that
# compilers make. A 64-bit target has one calling convention and no
# decoration: every name is written plain.
# Inputs: NAMES (the preprocessor's output), DEF (the file to write),
# DECORATE_STDCALL (ON for 32-bit x86).
file(READ "${NAMES}" text)
string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*( *@ *[0-9]+)?" entries "${text}")
set(lines "")
foreach(entry IN LISTS entries)
  if(entry MATCHES "^([A-Za-z0-9_]+) *@ *([0-9]+)$")
    if(DECORATE_STDCALL)
      math(EXPR bytes "${CMAKE_MATCH_2} * 4")
      string(APPEND lines "${CMAKE_MATCH_1}@${bytes}\n")
    else()
      string(APPEND lines "${CMAKE_MATCH_1}\n")
    endif()
  else()
    string(APPEND lines "${entry}\n")
  endif()
endforeach()
file(WRITE "${DEF}" "LIBRARY PELMDEV\nEXPORTS\n${lines}")
