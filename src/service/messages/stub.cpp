// TEMPORARY stand-in until the message catalog lands: prints nothing but a marker.
#include <tav/tav_error.h>

#include <cstdio>

#include "common/exports.hpp"

TAV_EXPORT int tav_serv_print(int destination, int number, int argument_count, ...) {
  return std::printf("message %d\n", number);
}
