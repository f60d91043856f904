// Standard input and output of in-process code: a scripted standard input
// for code that asks or pauses, and the capture of what it prints.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>

class ScopedStdin {
 public:
  explicit ScopedStdin(const std::string& text) : saved_(dup(fileno(stdin))) {
    std::FILE* file = std::tmpfile();
    std::fputs(text.c_str(), file);
    std::rewind(file);
    dup2(fileno(file), fileno(stdin));
    std::fclose(file);
    std::clearerr(stdin);
    std::cin.clear();
  }
  // Unread input is drained first, so that what stdio buffered cannot leak
  // into the next reader.
  ~ScopedStdin() {
    while (std::fgetc(stdin) != EOF) {
    }
    dup2(saved_, fileno(stdin));
    close(saved_);
    std::clearerr(stdin);
    std::cin.clear();
  }
  ScopedStdin(const ScopedStdin&) = delete;
  ScopedStdin& operator=(const ScopedStdin&) = delete;

 private:
  int saved_;
};

// The program ends itself at the end of input. In-process code that reached
// it would end the test binary with status 0 as if its tests had passed, so
// an exit before the tests are done fails instead.
class PrematureExitGuard : public testing::Environment {
 public:
  void SetUp() override {
    std::atexit([] {
      if (done) return;
      std::fputs("the tests ended before they were done: did code under test meet the end of input?\n", stderr);
      std::_Exit(1);
    });
  }
  void TearDown() override { done = true; }

 private:
  static inline bool done = false;
};
inline testing::Environment* const kPrematureExitGuard = testing::AddGlobalTestEnvironment(new PrematureExitGuard);

// Runs code and returns everything it wrote to standard output.
inline std::string Printed(const std::function<void()>& code) {
  testing::internal::CaptureStdout();
  code();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}
