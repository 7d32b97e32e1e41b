# Run by CPack on what it has gathered, before it packs: what Debian wants otherwise than a plain
# installation. The licence stands in `copyright`, texts are compressed, zsh looks elsewhere, and a
# static library goes without the symbols of its debugger.
set(source ${CPACK_TOWNSKIN_SOURCE})

# gzip -9n, as the policy asks: no name, no time.
function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The files that each package has.
function(documents prefix package)
  set(folder ${prefix}/share/doc/${package})
  file(COPY ${source}/packaging/copyright DESTINATION ${folder})
  configure_file(${source}/packaging/changelog ${folder}/changelog.Debian COPYONLY)
  compress(${folder}/changelog.Debian)
  file(CHMOD ${folder}/changelog.Debian.gz ${folder}/copyright
       PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  file(MAKE_DIRECTORY ${prefix}/share/lintian/overrides)
  file(WRITE ${prefix}/share/lintian/overrides/${package}
       "# The package is not meant for Debian's archive: there is no bug that asks for it.\n"
       "${package}: initial-upload-closes-no-bugs\n")
  file(CHMOD ${prefix}/share/lintian/overrides/${package}
       PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

set(programs ${CPACK_TEMPORARY_DIRECTORY}/programs/usr)
documents(${programs} townskin)
file(REMOVE ${programs}/share/doc/townskin/LICENSE)
file(RENAME ${programs}/share/doc/townskin/CHANGELOG.md ${programs}/share/doc/townskin/changelog)
compress(${programs}/share/doc/townskin/changelog)
file(RENAME ${programs}/share/zsh/site-functions ${programs}/share/zsh/vendor-completions)
file(GLOB pages ${programs}/share/man/man1/*.1)
foreach(page ${pages})
  compress(${page})
endforeach()

set(development ${CPACK_TEMPORARY_DIRECTORY}/development/usr)
documents(${development} libtownskin-dev)
execute_process(COMMAND strip --strip-debug --remove-section=.comment --remove-section=.note
                        --enable-deterministic-archives
                        ${development}/lib/${CPACK_TOWNSKIN_MULTIARCH}/libtownskin_core.a
                COMMAND_ERROR_IS_FATAL ANY)
