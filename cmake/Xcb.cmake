# The library that speaks to the X server, as XCB::XCB.
find_path(XCB_INCLUDE_DIR xcb/xcb.h REQUIRED)
find_library(XCB_LIBRARY xcb REQUIRED)
if(NOT TARGET XCB::XCB)
    add_library(XCB::XCB UNKNOWN IMPORTED)
    set_target_properties(XCB::XCB PROPERTIES
        IMPORTED_LOCATION ${XCB_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${XCB_INCLUDE_DIR})
endif()
