# The date of the release, from the changelog, whose newest entry must be this version's.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/CHANGELOG.md")
file(STRINGS "${CMAKE_SOURCE_DIR}/CHANGELOG.md" releases REGEX "^## \\[")
list(GET releases 0 newest)
string(REGEX MATCH "^## \\[(.+)\\] - ([0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9])$" release "${newest}")
if(NOT release OR NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
  message(FATAL_ERROR "CHANGELOG.md begins with \"${newest}\", but this is version ${PROJECT_VERSION}")
endif()
set(TESKREAD_RELEASE_DATE "${CMAKE_MATCH_2}")
