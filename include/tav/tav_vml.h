/* Vector math: mode word, error status and callback services. */
#ifndef TAV_VML_H
#define TAV_VML_H

#include <tav/tav_export.h>

TAV_BEGIN_DECLS

/* Accuracy */
#define VML_LA 0x00000001
#define VML_HA 0x00000002
#define VML_EP 0x00000003
/* Floating-point precision control */
#define VML_DEFAULT_PRECISION 0x00000000
#define VML_FLOAT_CONSISTENT 0x00000010
#define VML_DOUBLE_CONSISTENT 0x00000020
#define VML_RESTORE 0x00000030
/* Error mode */
#define VML_ERRMODE_IGNORE 0x00000100
#define VML_ERRMODE_ERRNO 0x00000200
#define VML_ERRMODE_STDERR 0x00000400
#define VML_ERRMODE_EXCEPT 0x00000800
#define VML_ERRMODE_CALLBACK 0x00001000
#define VML_ERRMODE_NOERR 0x00002000
#define VML_ERRMODE_DEFAULT (VML_ERRMODE_ERRNO | VML_ERRMODE_CALLBACK | VML_ERRMODE_EXCEPT)
/* Traps */
#define VML_TRAP_INVALID 0x01000000
#define VML_TRAP_DIVBYZERO 0x02000000
#define VML_TRAP_OVERFLOW 0x04000000
#define VML_TRAP_UNDERFLOW 0x08000000
/* Field masks */
#define VML_ACCURACY_MASK 0x0000000F
#define VML_FPUMODE_MASK 0x000000F0
#define VML_ERRMODE_MASK 0x0000FF00
#define VML_FTZDAZ_MASK 0x003C0000
#define VML_TRAP_EXCEPTIONS_MASK 0x0F000000

/* Status codes */
#define VML_STATUS_OK 0
#define VML_STATUS_BADSIZE (-1)
#define VML_STATUS_BADMEM (-2)
#define VML_STATUS_ERRDOM 1
#define VML_STATUS_SING 2
#define VML_STATUS_OVERFLOW 3
#define VML_STATUS_UNDERFLOW 4

/* Context of one failing element, handed to the error callback. Values of every element type
   are widened to double; the imaginary parts are used by the complex functions only. */
typedef struct {
  int code;
  int index;
  double a1;
  double a2;
  double r1;
  double r2;
  char function_name[64];
  int function_name_length;
  double a1_im;
  double a2_im;
  double r1_im;
  double r2_im;
} tav_vml_error_context;

/* Returns non-zero when it has handled the error. */
typedef int (*tav_vml_error_callback)(tav_vml_error_context* context);

unsigned int vmlSetMode(unsigned int mode);
unsigned int vmlGetMode(void);
int vmlSetErrStatus(int status);
int vmlGetErrStatus(void);
int vmlClearErrStatus(void);
tav_vml_error_callback vmlSetErrorCallBack(tav_vml_error_callback callback);
tav_vml_error_callback vmlGetErrorCallBack(void);
tav_vml_error_callback vmlClearErrorCallBack(void);

/* Fortran forms: arguments by reference; both spellings name the same function. The initial mode
   of every thread comes from the environment variable TAV_VML_MODE (VML_ tokens joined by commas). */
unsigned int VMLSETMODE_(const unsigned int* mode);
unsigned int vmlsetmode_(const unsigned int* mode);
unsigned int VMLGETMODE_(void);
unsigned int vmlgetmode_(void);
int VMLSETERRSTATUS_(const int* status);
int vmlseterrstatus_(const int* status);
int VMLGETERRSTATUS_(void);
int vmlgeterrstatus_(void);
int VMLCLEARERRSTATUS_(void);
int vmlclearerrstatus_(void);
tav_vml_error_callback VMLSETERRORCALLBACK_(const tav_vml_error_callback* callback);
tav_vml_error_callback vmlseterrorcallback_(const tav_vml_error_callback* callback);
tav_vml_error_callback VMLGETERRORCALLBACK_(void);
tav_vml_error_callback vmlgeterrorcallback_(void);
tav_vml_error_callback VMLCLEARERRORCALLBACK_(void);
tav_vml_error_callback vmlclearerrorcallback_(void);

TAV_END_DECLS

#endif
