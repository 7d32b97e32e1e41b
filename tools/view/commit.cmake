# Writes the commit that is built into a header, which changes only when the commit does:
#     cmake -DSOURCE=... -DHEADER=... -P commit.cmake
execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --exclude=*
                OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
set(text "#pragma once\n#define TOWNSKIN_COMMIT \"${commit}\"\n")
if(EXISTS ${HEADER})
  file(READ ${HEADER} before)
endif()
if(NOT "${before}" STREQUAL "${text}")
  file(WRITE ${HEADER} "${text}")
endif()
