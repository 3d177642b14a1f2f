# Debug builds link a dozen test programs of 40 MB each; lld does that in a fifth of the time.
find_program(LLD ld.lld)
if(LLD AND NOT CMAKE_BUILD_TYPE STREQUAL "Release")
    add_link_options(-fuse-ld=lld)
endif()
