# Every target of ours is built with these; headers of libraries are SYSTEM and stay quiet.
add_library(dorn_warnings INTERFACE)
target_compile_options(dorn_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2 -Wimplicit-fallthrough -Wundef)
# g++ 12 reports copies of impossible lengths inside its own std::string when it optimises.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(dorn_warnings INTERFACE -Wno-restrict -Wno-stringop-overflow)
endif()
if(DORN_WERROR)
    target_compile_options(dorn_warnings INTERFACE -Werror)
endif()
