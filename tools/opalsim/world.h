// The emulated world: the host's libata flag and every emulated drive, kept
// in one text file (named by OPALSIM_STATE) that every process of a session
// shares. A change is made under an exclusive lock and written to a
// temporary file that is then renamed over the state, so no reader sees half
// a file and no two writers lose each other's changes. The shadow MBR's
// bytes live beside it, one sparse file a drive, written in place like a
// disk's blocks.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "drive.h"
#include "result.h"

namespace opalsim {

struct World {
  // What /sys/module/libata/parameters/allow_tpm holds: "1", "0", or
  // "missing" for a host whose SATA drives are not behind libata.
  std::string allowTpm = "1";
  // Whether the host's own disks (real /dev/sdX and /dev/nvmeN nodes that
  // no emulated drive has) are hidden, so that a rehearsal cannot reach them.
  bool hideRealDisks = false;
  std::vector<Drive> drives;

  // The drive whose controller or namespace node (/dev/nvme0n1) or SATA
  // node path names; nullptr for none.
  Drive* Find(const std::string& path);
  const Drive* Find(const std::string& path) const;
};

// The device nodes an emulated drive shows: /dev/nvmeN (a character device)
// and its namespace /dev/nvmeNn1 (a block device), or /dev/sdX.
enum class NodeKind { kNone, kNvmeController, kNvmeNamespace, kSata };
NodeKind KindOfNode(const std::string& path);
// The controller node of an NVMe namespace path; other paths as they are.
std::string DriveNode(const std::string& path);

std::string Serialize(const World& world);
// Every field is checked; a damaged file gives an error naming its line.
opal::Result<World> ParseWorld(const std::string& text);

class StateFile {
 public:
  explicit StateFile(std::string path) : path_(std::move(path)) {}
  const std::string& path() const { return path_; }

  // The world as last written; an absent file is an error.
  opal::Result<World> Read() const;
  // Writes world over whatever the file holds, damaged or not.
  opal::Status Replace(const World& world) const;
  // Runs change on the world under the exclusive lock and writes the world
  // back when change returns true. An absent file is an empty world when
  // create is set.
  opal::Status Update(const std::function<bool(World&)>& change, bool create = false) const;

  // Where a drive's shadow MBR bytes are kept.
  std::string MbrPath(const Drive& drive) const;

 private:
  std::string path_;
};

// The shadow MBR table of a drive: reads past what was written give zeros.
opal::Status WriteMbr(const std::string& path, uint64_t offset, const Bytes& data);
opal::Result<Bytes> ReadMbr(const std::string& path, uint64_t offset, size_t length);
void ClearMbr(const std::string& path);

}  // namespace opalsim
