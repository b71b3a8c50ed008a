// Runs a body on a thread of its own and waits for it. Per-thread state (the vector-math mode,
// status and callback) starts unread on a new thread, so the body sees the defaults whatever ran
// before it.
#pragma once

#include <thread>

namespace tav::test {

template <class Body>
void in_fresh_thread(Body body) {
  std::thread(body).join();
}

}  // namespace tav::test
