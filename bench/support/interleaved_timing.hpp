// Interleaved timing: the candidates run their batches of calls in turn, round after round, so
// that a drift in the machine's speed (other processes, clock frequency) reaches all of them
// alike; each reports the median over rounds of its per-call time.
#pragma once

#include <functional>
#include <vector>

namespace tav::bench {

struct candidate {
  std::function<void()> prepare;  // untimed, before each batch (for example the thread count)
  std::function<void()> call;     // one timed call
};

struct timing_plan {
  int rounds = 15;             // batches per candidate
  int calls = 100;             // timed calls per batch
  double settle_seconds = 0;   // idle time before each batch, for threads of the previous
                               // candidate to stop spinning and go to sleep
  // Time the batches by the calling thread's CPU time instead of the wall clock: for one-thread
  // runs, where all the work is on this thread. On a virtual machine the wall clock also counts
  // the time the host gave this CPU to other guests (up to a quarter of it here), which moved
  // one-thread figures by 10 to 15 per cent from run to run.
  bool thread_cpu_time = false;
};

// The calling thread's CPU time in seconds.
double thread_seconds();

// Before each batch: settle, prepare(), then one untimed warm-up call, which also wakes this
// candidate's thread team, so that the timed calls run on a warm team.
std::vector<double> interleaved_medians(const std::vector<candidate>& candidates,
                                        const timing_plan& plan);

}  // namespace tav::bench
