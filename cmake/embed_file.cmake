# Writes the bytes of INPUT into the header OUTPUT as the array NAME, so that a
# program carries the file and needs no data files beside it.
file(READ ${INPUT} hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
get_filename_component(source ${INPUT} NAME)
file(WRITE ${OUTPUT} "#pragma once\n// Generated from ${source} at build time.\ninline constexpr unsigned char ${NAME}[] = {${bytes}};\n")
