# GoogleTest from Debian's sources, built with the cross compiler.
set(gtest_disable_pthreads ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)

# Test programs run under Wine through a wrapper that knows the build's prefix.
configure_file(${CMAKE_SOURCE_DIR}/scripts/wine-run.in ${CMAKE_BINARY_DIR}/wine-run @ONLY
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_BINARY_DIR}/wine-run)

file(GLOB RL132_TEST_SUPPORT CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/support/*.cpp)
add_library(rl132_testsupport STATIC ${RL132_TEST_SUPPORT})
target_link_libraries(rl132_testsupport PUBLIC RL132 GTest::gtest PRIVATE rl132_image_kernels)
target_include_directories(rl132_testsupport PUBLIC ${CMAKE_SOURCE_DIR}/tests/support ${CMAKE_SOURCE_DIR}/src)
target_compile_options(rl132_testsupport PRIVATE ${RL132_WARNINGS})
# The test data kept in the repository, as Wine sees it (the Unix root is Z:).
target_compile_definitions(rl132_testsupport PUBLIC RL132_DATA_DIR="Z:${CMAKE_SOURCE_DIR}/tests/data")

# One test program per subsystem folder; tests/<sub>/display8/ holds the ones that
# need a 256-colour screen and run under Xvfb at depth 8.
function(rl132_add_test_program name sources label)
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE rl132_testsupport)
  target_compile_options(${name} PRIVATE ${RL132_WARNINGS})
  target_link_options(${name} PRIVATE ${RL132_STATIC_RUNTIME})
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES LABELS ${label}
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR}/bin TIMEOUT 300)
endfunction()

foreach(sub ${RL132_SUBSYSTEMS} tools)
  file(GLOB _t CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${sub}/*.cpp)
  if(_t)
    rl132_add_test_program(test_${sub} "${_t}" headless)
  endif()
  file(GLOB _d CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${sub}/display8/*.cpp)
  if(_d)
    rl132_add_test_program(test_${sub}_display8 "${_d}" display8)
  endif()
endforeach()

# Every exported class, listed from the headers at each build for the check
# that all of them derive from vOBJECT (tests/core/root_test.cpp).
if(TARGET test_core)
  file(GLOB_RECURSE _headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/*.h ${CMAKE_SOURCE_DIR}/src/*.h)
  set(_classes ${CMAKE_BINARY_DIR}/generated/exported_classes.inc)
  add_custom_command(OUTPUT ${_classes}
    COMMAND ${CMAKE_COMMAND} -DROOT=${CMAKE_SOURCE_DIR} -DOUT=${_classes}
      -P ${CMAKE_SOURCE_DIR}/cmake/RL132ExportedClasses.cmake
    DEPENDS ${_headers} ${CMAKE_SOURCE_DIR}/cmake/RL132ExportedClasses.cmake
    COMMENT "Listing the exported classes")
  target_sources(test_core PRIVATE ${_classes})
  target_include_directories(test_core PRIVATE ${CMAKE_BINARY_DIR}/generated)
endif()

# Test-only helper DLLs (stand-ins for outside libraries): tests/dlls/<name>/*.cpp
file(GLOB _dlls LIST_DIRECTORIES true ${CMAKE_SOURCE_DIR}/tests/dlls/*)
foreach(dir ${_dlls})
  if(IS_DIRECTORY ${dir})
    get_filename_component(dllname ${dir} NAME)
    file(GLOB _ds CONFIGURE_DEPENDS ${dir}/*.cpp ${dir}/*.def)
    add_library(${dllname} SHARED ${_ds})
    set_target_properties(${dllname} PROPERTIES PREFIX "" OUTPUT_NAME ${dllname})
    target_link_options(${dllname} PRIVATE ${RL132_STATIC_RUNTIME} -Wl,--kill-at)
  endif()
endforeach()

# Checks on the built files and the installed SDK, run on the build machine.
add_test(NAME build_binaries COMMAND bash ${CMAKE_SOURCE_DIR}/tests/build/check_binaries.sh
  ${CMAKE_OBJDUMP} $<TARGET_FILE:RL132> $<TARGET_FILE:rltool> $<TARGET_FILE:rlphbmp> $<TARGET_FILE:rlphpcx>
  $<TARGET_FILE:rlphtif>)
add_test(NAME build_install_host COMMAND bash ${CMAKE_SOURCE_DIR}/tests/build/check_install.sh
  ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
add_test(NAME tools_rltool COMMAND bash ${CMAKE_SOURCE_DIR}/tests/tools/rltool_test.sh
  ${CMAKE_BINARY_DIR}/wine-run $<TARGET_FILE:rltool>)
add_test(NAME tools_photocd COMMAND bash ${CMAKE_SOURCE_DIR}/tests/tools/photocd_test.sh
  ${CMAKE_BINARY_DIR}/wine-run $<TARGET_FILE:rltool> $<TARGET_FILE:pcdsample>)
set_tests_properties(build_binaries build_install_host tools_rltool tools_photocd PROPERTIES LABELS headless TIMEOUT 300)
