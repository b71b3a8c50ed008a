// Test entry point: runs a child scenario when asked to, the GoogleTest suite otherwise.
#include <gtest/gtest.h>

#include "child_process.hpp"

int main(int argc, char** argv) {
  if (tav::test::run_scenario_from_command_line(argc, argv)) return 0;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
