# Third-party libraries as imported targets with our own names, so that the
# native build (Debian -dev packages) and the MinGW cross-build (a prefix built
# from Debian source packages, MIRRACK_DEPS_PREFIX) look the same to the modules.
find_package(Threads REQUIRED)

if(MIRRACK_DEPS_PREFIX)
  list(PREPEND CMAKE_FIND_ROOT_PATH ${MIRRACK_DEPS_PREFIX})
  list(PREPEND CMAKE_PREFIX_PATH ${MIRRACK_DEPS_PREFIX})
endif()

find_package(ZLIB REQUIRED)
add_library(mirrack_zlib INTERFACE)
target_link_libraries(mirrack_zlib INTERFACE ZLIB::ZLIB)

find_path(TINYXML_INCLUDE_DIR tinyxml.h REQUIRED)
find_library(TINYXML_LIBRARY NAMES tinyxml REQUIRED)
add_library(mirrack_tinyxml INTERFACE)
# Debian builds TinyXML with its STL interface; the define must match the library.
target_compile_definitions(mirrack_tinyxml INTERFACE TIXML_USE_STL)
target_include_directories(mirrack_tinyxml INTERFACE ${TINYXML_INCLUDE_DIR})
target_link_libraries(mirrack_tinyxml INTERFACE ${TINYXML_LIBRARY})

add_library(mirrack_pugixml INTERFACE)
if(NOT WIN32)
  find_path(PUGIXML_INCLUDE_DIR pugixml.hpp REQUIRED)
  find_library(PUGIXML_LIBRARY NAMES pugixml REQUIRED)
  target_include_directories(mirrack_pugixml INTERFACE ${PUGIXML_INCLUDE_DIR})
  target_link_libraries(mirrack_pugixml INTERFACE ${PUGIXML_LIBRARY})
endif()

if(MIRRACK_DEPS_PREFIX)
  find_path(BOOST_PO_INCLUDE_DIR boost/program_options.hpp REQUIRED)
  find_library(BOOST_PO_LIBRARY NAMES boost_program_options REQUIRED)
  add_library(mirrack_boost_po INTERFACE)
  target_include_directories(mirrack_boost_po INTERFACE ${BOOST_PO_INCLUDE_DIR})
  target_link_libraries(mirrack_boost_po INTERFACE ${BOOST_PO_LIBRARY})
else()
  find_package(Boost REQUIRED COMPONENTS program_options)
  add_library(mirrack_boost_po INTERFACE)
  target_link_libraries(mirrack_boost_po INTERFACE Boost::program_options)
endif()

if(MIRRACK_BENCH AND MIRRACK_DEPS_PREFIX)
  # Google Benchmark built for MinGW from its Debian source package, without a CMake package.
  find_path(BENCHMARK_INCLUDE_DIR benchmark/benchmark.h REQUIRED)
  find_library(BENCHMARK_LIBRARY NAMES benchmark REQUIRED)
  add_library(mirrack_benchmark INTERFACE)
  target_compile_definitions(mirrack_benchmark INTERFACE BENCHMARK_STATIC_DEFINE)
  target_include_directories(mirrack_benchmark INTERFACE ${BENCHMARK_INCLUDE_DIR})
  target_link_libraries(mirrack_benchmark INTERFACE ${BENCHMARK_LIBRARY} shlwapi)
elseif(MIRRACK_BENCH)
  find_package(benchmark REQUIRED)
  add_library(mirrack_benchmark INTERFACE)
  target_link_libraries(mirrack_benchmark INTERFACE benchmark::benchmark)
endif()

if(MIRRACK_TESTS)
  # The cross-build finds the GoogleTest built for MinGW in MIRRACK_DEPS_PREFIX.
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
