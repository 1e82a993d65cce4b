# One library per top-level folder. Sources are globbed so that adding a file
# needs no edit here; the platform twin (*_posix.cpp / *_win32.cpp) that does
# not belong to the target platform is dropped.
# The .cpp files below dir whose platform suffix (_posix or _win32, before the optional _test)
# matches the target platform.
function(mirrack_platform_sources out dir)
  file(GLOB_RECURSE srcs CONFIGURE_DEPENDS "${dir}/*.cpp")
  if(WIN32)
    list(FILTER srcs EXCLUDE REGEX "_posix(_test)?\\.cpp$")
  else()
    list(FILTER srcs EXCLUDE REGEX "_win32(_test)?\\.cpp$")
  endif()
  set(${out} "${srcs}" PARENT_SCOPE)
endfunction()

function(mirrack_collect_sources out dir)
  mirrack_platform_sources(srcs "${dir}")
  # Files named main.cpp belong to executables, never to a library.
  list(FILTER srcs EXCLUDE REGEX "/main\\.cpp$")
  set(${out} "${srcs}" PARENT_SCOPE)
endfunction()

# mirrack_module(<target> DIR <dir> [DEPS ...] [PRIVATE_DEPS ...])
function(mirrack_module target)
  cmake_parse_arguments(M "" "DIR" "DEPS;PRIVATE_DEPS" ${ARGN})
  mirrack_collect_sources(srcs "${M_DIR}")
  if(srcs)
    add_library(${target} STATIC ${srcs})
    target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} PUBLIC ${M_DEPS} PRIVATE ${M_PRIVATE_DEPS})
  else()
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${target} INTERFACE ${M_DEPS})
  endif()
endfunction()

# mirrack_test(<name> DIR <dir> LIBS ... [LABELS ...]): one gtest executable per test folder.
function(mirrack_test name)
  cmake_parse_arguments(T "" "DIR" "LIBS;LABELS" ${ARGN})
  mirrack_platform_sources(kept "${T_DIR}")
  if(NOT kept)
    return()
  endif()
  add_executable(${name} ${kept})
  mirrack_version_resource(${name} "Mirrack tests")
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  target_compile_definitions(${name} PRIVATE MIRRACK_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
                                             MIRRACK_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  mirrack_add_tests(${name} LABELS ${T_LABELS})
endfunction()

# mirrack_add_tests(<target> [LABELS ...]): natively every case is a ctest test of its own; a
# cross-built executable runs whole under CMAKE_CROSSCOMPILING_EMULATOR (Wine), as listing its
# cases at build time would start the emulator once per executable for nothing.
function(mirrack_add_tests target)
  cmake_parse_arguments(A "" "" "LABELS" ${ARGN})
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${target} COMMAND ${target})
    set_tests_properties(${target} PROPERTIES TIMEOUT 300)
    if(A_LABELS)
      set_tests_properties(${target} PROPERTIES LABELS "${A_LABELS}")
    endif()
  elseif(A_LABELS)
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 LABELS ${A_LABELS})
  else()
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
  endif()
endfunction()

# mirrack_version_resource(<target> <description>): a Windows executable carries the
# project's version in a VERSIONINFO resource, which the start banner reads back.
function(mirrack_version_resource target description)
  if(NOT WIN32)
    return()
  endif()
  set(MIRRACK_FILE_DESCRIPTION "${description}")
  set(MIRRACK_INTERNAL_NAME "${target}")
  set(rc ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${rc} @ONLY)
  target_sources(${target} PRIVATE ${rc})
endfunction()
