# Turns the preprocessed list of export names into PELMDEV.def.
# Inputs: NAMES (the preprocessor's output), DEF (the file to write).
file(READ "${NAMES}" text)
string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*" names "${text}")
list(JOIN names "\n" lines)
file(WRITE "${DEF}" "LIBRARY PELMDEV\nEXPORTS\n${lines}\n")
