# The build date as "Mon D YYYY" in UTC (e.g. "Nov 4 2026"). SOURCE_DATE_EPOCH,
# when set, replaces the clock so that builds can be reproduced.
function(ornex_build_date out_var)
  string(TIMESTAMP month_number "%m" UTC)
  string(TIMESTAMP day "%d" UTC)
  string(TIMESTAMP year "%Y" UTC)
  set(month_names Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec)
  math(EXPR month_index "${month_number} - 1")
  list(GET month_names ${month_index} month)
  math(EXPR day "${day}")
  set(${out_var} "${month} ${day} ${year}" PARENT_SCOPE)
endfunction()

# Script mode, for the tests: cmake -P ornex_build_date.cmake prints the date.
if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  ornex_build_date(date)
  message("${date}")
endif()
