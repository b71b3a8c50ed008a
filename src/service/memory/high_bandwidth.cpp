// Loading the high-bandwidth memory library at run time, its budget, and its blocks.
#include "service/memory/high_bandwidth.hpp"

#include <dlfcn.h>
#include <gnu/libc-version.h>
#include <tav/tav_verbose.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>

namespace tav::service {
namespace {

constexpr const char* memkind_file = "libmemkind.so";

// The library's page-size codes: 1 asks for 4096-byte pages, 2 for 2 MiB (0x200000) pages.
constexpr int page_size_4k = 1;
constexpr int page_size_2m = 2;

// Our own blocks are aligned by their headers; the library only needs a valid alignment.
constexpr size_t fast_block_alignment = 64;

struct memkind_functions {
  int (*allocate)(void** start, size_t alignment, size_t bytes, int page_size) = nullptr;
  void (*release)(void* start) = nullptr;
};

// Written once at the manager's start, before the start is published; read-only afterwards.
memkind_functions memkind;

std::string directory_of(const char* path) {
  const char* slash = path != nullptr ? std::strrchr(path, '/') : nullptr;
  return slash != nullptr ? std::string(path, static_cast<size_t>(slash - path)) : std::string();
}

std::string library_directory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&open_high_bandwidth), &info) == 0) return {};
  return directory_of(info.dli_fname);
}

std::string executable_directory() {
  char path[PATH_MAX];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return {};
  path[length] = '\0';
  return directory_of(path);
}

// A statically linked process has no loaded C library object for dladdr to find.
bool libc_is_dynamic() {
  Dl_info info{};
  return dladdr(reinterpret_cast<void*>(&gnu_get_libc_version), &info) != 0 &&
         info.dli_fname != nullptr && std::strstr(info.dli_fname, "libc.so") != nullptr;
}

void* load_memkind() {
  for (const std::string& path : memkind_candidates(library_directory(), executable_directory()))
    if (void* handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_GLOBAL)) return handle;
  return nullptr;
}

}  // namespace

std::vector<std::string> memkind_candidates(const std::string& library_directory,
                                            const std::string& executable_directory) {
  std::vector<std::string> candidates;
  // Built with append: a concatenation operator would be instantiated here with default
  // visibility and exported from the library.
  for (const std::string* directory : {&library_directory, &executable_directory})
    if (!directory->empty())
      candidates.push_back(std::string(*directory).append("/").append(memkind_file));
  candidates.emplace_back(memkind_file);
  return candidates;
}

void fast_budget::reset(long long bytes) {
  std::lock_guard guard(lock_);
  remaining_ = bytes;
}

bool fast_budget::take(size_t bytes) {
  std::lock_guard guard(lock_);
  if (remaining_ < 0) return true;
  if (static_cast<unsigned long long>(remaining_) < bytes) return false;
  remaining_ -= static_cast<long long>(bytes);
  return true;
}

void fast_budget::give_back(size_t bytes) {
  std::lock_guard guard(lock_);
  if (remaining_ >= 0) remaining_ += static_cast<long long>(bytes);
}

long long fast_budget::remaining() {
  std::lock_guard guard(lock_);
  return remaining_;
}

fast_budget& high_bandwidth_budget() {
  static fast_budget budget;
  return budget;
}

bool open_high_bandwidth(uint64_t features) try {
  if (!high_bandwidth_candidate(features, libc_is_dynamic())) return false;
  void* handle = load_memkind();
  if (handle == nullptr) return false;
  auto get_version = reinterpret_cast<int (*)()>(dlsym(handle, "memkind_get_version"));
  memkind_functions found;
  found.allocate =
      reinterpret_cast<decltype(found.allocate)>(dlsym(handle, "hbw_posix_memalign_psize"));
  found.release = reinterpret_cast<decltype(found.release)>(dlsym(handle, "hbw_free"));
  int version = get_version != nullptr ? get_version() : 0;
  if (version < oldest_memkind_version && tav_serv_verbose_mode() != 0)
    std::printf("Minimal supported version of the memkind library is 1.1.0\n");
  if (!memkind_acceptable(version, found.allocate != nullptr, found.release != nullptr)) {
    dlclose(handle);
    return false;
  }
  memkind = found;
  return true;
} catch (...) {
  return false;
}

void* fast_allocate(size_t bytes) {
  for (int page_size : {page_size_2m, page_size_4k}) {
    void* start = nullptr;
    if (memkind.allocate(&start, fast_block_alignment, bytes, page_size) == 0 && start != nullptr)
      return start;
  }
  return nullptr;
}

void fast_release(void* start) { memkind.release(start); }

}  // namespace tav::service
