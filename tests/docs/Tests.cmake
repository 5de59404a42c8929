# The documents, by the means of the road's tests.

foreach(subject IN ITEMS deploy links tables troubleshooting)
  connect_program_tests(docs/test_${subject}.py LABEL docs ONE_ZONE)
endforeach()

add_test(NAME Pictures.ShowWhatHappens
  COMMAND ${CONNECT_PYTHON} -B ${PROJECT_SOURCE_DIR}/docs/pictures/make.py --check
    ${CMAKE_BINARY_DIR}/stage)
set_tests_properties(Pictures.ShowWhatHappens PROPERTIES
  LABELS docs FIXTURES_REQUIRED stage TIMEOUT 120)
