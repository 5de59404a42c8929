# The documents, by the means of the road's tests.

function(connect_document_tests file)
  connect_program_tests(docs/${file} LABEL docs ONE_ZONE FIXTURES ${ARGN} ENVIRONMENT
    CONNECT_PACKAGES=${packages})
endfunction()

connect_document_tests(test_deploy.py)
connect_document_tests(test_installed.py packages)
connect_document_tests(test_links.py)
connect_document_tests(test_tables.py)
connect_document_tests(test_troubleshooting.py)

add_test(NAME Pictures.ShowWhatHappens
  COMMAND ${CONNECT_PYTHON} -B ${PROJECT_SOURCE_DIR}/docs/pictures/make.py --check
    ${CMAKE_BINARY_DIR}/stage)
set_tests_properties(Pictures.ShowWhatHappens PROPERTIES
  LABELS docs FIXTURES_REQUIRED stage TIMEOUT 120)
