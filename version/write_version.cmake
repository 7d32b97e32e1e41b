# Writes version.cpp with the commit of the sources, which changes only when one of its words does:
#     cmake -DSOURCE=... -DTEMPLATE=... -DTARGET=... -DVERSION=... -DCOMPILER=... -P write_version.cmake
# The commit is that of a repository whose top is SOURCE. A tarball has none, even where it was
# unpacked below somebody else's repository.
execute_process(COMMAND git -C ${SOURCE} rev-parse --show-prefix
                OUTPUT_VARIABLE below OUTPUT_STRIP_TRAILING_WHITESPACE
                RESULT_VARIABLE failed ERROR_QUIET)
set(COMMIT)
if(NOT failed AND below STREQUAL "")
  execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --exclude=*
                  OUTPUT_VARIABLE COMMIT OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(COMMIT STREQUAL "")
  set(COMMIT unknown)
endif()
configure_file(${TEMPLATE} ${TARGET} @ONLY)
