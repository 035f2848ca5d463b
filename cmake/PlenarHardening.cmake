# What makes a fault in the shipped library harder to exploit: one that the checks on hostile bytes let through stops the
# process instead of running on. tests/check_hardening.cmake looks for all of it in the built library.
#
#   plenar_harden(SOURCES SHARED)    SOURCES: the target that compiles the library, SHARED: the one that links it
include(CheckCXXCompilerFlag)

function(plenar_harden sources shared)
    # Frames with arrays are guarded, and large frames touch every page, so that none jumps over the guard page.
    target_compile_options(${sources} PRIVATE -fstack-protector-strong -fstack-clash-protection)

    # Copies into objects of known size are checked. That takes optimisation, and the sanitizers see more without it.
    set(fortified 0)
    if(NOT PLENAR_SANITIZE)
        set(fortified $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
    endif()
    # The first option is for compilers that define it by themselves.
    target_compile_options(${sources} PRIVATE $<${fortified}:-U_FORTIFY_SOURCE> $<${fortified}:-D_FORTIFY_SOURCE=2>)
    set_target_properties(${shared} PROPERTIES PLENAR_FORTIFIED ${fortified})

    # Where the processor watches calls and returns, jumps through changed pointers and addresses end the process.
    check_cxx_compiler_flag(-fcf-protection=full PLENAR_HAS_CF_PROTECTION)
    if(PLENAR_HAS_CF_PROTECTION)
        target_compile_options(${sources} PRIVATE -fcf-protection=full)
        set_target_properties(${shared} PROPERTIES PLENAR_CF_PROTECTED 1)
    endif()

    # The standard containers check indices, but for the loops over samples and tokens.
    get_target_property(files ${sources} SOURCES)
    list(FILTER files EXCLUDE REGEX "kernels|band_(de|en)coder")
    set_property(SOURCE ${files} APPEND PROPERTY COMPILE_DEFINITIONS _GLIBCXX_ASSERTIONS)

    # All addresses are bound when the library is loaded, and their table is read-only from then on.
    target_link_options(${shared} PRIVATE -Wl,-z,relro,-z,now -Wl,-z,noexecstack)
endfunction()
