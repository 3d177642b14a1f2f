# Every target of ours is built with these; headers of libraries are SYSTEM and stay quiet.
add_library(dorn_warnings INTERFACE)
target_compile_options(dorn_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough -Wundef)
if(DORN_WERROR)
    target_compile_options(dorn_warnings INTERFACE -Werror)
endif()
