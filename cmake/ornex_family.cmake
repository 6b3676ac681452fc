# One OBJECT library per kernel family; all are linked into the one shared
# library.
function(ornex_add_family name)
  add_library(${name} OBJECT ${ARGN})
  target_include_directories(${name} PRIVATE
    ${PROJECT_SOURCE_DIR}/include
    ${PROJECT_SOURCE_DIR}/src
    ${PROJECT_BINARY_DIR}/generated)
  target_compile_definitions(${name} PRIVATE ORNEX_RT_BUILDING)
  target_link_libraries(${name} PRIVATE ornex_compile_rules)
  if(ORNEX_AVX2_PATHS)
    target_compile_definitions(${name} PRIVATE ORNEX_HAVE_AVX2_PATHS)
  endif()
endfunction()

# A source of a family built for AVX2; left out when those paths are off.
function(ornex_add_avx2_source family source)
  if(ORNEX_AVX2_PATHS)
    target_sources(${family} PRIVATE ${source})
    set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS "-mavx2")
  endif()
endfunction()
