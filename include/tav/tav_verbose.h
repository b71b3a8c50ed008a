/* Verbose mode: one line per instrumented call with its arguments and elapsed time. */
#ifndef TAV_VERBOSE_H
#define TAV_VERBOSE_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

/* Integer interfaces named in the banner. */
#define TAV_IFACE_LP64 1
#define TAV_IFACE_ILP64 2

/* mode 0 or 1 sets the switch and returns it; anything else returns -1. */
int tav_serv_verbose(int mode);
int TAV_Verbose(int mode);
int TAV_VERBOSE(const int* mode);
int tav_serv_verbose_mode(void);
/* Sets the file that verbose lines are appended to; 0 on success, 1 on failure. */
int tav_serv_verbose_output_file(const char* name);
int TAV_Verbose_Output_File(const char* name);

void tav_serv_print_verbose_info(int interface_kind, const char* text, double seconds);
/* The forms the BLAS and LAPACK entries call (this build's integer interface is lp64). */
int tav_serv_iface_verbose_mode(void);
void tav_serv_iface_print_verbose_info(const char* text, double seconds);

TAV_END_DECLS

#endif
