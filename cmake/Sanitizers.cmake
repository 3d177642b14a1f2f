# DORN_SANITIZE=address,undefined or thread: the whole program and its tests under a sanitizer.
if(DORN_SANITIZE)
    add_compile_options(-fsanitize=${DORN_SANITIZE} -fno-omit-frame-pointer -g
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${DORN_SANITIZE})
endif()
