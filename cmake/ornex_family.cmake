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
endfunction()
