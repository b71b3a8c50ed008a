/* Error reporting: the message printer, the xerbla chain and its handler slot. */
#ifndef TAV_ERROR_H
#define TAV_ERROR_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

/* An error handler: routine name (not necessarily terminated), the info value, the name's length. */
typedef void (*tav_xerbla_handler)(const char* name, const int* info, int name_length);

/* Prints message `number` of the catalog, formatted with the variable arguments, and a newline.
   destination 1 is the standard error stream, any other value the standard output. */
int tav_serv_print(int destination, int number, int argument_count, ...);
/* The text of message `number`, formatted when argument_count > 0 (buffer reused by the next call). */
char* tav_serv_get_msg(int number, int argument_count, ...);

void tav_serv_xerbla(const char* name, const int* info, int name_length);
tav_xerbla_handler tav_serv_set_xerbla(tav_xerbla_handler handler);
void tav_serv_set_xerbla_interface(tav_xerbla_handler handler);
void tav_serv_default_xerbla(const char* name, const int* info, int name_length);

/* The replaceable chain: each calls the next, the last one the default handler. */
void cdecl_xerbla(const char* name, const int* info, int name_length);
void xerbla(const char* name, const int* info, int name_length);
void xerbla_(const char* name, const int* info, int name_length);
void XERBLA_(const char* name, const int* info, int name_length);
void XERBLA(const char* name, const int* info, int name_length);

void cblas_xerbla(const char* name, int position);
void cblas_xerbla_malloc_error(const char* name);

int tav_serv_check_ptr(const void* pointer, const char* name);
int tav_serv_check_ptr_and_warn(const void* pointer, const char* name);

TAV_END_DECLS

#endif
