# Turns the preprocessed list of export names into PELMDEV.def. A callee-cleans
# export is written with its decoration (name@bytes), which the link's
# --kill-at strips from the exported name: the DLL exports plain names, and its
# import library still resolves the decorated references that compilers make.
# Inputs: NAMES (the preprocessor's output), DEF (the file to write).
file(READ "${NAMES}" text)
string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*( *@ *[0-9]+)?" entries "${text}")
set(lines "")
foreach(entry IN LISTS entries)
  if(entry MATCHES "^([A-Za-z0-9_]+) *@ *([0-9]+)$")
    math(EXPR bytes "${CMAKE_MATCH_2} * 4")
    string(APPEND lines "${CMAKE_MATCH_1}@${bytes}\n")
  else()
    string(APPEND lines "${entry}\n")
  endif()
endforeach()
file(WRITE "${DEF}" "LIBRARY PELMDEV\nEXPORTS\n${lines}")
