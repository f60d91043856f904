// Everything a command of the two tools touches outside the process: how a
// device path becomes a transport, the names under /dev, the host's libata
// flag, the two output streams and what access(2) says of a path. The
// program hands in the real ones; tests hand in an emulated drive and string
// streams.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "transport.h"

namespace veltrak_opal {

using TransportFactory = std::function<opal::Result<std::unique_ptr<opal::Transport>>(const std::string& path)>;

struct Environment {
  TransportFactory open;
  // The entry names of /dev ("sda", "nvme0", ...), in any order.
  std::function<std::vector<std::string>()> deviceNames;
  std::function<opal::AllowTpm()> allowTpm;
  std::ostream& out;
  std::ostream& err;
  // Whether access(2) grants path reading and writing; empty: always.
  std::function<bool(const std::string& path)> mayReadWrite = nullptr;
};

// The running host: OpenTransport, /dev, /sys/module/libata, std::cout,
// std::cerr and access(2).
Environment SystemEnvironment();

// Writes one line and flushes it, so that standard output and standard
// error keep the order of printing when a caller folds them together.
void Line(std::ostream& stream, const std::string& text);

}  // namespace veltrak_opal
