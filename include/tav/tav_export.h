/* Linkage macros shared by the public headers. */
#ifndef TAV_EXPORT_H
#define TAV_EXPORT_H

#ifdef __cplusplus
#define TAV_EXTERN_C extern "C"
#define TAV_BEGIN_DECLS extern "C" {
#define TAV_END_DECLS }
#else
#define TAV_EXTERN_C extern
#define TAV_BEGIN_DECLS
#define TAV_END_DECLS
#endif

/* Marks a definition as part of the library's exported interface. */
#define TAV_API __attribute__((visibility("default")))

#endif
