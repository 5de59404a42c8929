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

# Containers often refuse the namespaces that a system of its own takes.
execute_process(COMMAND id -u OUTPUT_VARIABLE user OUTPUT_STRIP_TRAILING_WHITESPACE)
if(user EQUAL 0)
  set(own_user "")
else()
  set(own_user --user --map-root-user --map-auto)
endif()
execute_process(COMMAND unshare ${own_user} --mount --pid --fork mount -t tmpfs tmpfs /mnt
  RESULT_VARIABLE refused ERROR_QUIET)
if(refused)
  message(WARNING "No namespaces here: no test installs the packages")
  return()
endif()

add_test(NAME Tree.IsMade COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/package/make-tree ${tree})
set_tests_properties(Tree.IsMade PROPERTIES FIXTURES_SETUP tree LABELS package TIMEOUT 600)
connect_package_tests(test_life.py tree)

# A user manager in such a system takes a control group, which is root's to make.
execute_process(COMMAND unshare --mount sh -c [[
    group=/mnt/connect-test-$$
    mount -t cgroup2 cgroup2 /mnt && mkdir $group && rmdir $group]]
  RESULT_VARIABLE refused ERROR_QUIET)
if(refused)
  message(WARNING "No control groups here: no test runs the unit under a user manager")
else()
  connect_package_tests(test_unit.py tree)
endif()
