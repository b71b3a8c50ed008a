/* Element types shared by the public headers: complex numbers as two reals, real part first. */
#ifndef TAV_TYPES_H
#define TAV_TYPES_H

typedef struct {
  float real, imag;
} tav_complex8;

typedef struct {
  double real, imag;
} tav_complex16;

#endif
