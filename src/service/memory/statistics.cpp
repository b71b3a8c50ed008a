// The statistics lock, the counters of system blocks, and the statistics and peak-usage exports.
#include "service/memory/statistics.hpp"

#include <tav/tav_memory.h>

#include <mutex>

#include "common/exports.hpp"

namespace tav::service {
namespace {

std::mutex statistics_lock;
memory_statistics totals;

// Every change of the current bytes raises the peak when it exceeds it.
void note_change_locked() {
  if (totals.peak_enabled && totals.bytes > totals.peak_bytes) {
    totals.peak_bytes = totals.bytes;
    totals.peak_buffers = totals.buffers;
  }
}

}  // namespace

void count_block(size_t bytes) {
  std::lock_guard guard(statistics_lock);
  totals.bytes += static_cast<long long>(bytes);
  ++totals.buffers;
  note_change_locked();
}

void uncount_block(size_t bytes) {
  std::lock_guard guard(statistics_lock);
  totals.bytes -= static_cast<long long>(bytes);
  --totals.buffers;
  note_change_locked();
}

memory_statistics statistics_snapshot() {
  std::lock_guard guard(statistics_lock);
  return totals;
}

}  // namespace tav::service

using namespace tav::service;

TAV_EXPORT long long tav_serv_mem_stat(int* allocated_buffers) {
  memory_statistics now = statistics_snapshot();
  if (allocated_buffers != nullptr) *allocated_buffers = now.buffers;
  return now.bytes;
}
TAV_EXPORT_ALIAS(TAV_Mem_Stat, tav_serv_mem_stat);
TAV_EXPORT_ALIAS(TAV_MEM_STAT, tav_serv_mem_stat);

TAV_EXPORT long long tav_serv_peak_mem_usage(int mode) {
  std::lock_guard guard(statistics_lock);
  switch (mode) {
    case TAV_PEAK_MEM_ENABLE:
      totals.peak_enabled = true;
      totals.peak_bytes = 0;
      totals.peak_buffers = 0;
      return 0;
    case TAV_PEAK_MEM_DISABLE:
      totals.peak_enabled = false;
      return 0;
    case TAV_PEAK_MEM:
      return totals.peak_enabled ? totals.peak_bytes : -1;
    case TAV_PEAK_MEM_RESET: {
      if (!totals.peak_enabled) return -1;
      long long before = totals.peak_bytes;
      totals.peak_bytes = totals.bytes;
      totals.peak_buffers = totals.buffers;
      return before;
    }
    default:
      return -1;
  }
}
TAV_EXPORT_ALIAS(TAV_Peak_Mem_Usage, tav_serv_peak_mem_usage);
TAV_EXPORT long long TAV_PEAK_MEM_USAGE(const int* mode) { return tav_serv_peak_mem_usage(*mode); }
