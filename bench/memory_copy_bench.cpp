// The machine's copy bandwidth: memcpy of 128 MiB between two touched buffers, on one thread and
// split in halves over two, as the ceiling that out-of-place matrix copies are measured against.
#include <cstdio>
#include <string>

#include "support/copy_bandwidth.hpp"
#include "support/markdown_table.hpp"

int main() {
  using namespace tav::bench;
  std::printf("## Copy bandwidth: memcpy of 128 MiB, median of %d\n\n", copy_repetitions);
  markdown_table table({"threads", "ms", "copied GB/s", "traffic GB/s (read + write)"});
  for (int threads : {1, 2}) {
    const double traffic = copy_traffic_gbs(threads);
    const double s = 2.0 * copy_bytes / traffic / 1e9;
    table.add_row({std::to_string(threads), format("%.2f", s * 1e3),
                   format("%.2f", traffic / 2), format("%.2f", traffic)});
  }
  table.print(stdout);
  return 0;
}
