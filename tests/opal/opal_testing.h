// What the opal tests share: byte strings written as hex, and a transport
// that records what the host sends and replays a drive's answers.
#pragma once

#include <cctype>
#include <cstdio>
#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "packet.h"
#include "transport.h"

namespace opaltest {

using opal::Bytes;

// "F8 A8 00", grouped hex such as "00000064", and "text" in double quotes.
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
      throw std::invalid_argument("not hex: " + text.substr(i));
    }
  }
  return out;
}

inline Bytes Cat(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// Bytes as "F8 A8 00 ...", so a failed comparison shows where two strings part.
inline std::string Hex(const Bytes& bytes) {
  std::string out;
  char digits[4];
  for (uint8_t b : bytes) {
    std::snprintf(digits, sizeof digits, "%02X ", b);
    out += digits;
  }
  if (!out.empty()) out.pop_back();
  return out;
}

// A drive answering from a script. An answer may depend on the token payload
// the host sent last (to echo its session number); it is handed out padded
// or cut to the length the host asked for.
struct FakeTransport : opal::Transport {
  using Answer = std::function<Bytes(const Bytes& lastPayload)>;
  struct Transfer { uint8_t protocol; uint16_t comId; Bytes data; size_t length; };
  std::deque<Answer> script;
  std::vector<Transfer> sent, received;

  Bytes SentPayload() const {
    opal::Result<opal::ComPacket> packet = opal::Unframe(sent.back().data);
    return packet ? packet->payload : Bytes();
  }
  opal::Result<opal::Identity> Identify() override { return opal::Fail("not scripted"); }
  opal::Status Send(uint8_t protocol, uint16_t comId, const Bytes& data) override {
    sent.push_back({protocol, comId, data, data.size()});
    return opal::Ok();
  }
  opal::Result<Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    received.push_back({protocol, comId, {}, length});
    if (script.empty()) return opal::Fail("the script has no more answers");
    Bytes answer = script.front()(sent.empty() ? Bytes() : SentPayload());
    script.pop_front();
    answer.resize(length, 0);
    return answer;
  }
  opal::DeviceKind kind() const override { return opal::DeviceKind::kNvme; }
};

inline FakeTransport::Answer Fixed(const Bytes& bytes) {
  return [bytes](const Bytes&) { return bytes; };
}

}  // namespace opaltest
