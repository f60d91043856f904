// Feeds in-process code a scripted standard input, for code that pauses.
#pragma once

#include <unistd.h>

#include <cstdio>
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
  ~ScopedStdin() {
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
