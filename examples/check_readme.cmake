# The README shows the example as it is built here, to the letter.
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "```c\n${example}```\n" position)
if(position EQUAL -1)
    message(FATAL_ERROR "${README} doesn't show ${EXAMPLE} as it stands")
endif()
