# The layers of src/ and how targets name them.
find_package(Boost 1.74 REQUIRED COMPONENTS serialization filesystem date_time)
find_package(Eigen3 3.4 REQUIRED)
set_property(TARGET Eigen3::Eigen APPEND PROPERTY INTERFACE_COMPILE_OPTIONS
  "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${CMAKE_SOURCE_DIR}/src/foundation/eigen_storage.h>")
find_package(TBB 2021 REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(CRYPTOPP REQUIRED IMPORTED_TARGET libcrypto++)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)
find_library(ZEL_LIBCSV csv REQUIRED)

# Top to bottom: dependencies flow downwards only (tools/check_layers holds the arrows).
set(ZEL_LAYERS api study report exchange analysis solver training project calculator metamodel design
  optimizer doe stochastics variant archive foundation)
set(ZEL_PRESENT_LAYERS "")
foreach(layer ${ZEL_LAYERS})
  if(EXISTS ${CMAKE_SOURCE_DIR}/src/${layer}/CMakeLists.txt)
    list(APPEND ZEL_PRESENT_LAYERS ${layer})
  endif()
endforeach()
# What each layer takes from outside; every class that is stored needs Boost.Serialization.
set(ZEL_NEEDS_api Eigen3::Eigen)
set(ZEL_NEEDS_study Boost::filesystem Eigen3::Eigen PkgConfig::JSONCPP ${ZEL_LIBCSV})
set(ZEL_NEEDS_report Eigen3::Eigen PkgConfig::CRYPTOPP)
set(ZEL_NEEDS_exchange Eigen3::Eigen)
set(ZEL_NEEDS_analysis Eigen3::Eigen)
set(ZEL_NEEDS_solver Boost::filesystem Eigen3::Eigen PkgConfig::CRYPTOPP)
set(ZEL_NEEDS_training Eigen3::Eigen)
set(ZEL_NEEDS_project Boost::date_time Boost::filesystem Boost::serialization Eigen3::Eigen
  PkgConfig::JSONCPP)
set(ZEL_NEEDS_calculator Boost::filesystem Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_metamodel Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_design Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_optimizer Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_doe Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_stochastics Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_variant Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_archive Boost::filesystem Boost::serialization Eigen3::Eigen)
set(ZEL_NEEDS_foundation Boost::filesystem TBB::tbb)

# Most of a compile is reading headers, so files are compiled in groups. Names at file scope must then
# differ within a folder; where a file stands for a class (a distribution, settings, an operator) and
# such names repeat on purpose, the folder is left out. OFF compiles every file by itself, as tools/lint
# needs it and as suits a day's work on a few files.
option(ZEL_GROUPS "Compile files in groups" ON)
set(ZEL_UNGROUPED optimizer archive stochastics variant)

function(zel_group target)
  if(ZEL_GROUPS)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE BATCH
      UNITY_BUILD_BATCH_SIZE 6)
    # In a group, GCC takes a .cpp file for a header that lends its local types to others.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endfunction()

# zel_layer(<name> file.cpp ...): the OBJECT library zel_<name> of this folder.
function(zel_layer name)
  add_library(zel_${name} OBJECT ${ARGN})
  target_include_directories(zel_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
  target_link_libraries(zel_${name} PUBLIC ${ZEL_NEEDS_${name}} PRIVATE zel_warnings)
  if(NOT name IN_LIST ZEL_UNGROUPED)
    zel_group(zel_${name})
  endif()
endfunction()

# zel_layers_from(<variable> <layer>): this layer, those that stand beside it further down the list of
# layers, and all below.
function(zel_layers_from variable layer)
  list(FIND ZEL_PRESENT_LAYERS ${layer} first)
  list(SUBLIST ZEL_PRESENT_LAYERS ${first} -1 layers)
  set(${variable} ${layers} PARENT_SCOPE)
endfunction()

# zel_link_layers(<target> layer ...): the objects of these layers. Object files do not travel along
# links, so each target names all that it needs; layers that the tree does not have are an error.
function(zel_link_layers target)
  foreach(layer ${ARGN})
    target_link_libraries(${target} PRIVATE zel_${layer})
  endforeach()
endfunction()

# zel_test(<name> [UNGROUPED] SOURCES file.cpp ... LAYERS layer ... [LIBRARIES lib ...]): one test
# program; UNGROUPED where its files have names in common.
function(zel_test name)
  cmake_parse_arguments(ARG "UNGROUPED" "" "SOURCES;LAYERS;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests ${CMAKE_SOURCE_DIR})
  zel_link_layers(${name} ${ARG_LAYERS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main
    zel_warnings)
  if(NOT ARG_UNGROUPED)
    zel_group(${name})
  endif()
  add_test(NAME ${name} COMMAND ${name})
endfunction()
