// The clock and the bounded formatter with which instrumented entry points time and describe a
// call for the verbose line.
#pragma once

#include <cstddef>

extern "C" {

// Seconds from a monotonic clock; only differences of two readings are meaningful.
double tav_serv_iface_dsecnd(void);

// Formats into `buffer` (of `buffer_size` bytes) at most `count` characters, fewer when the
// buffer is smaller, and always terminates it. Returns the number of characters written, or -1
// when the text was cut or could not be formatted.
int tav_serv_snprintf_s(char* buffer, size_t buffer_size, size_t count, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
}
