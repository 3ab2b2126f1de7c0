# Settings that every target of this project shares; none of them is exported to users.

function(sabrel_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    # Optimising gcc 12 warns without cause of "literal" + std::string (GCC bug 105651) and of moved std::optional.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  if(SABREL_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# A library of this project: `sabrel_<name>`, known as `sabrel::<name>`, with headers found as "<folder>/<file>.h".
function(sabrel_library name)
  add_library(sabrel_${name} STATIC ${ARGN})
  add_library(sabrel::${name} ALIAS sabrel_${name})
  set_target_properties(sabrel_${name} PROPERTIES EXPORT_NAME ${name} OUTPUT_NAME sabrel_${name})
  target_include_directories(sabrel_${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  sabrel_target_defaults(sabrel_${name})
endfunction()
