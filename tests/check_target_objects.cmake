# Whether the objects that are compiled for one target keep their functions to themselves. A weak function may be merged
# with its copies in other objects, and the one that is kept would run on processors that it isn't made for.
#
#   cmake -DOBJECTS=... -DNM=... -P check_target_objects.cmake
list(FILTER OBJECTS INCLUDE REGEX "_(ssse3|avx2)\\.cpp\\.o$")
list(LENGTH OBJECTS count)
if(count LESS 4)
    message(FATAL_ERROR "objects of two modules for two targets expected, not ${OBJECTS}")
endif()
foreach(object IN LISTS OBJECTS)
    execute_process(COMMAND ${NM} --defined-only --demangle ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "[^\n]* W [^\n]*" weak "${symbols}")
    if(weak)
        message(SEND_ERROR "weak functions in ${object}:\n${weak}")
    endif()
endforeach()
