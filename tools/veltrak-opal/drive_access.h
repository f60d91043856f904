// The layer both tools share below their wording: opening a device as an
// Opal drive (identity and Level 0 discovery, each read once), starting a
// session with a typed password, and reading the names operators type for
// authorities and ranges.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "environment.h"
#include "session.h"

namespace veltrak_opal {

// An opened device: its protocol channel and what it said about itself.
struct Drive {
  std::string path;
  std::unique_ptr<opal::Device> device;
  opal::Identity identity;
  opal::Discovery discovery;
  bool IsSata() const { return opal::KindOfPath(path) == opal::DeviceKind::kSata; }
};

enum class OpenProblem {
  kNone,
  kUnknownKind,  // neither /dev/nvme... nor /dev/s...
  kCannotOpen,   // missing, not permitted, or the open failed otherwise
  kNoIdentity,   // the device did not answer Identify
  kNotOpal,      // identified, but its discovery shows no TCG storage SSC
};

struct Opened {
  OpenProblem problem = OpenProblem::kNone;
  std::string message;  // names the device; empty when problem is kNone
  // Set once the device identified itself, so also for kNotOpal (whose
  // discovery is then empty).
  std::unique_ptr<Drive> drive;
};

// Opens path, identifies the device and reads its Level 0 discovery.
Opened OpenDrive(const Environment& env, const std::string& path);

// Whether an entry name of /dev is a drive the scans list: sd[a-z],
// nvme[0-9] or nvme[0-9][0-9] (controller nodes, no partitions).
bool IsScannedName(const std::string& name);
// The scanned paths among the /dev entry names, sorted as byte strings.
std::vector<std::string> ScannedPaths(const std::vector<std::string>& names);

// A password as it goes to the drive: unhashed, cut to 32 bytes.
opal::Bytes PasswordBytes(const std::string& typed);

// Starts a session on sp as authority with a typed password.
opal::Result<std::unique_ptr<opal::Session>> StartAs(Drive& drive, opal::Uid sp, opal::Uid authority,
                                                     const std::string& password);

// An authority of the Locking SP and its credential row.
struct Principal {
  opal::Uid authority = 0;
  opal::Uid credential = 0;
};
// A user id read the sedutil way: "User" then atoi of the rest (low byte;
// User0000 is the Users class), or "Admin" likewise; none for other names.
std::optional<Principal> SedutilPrincipal(const std::string& id);
// A name read strictly: "UserN" or "AdminN" with N a plain decimal 1..255.
std::optional<Principal> StrictPrincipal(const std::string& name);
// A Locking SP authority's name: "Admin1", "User3", "Admins", "Anybody"...;
// a UID in hex for anything else.
std::string AuthorityName(opal::Uid authority);

// A range number written as plain decimal digits, 0..255.
std::optional<unsigned> RangeNumber(const std::string& typed);

// Whether a, b are equal ignoring ASCII case.
bool SameIgnoringCase(const std::string& a, const std::string& b);

}  // namespace veltrak_opal
