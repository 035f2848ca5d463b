#include "output_check.h"

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace plenar_tool {

void FlushOutput() {
    errno = 0;
    std::cout.flush();
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0 || !std::cout) {
        throw std::runtime_error("can't write standard output: " +
                                 std::generic_category().message(errno != 0 ? errno : EIO));
    }
}

}  // namespace plenar_tool
