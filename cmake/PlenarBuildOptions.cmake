# Warnings, sanitizers and visibility shared by everything in the project.
add_library(plenar_build_options INTERFACE)

target_compile_options(plenar_build_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow
    # GCC 12 finds overlaps in std::string's operator+ that can't be (its bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast>)
if(PLENAR_WERROR)
    target_compile_options(plenar_build_options INTERFACE -Werror)
endif()

if(PLENAR_SANITIZE)
    target_compile_options(plenar_build_options INTERFACE
        -fsanitize=${PLENAR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(plenar_build_options INTERFACE -fsanitize=${PLENAR_SANITIZE})
endif()
