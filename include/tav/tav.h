/* The whole public interface of libtav. */
#ifndef TAV_H
#define TAV_H

#include <tav/tav_blas.h>
#include <tav/tav_cblas.h>
#include <tav/tav_cbwr.h>
#include <tav/tav_cpu.h>
#include <tav/tav_error.h>
#include <tav/tav_memory.h>
#include <tav/tav_omatcopy.h>
#include <tav/tav_provider.h>
#include <tav/tav_threads.h>
#include <tav/tav_verbose.h>
#include <tav/tav_version.h>
#include <tav/tav_vml.h>

#endif
