# How every target of this project is compiled: warnings are errors, symbols are hidden, and the
# release build is optimised across files.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND ZVWT_LINK_TIME_OPTIMISATION AND NOT ZVWT_SANITIZE)
  # Clang, for one, needs tools of its own for it that need not be installed.
  include(CheckIPOSupported)
  check_ipo_supported(RESULT zvwt_link_time_optimisation OUTPUT unsupported LANGUAGES CXX)
endif()
if(ZVWT_SANITIZE)
  add_compile_options(-fsanitize=${ZVWT_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZVWT_SANITIZE})
endif()
if(ZVWT_COVERAGE)
  # Counted atomically, as threads count the same lines; processes add up in turn at their ends.
  add_compile_options(--coverage -fprofile-update=atomic -fprofile-abs-path)
  add_link_options(--coverage)
endif()

function(zvwt_use_settings target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wconversion -Wshadow -Werror)
  if(NOT ZVWT_COVERAGE)  # which is to find the sources again
    target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  endif()
  set_target_properties(${target} PROPERTIES
      CXX_EXTENSIONS OFF
      CXX_VISIBILITY_PRESET hidden
      VISIBILITY_INLINES_HIDDEN ON)
  if(zvwt_link_time_optimisation)
    set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION ON)
  endif()
endfunction()

# Objects that are also linked without optimising across files, which the tests do to link fast.
function(zvwt_link_both_ways target)
  if(zvwt_link_time_optimisation AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -ffat-lto-objects)
  endif()
endfunction()

# Keeps names of the standard library's templates out of a shared library's exports.
function(zvwt_export_only target map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()
