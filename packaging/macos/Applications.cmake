# The archive holds /Applications too: with the mode that it has on every Mac.
file(GLOB folders ${CPACK_TEMPORARY_DIRECTORY}/Applications ${CPACK_TEMPORARY_DIRECTORY}/*/Applications)
file(CHMOD ${folders} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_WRITE GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
