# Compiler runs go through ccache where it is installed. Paths are hashed relative to the source
# directory, so that a second checkout finds what the first one built; the sloppiness is what ccache
# asks for to cache compilations that use a precompiled header.
find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-fpch-preprocess)
    else()
        add_compile_options(-Xclang -fno-pch-timestamp)
    endif()
endif()
