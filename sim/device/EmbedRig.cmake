# Writes a C++ source that holds a rig file's bytes, so the library carries its default rig.
# cmake -DIN=<rig.json> -DOUT=<DefaultRig.cpp> -P EmbedRig.cmake
file(READ "${IN}" _hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," _bytes "${_hex}")
string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" _bytes "${_bytes}")
file(WRITE "${OUT}.tmp" "// Generated from ${IN}; do not edit.\n#include \"sim/device/Rig.h\"\n\nnamespace zol::sim {\nnamespace {\nconst unsigned char kRig[] = {\n${_bytes}0};\n} // namespace\n\nstd::string DefaultRigText() { return std::string(reinterpret_cast<const char*>(kRig), sizeof kRig - 1); }\n\n} // namespace zol::sim\n")
execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different "${OUT}.tmp" "${OUT}")
file(REMOVE "${OUT}.tmp")
