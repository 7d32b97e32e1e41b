# What is installed: the programs with their pages and completions, the scripts that print tables,
# documents and examples (component programs); library, headers and the files of
# find_package(townskin) (component development).
set(programs townskin townskin_flow townskin_check townskin_case townskin_view)
foreach(program ${programs})
  if(TARGET ${program})
    install(FILES man/${program}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
    install(FILES completions/townskin.bash RENAME ${program} COMPONENT programs
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES completions/${program}.fish COMPONENT programs
            DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  endif()
endforeach()
install(FILES completions/_townskin COMPONENT programs
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(DIRECTORY tools/ DESTINATION ${CMAKE_INSTALL_DATADIR}/townskin/tools COMPONENT programs
        USE_SOURCE_PERMISSIONS FILES_MATCHING PATTERN "*.py"
        PATTERN case EXCLUDE PATTERN view EXCLUDE PATTERN __pycache__ EXCLUDE)
install(FILES LICENSE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)

# A user of the headers rounds products and sums as the library does.
target_compile_features(townskin_core INTERFACE cxx_std_20)
target_compile_options(townskin_core INTERFACE $<INSTALL_INTERFACE:-ffp-contract=off>)
set_target_properties(townskin_core PROPERTIES EXPORT_NAME core)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/townskin)
install(TARGETS townskin_core EXPORT townskin ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        COMPONENT development)
install(DIRECTORY src/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/townskin COMPONENT development
        FILES_MATCHING PATTERN "*.hpp")
install(EXPORT townskin NAMESPACE townskin:: FILE townskinTargets.cmake
        DESTINATION ${package_folder} COMPONENT development)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/townskinConfigVersion.cmake
                                 COMPATIBILITY SameMinorVersion)
install(FILES cmake/townskinConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/townskinConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

# Packages of Debian: `cpack` in a build of the preset "package". Who gives them to others sets
# CPACK_PACKAGE_CONTACT to an address of their own.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL programs development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/packaging/staged.cmake)
set(CPACK_TOWNSKIN_SOURCE ${CMAKE_SOURCE_DIR})
set(CPACK_TOWNSKIN_MULTIARCH ${CMAKE_LIBRARY_ARCHITECTURE})
set(CPACK_PACKAGE_CONTACT
    "townskin maintainers <maintainers@townskin.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME townskin)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_DEPENDS python3)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SUGGESTS "chromium | www-browser, paraview")
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION
    "townskin marches one heat balance for each patch of a district (ground,
walls, roofs, windows, water, panels, trees) through a day that repeats or
through real dates, and gives surface temperatures, radiation, heat fluxes
and the loads of its buildings. townskin_flow computes the air over it,
townskin_case makes a run from the open data of a city, townskin_check
tells the faults of one, townskin_view shows results.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtownskin-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "The core of townskin, which computes how the surfaces of an urban district
heat and cool, for use in other programs: headers, static library and the
files by which CMake finds both.")
include(CPack)
