# The library's pure sources: plain C++ without <windows.h> or any system call,
# built into RL132.dll and, unchanged, into the native sanitizer build
# (native/CMakeLists.txt). This is the one list of them; both builds include it.
#
#   RL132_KERNEL_SOURCES    every pure source
#   RL132_INTERNAL_KERNELS  the part whose entry points are internal (they
#                           export nothing), which test and benchmark programs
#                           may link directly to call those entry points
#
# A new pure file is added here, or, for the drawing geometry, simply placed in
# src/devices/geom/.
get_filename_component(_rl132_root ${CMAKE_CURRENT_LIST_DIR}/.. ABSOLUTE)

set(RL132_INTERNAL_KERNELS
  ${_rl132_root}/src/bitmaps/bmrecord.cpp    # bitmap record headers, strips, the resident limit
  ${_rl132_root}/src/bitmaps/dibrows.cpp     # DIB stored-form arithmetic, difference coding
  ${_rl132_root}/src/bitmaps/dither.cpp      # error diffusion and the colour cube
  ${_rl132_root}/src/bitmaps/pixfmt.cpp      # the pixel-format table
  ${_rl132_root}/src/bitmaps/rowwiden.cpp    # 24-bit rows widened to 32 bits
  ${_rl132_root}/src/devices/devmath.cpp     # device mapping and colour separation
  ${_rl132_root}/src/devices/dibconv.cpp     # the pixels of a DIB drawn on a device
  ${_rl132_root}/src/devices/screenpal.cpp   # the screen's 256-colour palette
  ${_rl132_root}/src/devices/textlayout.cpp  # placing lines of text in a rectangle
  ${_rl132_root}/src/metafiles/metarec.cpp   # the own metafile format's record reader
  ${_rl132_root}/src/metafiles/wmfguard.cpp) # Windows metafile headers and record checks
# The drawing geometry: flattening, stroking, dashing, band planning.
file(GLOB _rl132_geom CONFIGURE_DEPENDS ${_rl132_root}/src/devices/geom/*.cpp)
list(APPEND RL132_INTERNAL_KERNELS ${_rl132_geom})

set(RL132_KERNEL_SOURCES
  ${_rl132_root}/src/streams/implode.cpp     # block compression
  ${_rl132_root}/src/streams/implode_opt.cpp
  ${_rl132_root}/src/streams/explode.cpp
  ${_rl132_root}/src/attributes/vcolour.cpp  # colour models and conversions
  ${_rl132_root}/src/core/vnumber.cpp        # 16.16 arithmetic
  ${_rl132_root}/src/core/vtrig.cpp          # angles and the table functions
  ${_rl132_root}/src/core/vgeom.cpp          # geometry values
  ${RL132_INTERNAL_KERNELS})

unset(_rl132_geom)
unset(_rl132_root)
