# The dynamic symbols the library defines must be exactly the names that the
# public header declares: nothing missing, nothing leaked.
include(${CMAKE_CURRENT_LIST_DIR}/../../cmake/ornex_exports.cmake)

ornex_exported_names(${HEADER} declared)
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE nm_output RESULT_VARIABLE nm_result)
if(NOT nm_result EQUAL 0)
  message(FATAL_ERROR "${NM} failed on ${LIBRARY}")
endif()

string(REPLACE "\n" ";" nm_lines "${nm_output}")
set(defined "")
foreach(line IN LISTS nm_lines)
  if(line MATCHES "^[0-9a-fA-F]* *[A-Za-z] ([^ @]+)")
    list(APPEND defined ${CMAKE_MATCH_1})
  endif()
endforeach()
list(SORT defined)

set(missing ${declared})
list(REMOVE_ITEM missing ${defined})
set(leaked ${defined})
list(REMOVE_ITEM leaked ${declared})
list(LENGTH declared declared_count)
if(missing OR leaked)
  message(FATAL_ERROR "export mismatch\n  declared but not exported: ${missing}\n  exported but not declared: ${leaked}")
endif()
if(declared_count EQUAL 0)
  message(FATAL_ERROR "no declarations found in ${HEADER}")
endif()
message(STATUS "${declared_count} exported names match the header")
