// Team size and thread parts of the level-1 drivers.
#include "blas/level1/level1_split.hpp"

#include <tav/tav_threads.h>

#include <algorithm>

namespace tav::blas {

int long_vector_team(index n, index threshold) {
  const int threads = tav_serv_domain_get_max_threads(TAV_DOMAIN_BLAS);
  if (threads <= 1) return 1;
  const index chunk = threshold / 2;
  return static_cast<int>(std::min<index>((n + chunk - 1) / chunk, threads));
}

vector_part thread_part(index n, int thread, int team) {
  const index q = std::max<index>(n / team, 1);
  const index r = std::max<index>(n - team * q, 0);
  vector_part part = thread < r ? vector_part{thread * (q + 1), q + 1}
                                : vector_part{thread * q + r, q};
  if (part.start >= n) return {n, 0};
  part.length = std::min(part.length, n - part.start);
  return part;
}

index part_offset(const vector_part& part, index n, index inc) {
  return inc >= 0 ? part.start * inc : (n - part.start - part.length) * -inc;
}

}  // namespace tav::blas
