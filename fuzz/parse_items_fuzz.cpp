// ParseItems with every delimiter the program splits at, checked against a
// plain left-to-right reading of the splitting rule.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "utils.h"

namespace {

// Appends one delim, cuts at each leftmost whole occurrence of it, scanning
// on after it, and keeps the non-empty pieces that a delim ended (the rest
// of the appended delim, left after an earlier match overlapped it, is none).
std::vector<std::string> Reference(const std::string& source, const std::string& delim) {
  std::vector<std::string> items;
  if (source.empty()) return items;
  const std::string text = source + delim;
  std::string piece;
  for (size_t p = 0; p < text.size();) {
    if (text.compare(p, delim.size(), delim) == 0) {
      if (!piece.empty()) items.push_back(piece);
      piece.clear();
      p += delim.size();
    } else {
      piece.push_back(text[p++]);
    }
  }
  return items;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string source(reinterpret_cast<const char*>(data), size);
  for (const std::string delim : {" ", "  ", ",", "can access Locking Range"}) {
    const std::vector<std::string> items = ParseItems(source, delim);
    for (const std::string& item : items) {
      if (item.empty() || item.find(delim) != std::string::npos) std::abort();
    }
    if (items != Reference(source, delim)) std::abort();
  }
  return 0;
}
