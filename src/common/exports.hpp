// Macros that mark the library's exported names; every export goes through one of them.
#pragma once

#include <tav/tav_export.h>

// Defines an exported C function: TAV_EXPORT int query_capability(int code) { ... }
#define TAV_EXPORT extern "C" TAV_API

// Exports `name` as one more name of the exported function `target`, with the same signature.
#define TAV_EXPORT_ALIAS(name, target) \
  extern "C" TAV_API __attribute__((alias(#target))) decltype(target) name
