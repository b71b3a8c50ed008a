/* Vector math: mode word, error status and callback services. */
#ifndef TAV_VML_H
#define TAV_VML_H

#include <tav/tav_export.h>
#include <tav/tav_types.h>

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


/* Vector functions r[i] = a[i] op b[i] for i < n: v?Add, v?Sub, v?Mul, v?Div, v?Pow with the
   prefixes s (float), d (double), c (tav_complex8), z (tav_complex16). n < 0 and null arrays are
   reported through xerbla and the status; n = 0 does nothing. The twins vm? apply `mode` for the
   call (as vmlSetMode does) and set the previous mode back afterwards. The Fortran forms take
   every argument by reference. */
void vsAdd(int n, const float* a, const float* b, float* r);
void vmsAdd(int n, const float* a, const float* b, float* r, unsigned int mode);
void VSADD_(const int* n, const float* a, const float* b, float* r);
void vsadd_(const int* n, const float* a, const float* b, float* r);
void VMSADD_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vmsadd_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vdAdd(int n, const double* a, const double* b, double* r);
void vmdAdd(int n, const double* a, const double* b, double* r, unsigned int mode);
void VDADD_(const int* n, const double* a, const double* b, double* r);
void vdadd_(const int* n, const double* a, const double* b, double* r);
void VMDADD_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vmdadd_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vcAdd(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vmcAdd(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, unsigned int mode);
void VCADD_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vcadd_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void VMCADD_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vmcadd_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vzAdd(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vmzAdd(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, unsigned int mode);
void VZADD_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vzadd_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void VMZADD_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vmzadd_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vsSub(int n, const float* a, const float* b, float* r);
void vmsSub(int n, const float* a, const float* b, float* r, unsigned int mode);
void VSSUB_(const int* n, const float* a, const float* b, float* r);
void vssub_(const int* n, const float* a, const float* b, float* r);
void VMSSUB_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vmssub_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vdSub(int n, const double* a, const double* b, double* r);
void vmdSub(int n, const double* a, const double* b, double* r, unsigned int mode);
void VDSUB_(const int* n, const double* a, const double* b, double* r);
void vdsub_(const int* n, const double* a, const double* b, double* r);
void VMDSUB_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vmdsub_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vcSub(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vmcSub(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, unsigned int mode);
void VCSUB_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vcsub_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void VMCSUB_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vmcsub_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vzSub(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vmzSub(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, unsigned int mode);
void VZSUB_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vzsub_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void VMZSUB_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vmzsub_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vsMul(int n, const float* a, const float* b, float* r);
void vmsMul(int n, const float* a, const float* b, float* r, unsigned int mode);
void VSMUL_(const int* n, const float* a, const float* b, float* r);
void vsmul_(const int* n, const float* a, const float* b, float* r);
void VMSMUL_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vmsmul_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vdMul(int n, const double* a, const double* b, double* r);
void vmdMul(int n, const double* a, const double* b, double* r, unsigned int mode);
void VDMUL_(const int* n, const double* a, const double* b, double* r);
void vdmul_(const int* n, const double* a, const double* b, double* r);
void VMDMUL_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vmdmul_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vcMul(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vmcMul(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, unsigned int mode);
void VCMUL_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vcmul_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void VMCMUL_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vmcmul_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vzMul(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vmzMul(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, unsigned int mode);
void VZMUL_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vzmul_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void VMZMUL_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vmzmul_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vsDiv(int n, const float* a, const float* b, float* r);
void vmsDiv(int n, const float* a, const float* b, float* r, unsigned int mode);
void VSDIV_(const int* n, const float* a, const float* b, float* r);
void vsdiv_(const int* n, const float* a, const float* b, float* r);
void VMSDIV_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vmsdiv_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vdDiv(int n, const double* a, const double* b, double* r);
void vmdDiv(int n, const double* a, const double* b, double* r, unsigned int mode);
void VDDIV_(const int* n, const double* a, const double* b, double* r);
void vddiv_(const int* n, const double* a, const double* b, double* r);
void VMDDIV_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vmddiv_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vcDiv(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vmcDiv(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, unsigned int mode);
void VCDIV_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vcdiv_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void VMCDIV_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vmcdiv_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vzDiv(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vmzDiv(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, unsigned int mode);
void VZDIV_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vzdiv_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void VMZDIV_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vmzdiv_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vsPow(int n, const float* a, const float* b, float* r);
void vmsPow(int n, const float* a, const float* b, float* r, unsigned int mode);
void VSPOW_(const int* n, const float* a, const float* b, float* r);
void vspow_(const int* n, const float* a, const float* b, float* r);
void VMSPOW_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vmspow_(const int* n, const float* a, const float* b, float* r, const unsigned int* mode);
void vdPow(int n, const double* a, const double* b, double* r);
void vmdPow(int n, const double* a, const double* b, double* r, unsigned int mode);
void VDPOW_(const int* n, const double* a, const double* b, double* r);
void vdpow_(const int* n, const double* a, const double* b, double* r);
void VMDPOW_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vmdpow_(const int* n, const double* a, const double* b, double* r, const unsigned int* mode);
void vcPow(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vmcPow(int n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, unsigned int mode);
void VCPOW_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void vcpow_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r);
void VMCPOW_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vmcpow_(const int* n, const tav_complex8* a, const tav_complex8* b, tav_complex8* r, const unsigned int* mode);
void vzPow(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vmzPow(int n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, unsigned int mode);
void VZPOW_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void vzpow_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r);
void VMZPOW_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);
void vmzpow_(const int* n, const tav_complex16* a, const tav_complex16* b, tav_complex16* r, const unsigned int* mode);

TAV_END_DECLS

#endif
