#include "drive_access.h"

#include <fnmatch.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <strings.h>

#include "uids.h"

namespace veltrak_opal {

Opened OpenDrive(const Environment& env, const std::string& path) {
  Opened opened;
  if (opal::KindOfPath(path) == opal::DeviceKind::kUnknown) {
    opened.problem = OpenProblem::kUnknownKind;
    opened.message = path + ": not an NVMe (/dev/nvme...) or SATA (/dev/s...) device";
    return opened;
  }
  opal::Result<std::unique_ptr<opal::Transport>> transport = env.open(path);
  if (!transport) {
    opened.problem = OpenProblem::kCannotOpen;
    opened.message = transport.error().message;
    return opened;
  }
  auto drive = std::make_unique<Drive>();
  drive->path = path;
  drive->device = std::make_unique<opal::Device>(std::move(*transport));
  opal::Result<opal::Identity> identity = drive->device->Identify();
  if (!identity) {
    opened.problem = OpenProblem::kNoIdentity;
    opened.message = path + ": the device did not identify itself: " + identity.error().message;
    return opened;
  }
  drive->identity = *identity;
  opal::Result<opal::Discovery> discovery = drive->device->Discover();
  if (discovery) {
    drive->discovery = *discovery;
  } else {
    opened.problem = OpenProblem::kNotOpal;
    opened.message = path + " is not an Opal drive: " + discovery.error().message;
  }
  opened.drive = std::move(drive);
  return opened;
}

bool IsScannedName(const std::string& name) {
  for (const char* pattern : {"sd[a-z]", "nvme[0-9]", "nvme[0-9][0-9]"}) {
    if (fnmatch(pattern, name.c_str(), 0) == 0) return true;
  }
  return false;
}

std::vector<std::string> ScannedPaths(const std::vector<std::string>& names) {
  std::vector<std::string> kept;
  for (const std::string& name : names) {
    if (IsScannedName(name)) kept.push_back(name);
  }
  std::sort(kept.begin(), kept.end());
  kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
  for (std::string& name : kept) name = "/dev/" + name;
  return kept;
}

opal::Bytes PasswordBytes(const std::string& typed) {
  const std::string cut = typed.substr(0, 32);
  return opal::Bytes(cut.begin(), cut.end());
}

opal::Result<std::unique_ptr<opal::Session>> StartAs(Drive& drive, opal::Uid sp, opal::Uid authority,
                                                     const std::string& password) {
  return opal::Session::Start(*drive.device, sp, authority, PasswordBytes(password));
}

namespace {

constexpr opal::Uid kAuthorityAdminBase = opal::kAdmin1 - 1;  // 00 00 00 09 00 01 00 00
constexpr opal::Uid kCpinAdminBase = opal::kCpinAdmin1 - 1;
constexpr opal::Uid kCpinUserBase = opal::kCpinUser1 - 1;

Principal UserPrincipal(unsigned n) { return {opal::UserUid(n), kCpinUserBase + n}; }
Principal AdminPrincipal(unsigned n) { return {kAuthorityAdminBase + n, kCpinAdminBase + n}; }

bool HasPrefix(const std::string& text, const std::string& prefix) { return text.rfind(prefix, 0) == 0; }

std::optional<unsigned> PlainNumber(const std::string& digits, unsigned low, unsigned high) {
  if (digits.empty() || digits.size() > 3 || !std::all_of(digits.begin(), digits.end(), ::isdigit)) {
    return std::nullopt;
  }
  const unsigned n = static_cast<unsigned>(std::stoul(digits));
  if (n < low || n > high) return std::nullopt;
  return n;
}

}  // namespace

std::optional<Principal> SedutilPrincipal(const std::string& id) {
  if (HasPrefix(id, "User")) return UserPrincipal(static_cast<unsigned>(std::atoi(id.c_str() + 4)) & 0xFF);
  if (HasPrefix(id, "Admin")) return AdminPrincipal(static_cast<unsigned>(std::atoi(id.c_str() + 5)) & 0xFF);
  return std::nullopt;
}

std::optional<Principal> StrictPrincipal(const std::string& name) {
  if (HasPrefix(name, "User")) {
    if (std::optional<unsigned> n = PlainNumber(name.substr(4), 1, 255)) return UserPrincipal(*n);
  } else if (HasPrefix(name, "Admin")) {
    if (std::optional<unsigned> n = PlainNumber(name.substr(5), 1, 255)) return AdminPrincipal(*n);
  }
  return std::nullopt;
}

std::string AuthorityName(opal::Uid authority) {
  if (authority > opal::kUsers && authority <= opal::kUsers + 0xFF) {
    return "User" + std::to_string(authority - opal::kUsers);
  }
  if (authority > kAuthorityAdminBase && authority <= kAuthorityAdminBase + 0xFF) {
    return "Admin" + std::to_string(authority - kAuthorityAdminBase);
  }
  switch (authority) {
    case opal::kAnybody: return "Anybody";
    case opal::kAdmins: return "Admins";
    case opal::kUsers: return "Users";
    default: break;
  }
  char hex[20];
  std::snprintf(hex, sizeof hex, "0x%016llX", static_cast<unsigned long long>(authority));
  return hex;
}

std::optional<unsigned> RangeNumber(const std::string& typed) { return PlainNumber(typed, 0, 255); }

bool SameIgnoringCase(const std::string& a, const std::string& b) { return strcasecmp(a.c_str(), b.c_str()) == 0; }

}  // namespace veltrak_opal
