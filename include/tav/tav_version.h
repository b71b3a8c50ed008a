/* The version record and the version string. */
#ifndef TAV_VERSION_H
#define TAV_VERSION_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

typedef struct {
  int MajorVersion;
  int MinorVersion;
  int UpdateVersion;
  const char* ProductStatus;
  const char* Build;
  const char* Processor;
  const char* Platform;
} TAVVersion;

void tav_serv_get_version(TAVVersion* version);
void TAV_Get_Version(TAVVersion* version);
/* Writes the version text padded with blanks to `length`; no terminator when it fills the buffer. */
void tav_serv_get_version_string(char* buffer, int length);
void TAV_Get_Version_String(char* buffer, int length);
/* Fortran form: the buffer's length is the hidden character-length argument. */
void TAV_GET_VERSION_STRING(char* buffer, int length);

TAV_END_DECLS

#endif
