# What `cmake --install` puts where, and the packages that `cpack` makes of it: a .deb here, a .zip for Windows.
include(CMakePackageConfigHelpers)

set(kesto_include ${CMAKE_INSTALL_INCLUDEDIR}/kesto)
set(kesto_cmake ${CMAKE_INSTALL_LIBDIR}/cmake/KESTO)

# The library, its header, and how other build systems find them.
install(TARGETS KESTO EXPORT KESTO INCLUDES DESTINATION ${kesto_include})
install(FILES src/AUEglobals.h DESTINATION ${kesto_include})
install(EXPORT KESTO NAMESPACE KESTO:: FILE KESTOConfig.cmake DESTINATION ${kesto_cmake})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KESTOConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KESTOConfigVersion.cmake DESTINATION ${kesto_cmake})
if(WIN32)
    install(FILES src/KESTO.def DESTINATION ${CMAKE_INSTALL_LIBDIR}) # other compilers make their import library of it
endif()
file(RELATIVE_PATH KESTO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" KESTO_PREFIX ${KESTO_PREFIX})
configure_file(cmake/kesto.pc.in kesto.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kesto.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET kesto)
    install(TARGETS kesto)
endif()
if(TARGET kesto_netcdf)
    install(TARGETS kesto_netcdf LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/kesto)
endif()
file(GLOB man_pages CONFIGURE_DEPENDS command/commands/*.1)
install(FILES ${man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
if(TARGET kesto)
    install(FILES command/commands/completion/kesto.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME kesto)
endif()

# The Python package, the examples, the small hosts, and what there is to read.
if(WIN32)
    set(kesto_python ${CMAKE_INSTALL_DATADIR}/kesto/python)
else()
    set(kesto_python lib/python3/dist-packages) # where Debian's Python looks, under /usr
endif()
install(DIRECTORY python/kesto DESTINATION ${kesto_python} PATTERN __pycache__ EXCLUDE PATTERN .mypy_cache EXCLUDE)
install(DIRECTORY examples hosts DESTINATION ${CMAKE_INSTALL_DATADIR}/kesto
    PATTERN CMakeLists.txt EXCLUDE PATTERN check*.py EXCLUDE PATTERN Layout.cs EXCLUDE PATTERN layout.pas EXCLUDE
    PATTERN __pycache__ EXCLUDE)
string(TOLOWER ${PROJECT_NAME} package)
# The pages stand beside what they link to, as in the source tree: on Windows as files, elsewhere by symbolic links.
if(WIN32)
    set(documents ${CMAKE_INSTALL_DATADIR}/kesto)
    install(FILES src/AUEglobals.h DESTINATION ${documents}/src)
else()
    set(documents ${CMAKE_INSTALL_DATADIR}/doc/${package})
    file(RELATIVE_PATH headers /${documents} /${kesto_include})
    file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/beside_pages)
    foreach(link IN ITEMS examples:../../kesto/examples hosts:../../kesto/hosts python:../../../${kesto_python} src:${headers})
        string(REGEX MATCH "^(.*):(.*)$" link ${link})
        file(CREATE_LINK ${CMAKE_MATCH_2} ${PROJECT_BINARY_DIR}/beside_pages/${CMAKE_MATCH_1} SYMBOLIC)
    endforeach()
    install(DIRECTORY ${PROJECT_BINARY_DIR}/beside_pages/ DESTINATION ${documents})
endif()
install(FILES README.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs DESTINATION ${documents}
    FILES_MATCHING PATTERN *.md PATTERN *.toml PATTERN *.csv PATTERN *.py)

set(CPACK_PACKAGE_NAME ${package})
set(CPACK_PACKAGE_VENDOR "The KESTO authors")
set(CPACK_PACKAGE_CONTACT "The KESTO authors <kesto@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME ${package}-${PROJECT_VERSION}-windows-x86_64)
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_SECTION science)
    set(CPACK_DEBIAN_PACKAGE_RECOMMENDS graphviz) # a program that kesto draw and kesto report start
    # What the Python package needs when it is used, and its extras.
    set(CPACK_DEBIAN_PACKAGE_SUGGESTS "python3-xarray, python3-netcdf4, python3-scipy, python3-matplotlib, python3-tqdm, python3-emcee, python3-distributed")
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
        "The library libKESTO for programs that embed it, with header and examples, and the command kesto,\n which runs models written as text.")
endif()
include(CPack)
