// The emulated drives as one process sees them through the preload library:
// which device paths are emulated, what a listing of /dev adds, what the
// host's libata flag reads, and the kernel's side of the NVMe admin and
// SG_IO ioctls on those devices. The drives' state is the shared state file;
// the sessions and pending answers of this process stay in memory and end
// with it.
#pragma once

#include <linux/nvme_ioctl.h>
#include <scsi/sg.h>
#include <sys/stat.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "tper.h"
#include "world.h"

namespace opalsim {

class Emulator {
 public:
  // OPALSIM_TRACE, when set, names a file that gets one line per IF-SEND
  // and IF-RECV, so that a benchmark can count a program's round trips.
  explicit Emulator(std::string statePath);

  // The kind of emulated node at path; kNone when no emulated drive has it.
  NodeKind Lookup(const std::string& path);
  // Whether path is one of the host's own disks (a /dev/sd... or
  // /dev/nvme... node no emulated drive has) while the world hides them.
  bool Hides(const std::string& path);
  // The names a listing of /dev shows for the emulated drives ("nvme0", "sda").
  std::vector<std::string> DevNames();
  // What the host's libata.allow_tpm file holds; nothing when it is missing.
  std::optional<std::string> AllowTpmText();
  // A device node's stat: a character device for an NVMe controller, a block
  // device for a namespace or SATA node.
  struct stat NodeStat(const std::string& path);
  // Capacity in bytes of the drive behind path.
  uint64_t Bytes(const std::string& path);

  // The ioctls, answered as the kernel and the drive would: 0, a positive
  // NVMe status, or -1 with errno set.
  int NvmeAdmin(const std::string& path, nvme_passthru_cmd& command);
  int SgIo(const std::string& path, sg_io_hdr_t& header);

 private:
  // The world as the state file holds it now (re-read when it changed).
  const World& Current();
  bool Send(const std::string& path, uint8_t protocol, uint16_t comId, const opal::Bytes& data);
  bool Receive(const std::string& path, uint8_t protocol, uint16_t comId, size_t length, opal::Bytes& out);
  void Report(const std::string& message);
  void Trace(const char* direction, const std::string& node, uint8_t protocol, uint16_t comId, size_t length);

  std::recursive_mutex mutex_;
  StateFile state_;
  World world_;
  struct stat seen_ {};
  std::map<std::string, Connection> connections_;
  std::string reported_;
  std::string trace_;  // empty: no trace
};

}  // namespace opalsim
