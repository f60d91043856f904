// What the opal tests share: byte strings written as hex ("F8 A8 00",
// grouped "00000064", "text" in double quotes) and shown as hex, so a failed
// comparison shows where two strings part.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "packet.h"
#include "tokens.h"

using namespace opal;

inline Bytes H(const std::string& text) {
  Bytes out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') {
      const size_t end = text.find('"', i + 1);
      out.insert(out.end(), text.begin() + i + 1, text.begin() + end);
      i = end;
    } else if (std::isxdigit(static_cast<unsigned char>(text[i])) && i + 1 < text.size()) {
      out.push_back(static_cast<uint8_t>(std::stoi(text.substr(i++, 2), nullptr, 16)));
    } else if (!std::isspace(static_cast<unsigned char>(text[i]))) {
      throw std::invalid_argument("not hex: " + text.substr(i));  // a typo in a case must not pass unseen
    }
  }
  return out;
}

inline std::string Hex(const Bytes& bytes) {
  std::string out;
  char digits[4];
  for (uint8_t b : bytes) out += (std::snprintf(digits, sizeof digits, " %02X", b), digits);
  return out.empty() ? out : out.substr(1);
}

// Level 0 discovery data: the 48-byte header (revision 1), its Length covering
// the descriptors that follow.
inline Bytes Discovered(const std::string& descriptors) {
  Bytes data = H("00000000 00000001" + std::string(80, '0') + descriptors);
  WriteBe(data.data(), data.size() - 4, 4);
  return data;
}
