set(packages ${PROJECT_SOURCE_DIR}/build/package)

add_test(NAME Packages.AreMade COMMAND ${PROJECT_SOURCE_DIR}/dev/package)
set_tests_properties(Packages.AreMade PROPERTIES FIXTURES_SETUP packages LABELS package
  TIMEOUT 600)

# connect_tree(<suite>): the archive of a small system of a release with a session bus, as every
# desktop has it, and the fixture that makes it.
function(connect_tree suite)
  set(archive ${CMAKE_BINARY_DIR}/${suite}.tar)
  add_test(NAME Tree.IsMade@${suite} COMMAND ${PROJECT_SOURCE_DIR}/tests/package/make-tree
    ${suite} ${archive} dbus-user-session libglib2.0-bin procps)
  set_tests_properties(Tree.IsMade@${suite} PROPERTIES FIXTURES_SETUP tree_${suite} LABELS package
    TIMEOUT 600 SKIP_RETURN_CODE 77)
endfunction()

# connect_package_tests(<file> [<argument of connect_program_tests>...])
function(connect_package_tests file)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TREE" "")
  set(tree "")
  if(arg_TREE)
    set(tree tree_${arg_TREE})
  endif()
  connect_program_tests(${file} ONE_ZONE FIXTURES packages ${tree} ${arg_UNPARSED_ARGUMENTS}
    ENVIRONMENT CONNECT_PACKAGES=${packages} CONNECT_TREE=${CMAKE_BINARY_DIR}/${arg_TREE}.tar)
endfunction()

foreach(subject IN ITEMS archives completions deb files)
  connect_package_tests(package/test_${subject}.py LABEL package)
endforeach()

file(STRINGS /etc/os-release release REGEX "^VERSION_CODENAME=")
string(REGEX REPLACE ".*=" "" release "${release}")
connect_tree(${release})
connect_package_tests(package/test_life.py TREE ${release} LABEL package)
connect_package_tests(clients/test_unit.py TREE ${release} LABEL clients)
if(release STREQUAL "bookworm")
  # A package outlives an upgrade of the system.
  connect_tree(trixie)
  connect_package_tests(package/test_life.py AS package/test_life@trixie TREE trixie LABEL package)
endif()
