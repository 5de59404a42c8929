set(packages ${PROJECT_SOURCE_DIR}/build/package)
set(tree ${CMAKE_BINARY_DIR}/tree.tar)

add_test(NAME Packages.AreMade COMMAND ${PROJECT_SOURCE_DIR}/dev/package)
set_tests_properties(Packages.AreMade PROPERTIES FIXTURES_SETUP packages LABELS package
  TIMEOUT 600)

# connect_package_tests(<file> [<fixture>...])
function(connect_package_tests file)
  connect_program_tests(package/${file} LABEL package ONE_ZONE FIXTURES packages ${ARGN}
    ENVIRONMENT CONNECT_PACKAGES=${packages} CONNECT_TREE=${tree})
endfunction()

connect_package_tests(test_archives.py)
connect_package_tests(test_completions.py)
connect_package_tests(test_deb.py)
connect_package_tests(test_files.py)

# A small system of the host's release with a session bus, as every desktop has it.
file(STRINGS /etc/os-release codename REGEX "^VERSION_CODENAME=")
string(REGEX REPLACE ".*=" "" codename "${codename}")
add_test(NAME Tree.IsMade COMMAND ${PROJECT_SOURCE_DIR}/tests/package/make-tree
  "${codename}" ${tree} dbus-user-session libglib2.0-bin procps)
set_tests_properties(Tree.IsMade PROPERTIES FIXTURES_SETUP tree LABELS package TIMEOUT 600
  SKIP_RETURN_CODE 77)
connect_package_tests(test_life.py tree)
connect_program_tests(clients/test_unit.py LABEL clients ONE_ZONE FIXTURES packages tree
  ENVIRONMENT CONNECT_PACKAGES=${packages} CONNECT_TREE=${tree})
