# Where the packages come from that tool and tests need. Built for this machine they are the
# system's; for others they are made from sources, which Debian has for all of them.

set(ZVWT_LIBCSV_SOURCES ${PROJECT_SOURCE_DIR}/build/sources/libcsv CACHE PATH
    "Sources of libcsv, for machines that it is not installed for")

# Gives Csv::csv. A macro, as it may need the caller's folder to know C.
macro(zvwt_find_csv)
  if(CMAKE_CROSSCOMPILING)
    enable_language(C)
    zvwt_make_csv()
  else()
    zvwt_find_installed_csv()
  endif()
endmacro()

function(zvwt_make_csv)
  if(NOT EXISTS ${ZVWT_LIBCSV_SOURCES}/libcsv.c)
    message(FATAL_ERROR "${ZVWT_LIBCSV_SOURCES} has no libcsv.c; scripts/install-dependencies "
                        "--windows or --s390x fetches it")
  endif()
  add_library(zvwt-csv STATIC ${ZVWT_LIBCSV_SOURCES}/libcsv.c)
  target_include_directories(zvwt-csv SYSTEM PUBLIC ${ZVWT_LIBCSV_SOURCES})
  add_library(Csv::csv ALIAS zvwt-csv)
endfunction()

function(zvwt_find_installed_csv)
  find_path(CSV_INCLUDE_DIR csv.h)
  find_library(CSV_LIBRARY csv)
  if(NOT CSV_INCLUDE_DIR OR NOT CSV_LIBRARY)
    message(FATAL_ERROR
        "libcsv 3 was not found. scripts/install-dependencies installs it; where no package "
        "exists, build it from its sources and name its prefix in CMAKE_PREFIX_PATH, or leave the "
        "tool out with -DZVWT_BUILD_TOOL=OFF.")
  endif()
  add_library(Csv::csv UNKNOWN IMPORTED GLOBAL)
  set_target_properties(Csv::csv PROPERTIES
      IMPORTED_LOCATION ${CSV_LIBRARY}
      INTERFACE_INCLUDE_DIRECTORIES ${CSV_INCLUDE_DIR})
endfunction()

# Gives CLI11::CLI11, which is headers alone: those of this machine serve for every other.
function(zvwt_find_cli11)
  if(CMAKE_CROSSCOMPILING AND NOT TARGET CLI11::CLI11)
    find_path(CLI11_HEADERS CLI/CLI.hpp REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include)
    set(own ${CMAKE_BINARY_DIR}/cli11)  # the other headers there are for this machine only
    file(MAKE_DIRECTORY ${own})
    file(CREATE_LINK ${CLI11_HEADERS}/CLI ${own}/CLI SYMBOLIC)
    add_library(CLI11::CLI11 INTERFACE IMPORTED GLOBAL)
    target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${own})
  elseif(NOT CMAKE_CROSSCOMPILING)
    find_package(CLI11 REQUIRED GLOBAL)
  endif()
endfunction()

# Gives GTest::gtest_main.
macro(zvwt_find_googletest)
  if(CMAKE_CROSSCOMPILING)
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  else()
    find_package(GTest REQUIRED)
  endif()
endmacro()
