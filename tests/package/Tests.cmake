set(packages ${PROJECT_SOURCE_DIR}/build/package)

add_test(NAME Packages.AreMade COMMAND ${PROJECT_SOURCE_DIR}/dev/package)
set_tests_properties(Packages.AreMade PROPERTIES FIXTURES_SETUP packages LABELS package
  TIMEOUT 600)

# A system in which they are installed.
set(tree ${CMAKE_BINARY_DIR}/tree.tar)
add_test(NAME Tree.IsMade COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/package/make-tree ${tree})
set_tests_properties(Tree.IsMade PROPERTIES FIXTURES_SETUP tree LABELS package TIMEOUT 600)

function(connect_package_tests file)
  connect_program_tests(package/${file} LABEL package ONE_ZONE FIXTURES packages ${ARGN}
    ENVIRONMENT CONNECT_PACKAGES=${packages} CONNECT_TREE=${tree})
endfunction()

connect_package_tests(test_archives.py)
connect_package_tests(test_completions.py)
connect_package_tests(test_deb.py)
connect_package_tests(test_files.py)
connect_package_tests(test_life.py tree)
