# Writes the list of the library's exported classes for the test that checks
# that every one of them derives from vOBJECT (tests/core/root_test.cpp): every
# `class RL132_API NAME` or `struct RL132_API NAME` at the start of a line in
# the public headers and the internal ones. Run at build time, so that a class
# added to any header is checked at the next build.
#
#   cmake -DROOT=<checkout> -DOUT=<file> -P RL132ExportedClasses.cmake
file(GLOB_RECURSE _public RELATIVE ${ROOT}/include ${ROOT}/include/*.h)
file(GLOB_RECURSE _internal RELATIVE ${ROOT}/src ${ROOT}/src/*.h)
list(SORT _public)
list(SORT _internal)
set(_includes "")
set(_names "")
set(_pattern "^[ \t]*(class|struct)[ \t]+RL132_API[ \t]+([A-Za-z_][A-Za-z0-9_]*)")
foreach(_h ${_public} ${_internal})
  if(EXISTS ${ROOT}/include/${_h})
    set(_path ${ROOT}/include/${_h})
  else()
    set(_path ${ROOT}/src/${_h})
  endif()
  file(STRINGS ${_path} _lines REGEX "${_pattern}")
  if(_lines)
    string(APPEND _includes "#include \"${_h}\"\n")
    foreach(_l ${_lines})
      string(REGEX REPLACE "${_pattern}.*" "\\2" _n "${_l}")
      string(APPEND _names " X(${_n})")
    endforeach()
  endif()
endforeach()
file(WRITE ${OUT}.new "// Made by cmake/RL132ExportedClasses.cmake from the headers; do not edit.\n${_includes}\n#define RL132_EXPORTED_CLASSES(X)${_names}\n")
file(COPY_FILE ${OUT}.new ${OUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUT}.new)
