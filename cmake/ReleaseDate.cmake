# DORN_RELEASE_DATE, YEAR-MONTH-DAY, from the newest heading of the list of changes, which must be of
# the version that is being built.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
file(STRINGS ${PROJECT_SOURCE_DIR}/CHANGELOG.md headings REGEX "^## ")
list(GET headings 0 heading)
if(NOT heading MATCHES "^## ([0-9.]+) \\(([0-9]+-[0-9]+-[0-9]+)\\)$" OR
   NOT CMAKE_MATCH_1 VERSION_EQUAL PROJECT_VERSION)
    message(FATAL_ERROR "CHANGELOG.md begins with \"${heading}\", not with ${PROJECT_VERSION} and a date")
endif()
set(DORN_RELEASE_DATE ${CMAKE_MATCH_2})
