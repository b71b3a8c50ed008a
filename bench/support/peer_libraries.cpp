// Loading the peers with dlopen: their environment first (OpenBLAS's core and cache overrides
// removed, BLIS pinned to its best configuration for this processor), then their routines.
#include "support/peer_libraries.hpp"

#include <dlfcn.h>
#include <sys/wait.h>
#include <tav/tav_blas.h>
#include <tav/tav_cblas.h>
#include <tav/tav_cpu.h>
#include <tav/tav_threads.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tav::bench {
namespace {

constexpr const char* openblas_files[] = {"/usr/lib/x86_64-linux-gnu/openblas-pthread/libopenblas.so.0",
                                          "libopenblas.so.0"};
constexpr const char* blis_files[] = {"/usr/lib/x86_64-linux-gnu/blis-pthread/libblis.so.4",
                                      "libblis.so.4"};
// BLIS configurations for a processor of the Zen 3 class without AVX-512, best first.
constexpr const char* blis_preferred[] = {"zen3", "zen2", "haswell"};

// RTLD_LOCAL keeps the peers' names out of the global scope; RTLD_DEEPBIND makes a peer's calls
// between its own exported routines stay inside it instead of reaching libtav.so's routines of
// the same names.
template <size_t N>
void* open_first(const char* const (&files)[N]) {
  for (const char* file : files) {
    if (void* handle = dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND)) return handle;
  }
  std::fprintf(stderr, "bench: cannot load %s: %s\n", files[N - 1], dlerror());
  return nullptr;
}

template <class F>
F* symbol(void* handle, const char* name) {
  return reinterpret_cast<F*>(dlsym(handle, name));
}

bool complete(const blas_library& library) {
  if (library.daxpy && library.ddot && library.dscal && library.set_threads) return true;
  std::fprintf(stderr, "bench: %s lacks a routine, left out\n", library.name.c_str());
  return false;
}

void (*openblas_threads)(int) = nullptr;
void (*blis_threads)(int64_t) = nullptr;  // BLIS's dim_t is 64-bit

// The level-3 routines, by their Fortran-style and CBLAS names.
void load_level3(void* handle, blas_library& library) {
  library.sgemm = symbol<gemm_routine<float>>(handle, "sgemm_");
  library.dgemm = symbol<gemm_routine<double>>(handle, "dgemm_");
  library.cgemm = symbol<gemm_routine<std::complex<float>>>(handle, "cgemm_");
  library.zgemm = symbol<gemm_routine<std::complex<double>>>(handle, "zgemm_");
  library.cblas_dgemm = symbol<cblas_dgemm_routine>(handle, "cblas_dgemm");
  library.dtrsm = symbol<dtrsm_routine>(handle, "dtrsm_");
  library.dsyrk = symbol<dsyrk_routine>(handle, "dsyrk_");
}

blas_library load_openblas(const char* core_override) {
  // The peer runs as it would for a user who set nothing (its own core detection and cache
  // sizes), unless a core type is asked for.
  if (core_override != nullptr) setenv("OPENBLAS_CORETYPE", core_override, 1);
  else unsetenv("OPENBLAS_CORETYPE");
  unsetenv("OPENBLAS_L2_SIZE");
  blas_library library;
  library.name = "OpenBLAS";
  void* handle = open_first(openblas_files);
  if (handle == nullptr) return library;
  library.daxpy = symbol<daxpy_routine>(handle, "daxpy_");
  library.ddot = symbol<ddot_routine>(handle, "ddot_");
  library.dscal = symbol<dscal_routine>(handle, "dscal_");
  load_level3(handle, library);
  openblas_threads = symbol<void(int)>(handle, "openblas_set_num_threads");
  if (openblas_threads) library.set_threads = [](int n) { openblas_threads(n); };
  auto config = symbol<const char*()>(handle, "openblas_get_config");
  auto core = symbol<const char*()>(handle, "openblas_get_corename");
  if (config && core) library.detail = std::string(config()) + ", core " + core();
  return library;
}

// The id of BLIS's configuration `name` in its table, which ends with "generic"; -1 if absent.
int blis_configuration_id(void* handle, const char* name) {
  auto name_of = symbol<const char*(int)>(handle, "bli_arch_string");
  if (name_of == nullptr) return -1;
  for (int id = 0;; ++id) {
    const char* entry = name_of(id);
    if (entry == nullptr) return -1;
    if (std::strcmp(entry, name) == 0) return id;
    if (std::strcmp(entry, "generic") == 0) return -1;
  }
}

// Whether BLIS, told to use configuration `id`, runs it: BLIS aborts on a configuration that its
// build lacks (and some builds on any BLIS_ARCH_TYPE), so each candidate is tried in a child
// process first, its complaints silenced.
bool blis_accepts(int id) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    std::freopen("/dev/null", "w", stderr);
    setenv("BLIS_ARCH_TYPE", std::to_string(id).c_str(), 1);
    void* handle = open_first(blis_files);
    auto query = handle ? symbol<int()>(handle, "bli_arch_query_id") : nullptr;
    _exit(query != nullptr && query() == id ? 0 : 1);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

blas_library load_blis() {
  blas_library library;
  library.name = "BLIS";
  void* probe = open_first(blis_files);
  if (probe == nullptr) return library;
  std::string how = "its own choice: it refuses BLIS_ARCH_TYPE for zen3, zen2 and haswell";
  for (const char* name : blis_preferred) {
    const int id = blis_configuration_id(probe, name);
    if (id >= 0 && blis_accepts(id)) {
      setenv("BLIS_ARCH_TYPE", std::to_string(id).c_str(), 1);
      how = "set by BLIS_ARCH_TYPE=" + std::to_string(id);
      break;
    }
  }
  // BLIS reads BLIS_ARCH_TYPE on its first initialisation, which the queries above did not start.
  void* handle = open_first(blis_files);
  library.daxpy = symbol<daxpy_routine>(handle, "daxpy_");
  library.ddot = symbol<ddot_routine>(handle, "ddot_");
  library.dscal = symbol<dscal_routine>(handle, "dscal_");
  load_level3(handle, library);
  blis_threads = symbol<void(int64_t)>(handle, "bli_thread_set_num_threads");
  if (blis_threads) library.set_threads = [](int n) { blis_threads(n); };
  auto version = symbol<const char*()>(handle, "bli_info_get_version_str");
  auto query = symbol<int()>(handle, "bli_arch_query_id");
  auto name_of = symbol<const char*(int)>(handle, "bli_arch_string");
  if (version && query && name_of)
    library.detail = std::string("BLIS ") + version() + ", configuration " + name_of(query()) +
                     " (" + how + ")";
  return library;
}

const char* path_of_type(int type) {
  static const char* const paths[] = {"def", "def", "mc", "mc3", "avx", "avx2", "avx512_tp", "avx512"};
  return type >= 0 && type < 8 ? paths[type] : "?";
}

}  // namespace

blas_library tav_library() {
  blas_library library;
  library.name = "TAV";
  library.daxpy = daxpy_;
  library.ddot = ddot_;
  library.dscal = dscal_;
  library.sgemm = sgemm_;
  library.dgemm = dgemm_;
  library.cgemm = reinterpret_cast<gemm_routine<std::complex<float>>*>(cgemm_);
  library.zgemm = reinterpret_cast<gemm_routine<std::complex<double>>*>(zgemm_);
  library.cblas_dgemm = cblas_dgemm;
  library.dtrsm = dtrsm_;
  library.set_threads = [](int n) { tav_serv_domain_set_num_threads(n, TAV_DOMAIN_BLAS); };
  const int type = tav_serv_cpu_detect();
  library.detail = "CPU type " + std::to_string(type) + " (" + path_of_type(type) + " path)";
  return library;
}

std::vector<blas_library> load_peers(const char* openblas_core) {
  std::vector<blas_library> peers;
  for (blas_library library : {load_openblas(openblas_core), load_blis()})
    if (complete(library)) peers.push_back(library);
  return peers;
}

}  // namespace tav::bench
