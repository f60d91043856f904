// Standard input and output of in-process code: a scripted standard input
// for code that asks or pauses, and the capture of what it prints.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
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

// Runs code and returns everything it wrote to standard output.
inline std::string Printed(const std::function<void()>& code) {
  testing::internal::CaptureStdout();
  code();
  std::fflush(stdout);
  return testing::internal::GetCapturedStdout();
}
