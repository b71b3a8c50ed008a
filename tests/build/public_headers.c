/* A C program that includes every public header and calls the library through it. */
#include <stdio.h>
#include <tav/tav.h>

int main(void) {
  TAVVersion version;
  char text[20];
  tav_serv_get_version(&version);
  TAV_GET_VERSION_STRING(text, (int)sizeof text);
  if (version.MajorVersion != 2019 || query_capability(32) != 2019 || text[0] != 'O') {
    printf("unexpected version\n");
    return 1;
  }
  return tav_serv_cpu_detect() >= 0 && vmlGetMode() != 0 ? 0 : 1;
}
