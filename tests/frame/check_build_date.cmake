function(expect_date epoch expected)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${epoch}
      ${CMAKE_COMMAND} -P ${DATE_SCRIPT}
    ERROR_VARIABLE printed ERROR_STRIP_TRAILING_WHITESPACE)
  if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "SOURCE_DATE_EPOCH=${epoch}: got '${printed}', expected '${expected}'")
  endif()
endfunction()

expect_date(0 "Jan 1 1970")
expect_date(1700000000 "Nov 14 2023")
# 2024-03-01T00:00:00Z: day without padding, month after a leap February.
expect_date(1709251200 "Mar 1 2024")
# One second earlier is still February.
expect_date(1709251199 "Feb 29 2024")
expect_date(1733011200 "Dec 1 2024")
# Days 08 and 09 must not be read as octal.
expect_date(1709856000 "Mar 8 2024")
expect_date(1709942400 "Mar 9 2024")
