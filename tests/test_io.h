// Standard input and output of in-process code: the keys typed to code that
// asks or pauses, and the capture of what it prints.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <string>

// Makes text the whole of standard input; reopening drops whatever stdio
// kept of the text before.
inline void Type(const std::string& text) {
  const std::string path = "/tmp/veltrak-keys-" + std::to_string(getpid());
  std::ofstream(path, std::ios::binary) << text;
  if (std::freopen(path.c_str(), "r", stdin) == nullptr) std::abort();
  std::remove(path.c_str());
  std::cin.clear();
}

// Code under test that met the end of input would end the test binary with
// status 0 as if its tests had passed, so an exit before they are done fails.
struct PrematureExitGuard : testing::Environment {
  static inline bool done = false;
  void SetUp() override {
    std::atexit([] {
      if (!done) std::fputs("the tests ended before they were done: end of input?\n", stderr), std::_Exit(1);
    });
  }
  void TearDown() override { done = true; }
};
inline testing::Environment* const kPrematureExitGuard = testing::AddGlobalTestEnvironment(new PrematureExitGuard);

// Runs code and returns everything it wrote to standard output.
inline std::string Printed(const std::function<void()>& code) {
  testing::internal::CaptureStdout();
  code();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}
