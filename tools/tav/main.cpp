// The tav command-line tool.
#include <tav/tav.h>

#include <cstdio>

int main() { std::printf("cpu type %d\n", tav_serv_cpu_detect()); }
