// The exceptions of the library. Every failure is one of these or comes from the standard library; the guard of the
// exported functions (api/guard.h) is the only place that catches them.
#pragma once

#include <stdexcept>

class plenar_exception : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Parameters or plane contents that the library refuses.
class invalid_argument : public plenar_exception {
public:
    using plenar_exception::plenar_exception;
};

// A missing buffer, or a payload whose boxes don't fit together.
class invalid_buffer : public plenar_exception {
public:
    using plenar_exception::plenar_exception;
};

// A coded alpha plane that leaves its buffers.
class out_of_range : public plenar_exception {
public:
    using plenar_exception::plenar_exception;
};
