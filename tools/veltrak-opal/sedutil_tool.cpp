// The sedutil-compatible face. Each command is a list of named steps over
// one session where the drive allows it; what it prints, and on which
// stream, is what sedutil 1.20 prints for the same outcome. Where a later
// step fails after an earlier one changed the drive, a line of our own on
// standard error says what the drive is left with.
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <ostream>
#include <sstream>

#include "command_table.h"
#include "sedutil_format.h"
#include "tables.h"
#include "tools.h"
#include "uids.h"

namespace veltrak_opal {

namespace {

using namespace sedutil;
using opal::Uid;
using SessionPtr = std::unique_ptr<opal::Session>;

struct Call {
  Environment& env;
  std::string typed;  // the command as typed, e.g. "--setLockingRange"
  std::vector<std::string> operands;
};

void Out(Call& call, const std::string& line) { Line(call.env.out, line); }
void Err(Call& call, const std::string& line) { Line(call.env.err, line); }
void ErrLines(Call& call, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) Err(call, line);
}

std::string Why(const Drive& drive, const opal::Error& error) { return drive.path + ": " + error.message; }

// --- Operands --------------------------------------------------------------------

// "0" to "15", written exactly so.
std::optional<unsigned> SedutilRange(const std::string& typed) {
  for (unsigned n = 0; n <= 15; ++n) {
    if (typed == std::to_string(n)) return n;
  }
  return std::nullopt;
}

struct LockState {
  const char* name;
  bool readLocked, writeLocked;
};
constexpr LockState kLockStates[] = {{"RW", false, false}, {"RO", false, true}, {"LK", true, true}};

std::optional<LockState> ParseLockState(const std::string& typed) {
  for (const LockState& state : kLockStates) {
    if (SameIgnoringCase(typed, state.name)) return state;
  }
  return std::nullopt;
}

std::optional<bool> ParseOnOff(const std::string& typed) {
  if (SameIgnoringCase(typed, "on")) return true;
  if (SameIgnoringCase(typed, "off")) return false;
  return std::nullopt;
}

const char* OnOff(bool on) { return on ? "on" : "off"; }

// A range operand, or nullopt after sedutil's complaint.
std::optional<unsigned> RangeOperand(Call& call, const std::string& typed) {
  std::optional<unsigned> range = SedutilRange(typed);
  if (!range) Err(call, "Invalid Locking Range (0-15) " + typed);
  return range;
}

// --- Device and sessions -----------------------------------------------------------

// sedutil's warnings about the libata flag, printed each time it identifies
// a SATA device.
void WarnAllowTpm(Call& call) {
  switch (call.env.allowTpm()) {
    case opal::AllowTpm::kSet: break;
    case opal::AllowTpm::kUnreadable: Err(call, "Unable to verify Kernel flag libata.allow_tpm "); break;
    case opal::AllowTpm::kNotSet:
      Err(call, "The Kernel flag libata.allow_tpm is not set correctly");
      Err(call, "Please see the readme note about setting the libata.allow_tpm ");
      break;
  }
}

void PermissionLines(Call& call) {
  Err(call, "You do not have permission to access the raw disk in write mode");
  Err(call, "Perhaps you might try sudo to run as root");
}

bool MayReadWrite(const Call& call, const std::string& path) {
  return !call.env.mayReadWrite || call.env.mayReadWrite(path);
}

// Opens path as sedutil opens a device, with the lines it prints on the
// way: the permission lines, then the flag's warnings once a SATA device
// identified.
Opened OpenAsSedutil(Call& call, const std::string& path) {
  const opal::DeviceKind kind = opal::KindOfPath(path);
  // sedutil asks access() about a SATA path and opens it all the same; for
  // NVMe it complains only when the open fails.
  if (kind == opal::DeviceKind::kSata && !MayReadWrite(call, path)) PermissionLines(call);
  Opened opened = OpenDrive(call.env, path);
  if (kind == opal::DeviceKind::kNvme && opened.problem == OpenProblem::kCannotOpen) PermissionLines(call);
  if (opened.drive && opened.drive->IsSata()) WarnAllowTpm(call);
  return opened;
}

// The device opened and discovered, and the Properties exchanged, as sedutil
// does before every command but the scan; nullptr after sedutil's refusal
// lines (exit kBadDiskOrOption).
std::unique_ptr<Drive> Prologue(Call& call, const std::string& path) {
  Opened opened = OpenAsSedutil(call, path);
  if (opened.problem == OpenProblem::kNone) {
    // sedutil opens and identifies an Opal drive once more before the
    // command, and prints those lines again.
    if (opened.drive->IsSata()) {
      if (!MayReadWrite(call, path)) PermissionLines(call);
      WarnAllowTpm(call);
    }
    // A failed exchange is said, no more; the drive's default limits serve.
    if (!opened.drive->device->ExchangeProperties()) Err(call, "Properties exchange failed");
    return std::move(opened.drive);
  }
  if (opened.problem == OpenProblem::kUnknownKind) Err(call, "DtaDevOS::init ERROR - unknown drive type");
  Err(call, "Invalid or unsupported disk " + path);
  return nullptr;
}

// A session on sp; nullptr after the failure block, with rc its exit status.
SessionPtr Open(Call& call, Drive& drive, Uid sp, std::optional<Uid> authority, std::optional<opal::Bytes> challenge,
                int& rc) {
  opal::Result<SessionPtr> session = opal::Session::Start(*drive.device, sp, authority, std::move(challenge));
  if (session) return std::move(*session);
  ErrLines(call, SessionFailureLines(session.error().status, Why(drive, session.error())));
  rc = ExitCode(session.error().status);
  return nullptr;
}

SessionPtr Admin1(Call& call, Drive& drive, const std::string& password, int& rc) {
  return Open(call, drive, opal::kLockingSp, opal::kAdmin1, PasswordBytes(password), rc);
}

// A refused or failed call: the status line, then the command's own lines.
int Refused(Call& call, const Drive& drive, const opal::Error& error, std::initializer_list<std::string> lines = {}) {
  Err(call, CallFailureLine(error.status, Why(drive, error)));
  for (const std::string& line : lines) Err(call, line);
  return ExitCode(error.status);
}

// --- Commands ------------------------------------------------------------------------

int Scan(Call& call) {
  // sedutil prints the scan through a buffered printf that is written out at
  // exit: under a pipe every line of standard error comes first.
  std::ostringstream lines;
  lines << "Scanning for Opal compliant disks\n";
  for (const std::string& path : ScannedPaths(call.env.deviceNames())) {
    Opened opened = OpenAsSedutil(call, path);
    const Drive* drive = opened.drive.get();
    lines << ScanLine(path, opened.problem == OpenProblem::kNone ? &drive->discovery : nullptr,
                      drive != nullptr ? &drive->identity : nullptr)
          << '\n';
  }
  lines << "No more disks present ending scan\n";
  call.env.out << lines.str() << std::flush;
  return 0;
}

int Query(Call& call) {
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[0]);
  if (!drive) return kBadDiskOrOption;
  call.env.out << QueryReport(drive->path, drive->identity, drive->discovery) << std::flush;
  if (!drive->device->propertiesFailed()) {
    call.env.out << PropertiesBlock(drive->device->tperProperties(), opal::HostProperties()) << std::flush;
  }
  return 0;
}

int ListLockingRanges(Call& call) {
  const std::string& password = call.operands[0];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[1]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, password, rc);
  if (!session) return rc;
  opal::Result<uint64_t> maxRanges = opal::ReadMaxRanges(*session);
  if (!maxRanges || *maxRanges > 255) {
    if (!maxRanges) Err(call, CallFailureLine(maxRanges.error().status, Why(*drive, maxRanges.error())));
    if (maxRanges) Err(call, drive->path + ": the drive claims more locking ranges than can be addressed");
    Err(call, "Unable to determine number of ranges ");
    return maxRanges ? kNoLockingInfo : ExitCode(maxRanges.error().status);
  }
  Out(call, "Locking Range Configuration for " + drive->path);
  for (unsigned range = 0; range <= *maxRanges; ++range) {
    opal::Result<opal::RangeInfo> info = opal::ReadRange(*session, range);
    if (!info) return Refused(call, *drive, info.error());
    for (const std::string& line : RangeLines(range, *info)) Out(call, line);
  }
  session->End();
  return 0;
}

int SetupLockingRange(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[0]);
  if (!range) return kBadDiskOrOption;
  const uint64_t start = static_cast<uint64_t>(std::atoll(call.operands[1].c_str()));
  const uint64_t length = static_cast<uint64_t>(std::atoll(call.operands[2].c_str()));
  const std::string& password = call.operands[3];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[4]);
  if (!drive) return kBadDiskOrOption;
  if (*range == 0) {
    Err(call, "global locking range cannot be changed");
    return kGlobalRangeUnchangeable;
  }
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, password, rc);
  if (!session) return rc;
  const std::string name = "LockingRange" + std::to_string(*range);
  opal::Status placed = session->Set(opal::RangeUid(*range), {{opal::column::kRangeStart, opal::Value::UInt(start)},
                                                              {opal::column::kRangeLength, opal::Value::UInt(length)},
                                                              {opal::column::kReadLockEnabled, opal::Value::Bool(false)},
                                                              {opal::column::kWriteLockEnabled, opal::Value::Bool(false)},
                                                              {opal::column::kReadLocked, opal::Value::Bool(false)},
                                                              {opal::column::kWriteLocked, opal::Value::Bool(false)}});
  if (!placed) return Refused(call, *drive, placed.error(), {"setupLockingRange Failed "});
  opal::Result<Uid> key = opal::ReadActiveKey(*session, *range);
  opal::Status rekeyed = key ? opal::GenKey(*session, *key) : opal::Status(key.error());
  if (!rekeyed) {
    return Refused(call, *drive, rekeyed.error(),
                   {"rekeyLockingRange Failed ", "setupLockingRange Unable to reKey Locking range -- Possible security issue ",
                    drive->path + ": range " + std::to_string(*range) + " was moved to block " + std::to_string(start) +
                        " for " + std::to_string(length) +
                        " blocks, unlocked, but keeps its old key: data written there before is still readable"});
  }
  session->End();
  Out(call, name + " reKeyed ");
  Out(call, name + " starting block " + std::to_string(start) + " for " + std::to_string(length) +
                " blocks configured as unlocked range");
  return 0;
}

int SetLockingRange(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[0]);
  if (!range) return kBadDiskOrOption;
  const std::optional<LockState> state = ParseLockState(call.operands[1]);
  if (!state) {
    Err(call, "Invalid locking state <ro|rw|lk> " + call.operands[1]);
    return kBadDiskOrOption;
  }
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[3]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[2], rc);
  if (!session) return rc;
  opal::Status set = session->Set(opal::RangeUid(*range), {{opal::column::kReadLocked, opal::Value::Bool(state->readLocked)},
                                                           {opal::column::kWriteLocked, opal::Value::Bool(state->writeLocked)}});
  if (!set) return Refused(call, *drive, set.error(), {"setLockingRange Failed "});
  session->End();
  Out(call, "LockingRange" + std::to_string(*range) + " set to " + state->name);
  return 0;
}

int ConfigureLockingRange(Call& call, bool enable) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[0]);
  if (!range) return kBadDiskOrOption;
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[2]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[1], rc);
  if (!session) return rc;
  opal::Status set = session->Set(opal::RangeUid(*range), {{opal::column::kReadLockEnabled, opal::Value::Bool(enable)},
                                                           {opal::column::kWriteLockEnabled, opal::Value::Bool(enable)}});
  if (!set) return Refused(call, *drive, set.error(), {"configureLockingRange Failed "});
  session->End();
  const std::string name = "LockingRange" + std::to_string(*range);
  Out(call, enable ? name + " enabled ReadLocking,WriteLocking" : name + " disabled ");
  return 0;
}

int EnableLockingRange(Call& call) { return ConfigureLockingRange(call, true); }
int DisableLockingRange(Call& call) { return ConfigureLockingRange(call, false); }

// The authority a user id names, or nullopt after sedutil's complaint
// (which it prints only once the session has started).
std::optional<Principal> UserOperand(Call& call, const std::string& id) {
  std::optional<Principal> principal = SedutilPrincipal(id);
  if (!principal) {
    Err(call, "Invalid Userid " + id);
    Err(call, "Unable to find user " + id + " in Authority Table");
  }
  return principal;
}

int EnableUser(Call& call) {
  const std::string& id = call.operands[1];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[2]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[0], rc);
  if (!session) {
    Err(call, "Unable to enable user " + id);
    return rc;
  }
  const std::optional<Principal> user = UserOperand(call, id);
  if (!user) return kBadUserId;
  opal::Status enabled = opal::SetEnabled(*session, user->authority, true);
  if (!enabled) return Refused(call, *drive, enabled.error(), {"Unable to enable user " + id});
  session->End();
  Out(call, id + " has been enabled ");
  return 0;
}

int SetPassword(Call& call) {
  const std::string& id = call.operands[1];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[3]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[0], rc);
  if (!session) return rc;
  const std::optional<Principal> user = UserOperand(call, id);
  if (!user) return kBadUserId;
  opal::Status set = opal::SetPin(*session, user->credential, PasswordBytes(call.operands[2]));
  if (!set) return Refused(call, *drive, set.error(), {"Set Failed ", "Unable to set user " + id + " new password "});
  session->End();
  Out(call, id + " password changed");
  return 0;
}

int RevertNoErase(Call& call) {
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[1]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[0], rc);
  if (!session) {
    Err(call, "Start session failed");
    return rc;
  }
  opal::Status reverted = opal::RevertLockingSp(*session, true);
  if (!reverted) return Refused(call, *drive, reverted.error(), {"Command failed"});
  Out(call, "Revert LockingSP complete");
  return 0;
}

// Revert of the whole TPer, authorised by the SID password or the PSID.
int RevertAs(Call& call, Uid authority, const opal::Bytes& challenge) {
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[1]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Open(call, *drive, opal::kAdminSp, authority, challenge, rc);
  if (!session) return rc;
  opal::Status reverted = opal::RevertTper(*session);
  if (!reverted) return Refused(call, *drive, reverted.error());
  Out(call, "revertTper completed successfully");
  return 0;
}

int RevertTper(Call& call) { return RevertAs(call, opal::kSid, PasswordBytes(call.operands[0])); }
int PsidRevert(Call& call) {
  const std::string& psid = call.operands[0];
  return RevertAs(call, opal::kPsid, opal::Bytes(psid.begin(), psid.end()));
}

const std::vector<std::string> kMbrSetFailed = {"Set Failed ", "Unable to update table"};

int SetMbrEnable(Call& call) {
  const std::optional<bool> on = ParseOnOff(call.operands[0]);
  if (!on) {
    Err(call, "Invalid setMBREnable argument not <on|off> " + call.operands[0]);
    return kBadDiskOrOption;
  }
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[2]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[1], rc);
  if (!session) {
    ErrLines(call, {"Unable to set setMBRDone on", "unable to set MBRDone"});
    return rc;
  }
  // Done is set with Enable in one write, as sedutil sets it before Enable.
  opal::Status set = session->Set(opal::kMbrControl, {{opal::column::kMbrEnable, opal::Value::Bool(*on)},
                                                      {opal::column::kMbrDone, opal::Value::Bool(true)}});
  if (!set) {
    return Refused(call, *drive, set.error(),
                   {kMbrSetFailed[0], kMbrSetFailed[1], "Unable to set setMBRDone on", "unable to set MBRDone"});
  }
  session->End();
  Out(call, "MBRDone set on ");
  Out(call, std::string("MBREnable set ") + OnOff(*on) + " ");
  return 0;
}

int SetMbrDone(Call& call) {
  const std::optional<bool> on = ParseOnOff(call.operands[0]);
  if (!on) {
    Err(call, "Invalid setMBRDone argument not <on|off> " + call.operands[0]);
    return kBadDiskOrOption;
  }
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[2]);
  if (!drive) return kBadDiskOrOption;
  const std::string failed = std::string("Unable to set setMBRDone ") + OnOff(*on);
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[1], rc);
  if (!session) {
    Err(call, failed);
    return rc;
  }
  opal::Status set = session->Set(opal::kMbrControl, {{opal::column::kMbrDone, opal::Value::Bool(*on)}});
  if (!set) return Refused(call, *drive, set.error(), {kMbrSetFailed[0], kMbrSetFailed[1], failed});
  session->End();
  Out(call, std::string("MBRDone set ") + OnOff(*on) + " ");
  return 0;
}

// The chunk size sedutil derives from the drive's properties, kept inside
// what one of our ComPackets can carry.
size_t PbaChunkSize(const opal::Device& device) {
  const opal::Properties& tper = device.tperProperties();
  uint64_t block = std::min<uint64_t>(61440, opal::PropertyOr(tper, "MaxComPacketSize", 2048));
  const uint64_t token = opal::PropertyOr(tper, "MaxIndTokenSize", 1950);
  if (token < 4 + 106 || block < 106) return 0;
  if (block > token - 4) block = token - 4;
  block -= 106;
  // A Set of the MBR table costs at most 48 bytes of tokens besides the data.
  const size_t room = device.MaxPayload() > 48 ? device.MaxPayload() - 48 : 0;
  return static_cast<size_t>(std::min<uint64_t>(block, room));
}

int LoadPbaImage(Call& call) {
  const std::string& file = call.operands[1];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[2]);
  if (!drive) return kBadDiskOrOption;
  struct stat info {};
  std::ifstream image;
  if (stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode)) image.open(file, std::ios::binary);
  if (!image.is_open()) {
    Err(call, "Unable to open PBA image file " + file);
    return kNoImageFile;
  }
  const uint64_t size = static_cast<uint64_t>(info.st_size);
  int rc = 0;
  SessionPtr session = Admin1(call, *drive, call.operands[0], rc);
  if (!session) return rc;
  const size_t block = PbaChunkSize(*drive->device);
  if (block == 0) {
    Err(call, drive->path + ": the drive's transfer limits leave no room for image data");
    return kNoMethodStatus;
  }
  Out(call, "Writing PBA to " + drive->path);
  opal::Bytes chunk(block);
  uint64_t done = 0;
  while (done < size) {
    image.read(reinterpret_cast<char*>(chunk.data()), static_cast<std::streamsize>(std::min<uint64_t>(block, size - done)));
    chunk.resize(static_cast<size_t>(image.gcount()));
    if (chunk.empty()) break;  // the file shrank while being read
    opal::Status written = opal::WriteMbr(*session, done, chunk);
    if (!written) {
      call.env.out << std::flush;
      return Refused(call, *drive, written.error(),
                     {drive->path + ": " + std::to_string(done) + " of " + std::to_string(size) +
                      " bytes of the image are in the shadow MBR; the image there is incomplete"});
    }
    done += chunk.size();
    chunk.resize(block);
    call.env.out << done << " of " << size << " " << done * 100 / size << "% blk=" << block << " \r" << std::flush;
  }
  call.env.out << "\n" << std::flush;
  session->End();
  Out(call, "PBA image  " + file + " written to " + drive->path);
  return 0;
}

// --- initialSetup: take ownership, activate, configure ----------------------------

constexpr const char* kNoOwnership = "Initial setup failed - unable to take ownership";
constexpr const char* kNoActivation = "Initial setup failed - unable to activate LockingSP";
constexpr const char* kNoGlobalRange = "Initial setup failed - unable to configure global locking range";
constexpr const char* kNoMbrShadow = "Initial setup failed - unable to Enable MBR shadow";

// Step 1: the MSID, read anonymously; nullopt after the failure lines.
std::optional<opal::Bytes> ReadMsidStep(Call& call, Drive& drive, int& rc) {
  opal::Result<SessionPtr> session = opal::Session::Start(*drive.device, opal::kAdminSp);
  opal::Result<opal::Bytes> msid = opal::Fail("");
  if (!session) {
    const std::vector<std::string> lines = SessionFailureLines(session.error().status, Why(drive, session.error()));
    ErrLines(call, {lines[0], lines[1], "Unable to start Unauthenticated session " + drive.path, lines[2], lines[3]});
    rc = ExitCode(session.error().status);
  } else if (!(msid = opal::ReadMsid(**session))) {
    Err(call, CallFailureLine(msid.error().status, Why(drive, msid.error())));
    rc = ExitCode(msid.error().status);
  } else {
    (*session)->End();
    // The MSID goes back to the drive as a plain string, up to a NUL.
    msid->erase(std::find(msid->begin(), msid->end(), 0), msid->end());
    return *msid;
  }
  ErrLines(call, {"Unable to read MSID password ", kNoOwnership});
  return std::nullopt;
}

// Steps 2 and 3, in one SID session: the SID's password, then activation.
int OwnAndActivateStep(Call& call, Drive& drive, const opal::Bytes& msid, const std::string& password) {
  int rc = 0;
  SessionPtr session = Open(call, drive, opal::kAdminSp, opal::kSid, msid, rc);
  if (!session) {
    ErrLines(call, {"takeOwnership failed", kNoOwnership});
    return rc;
  }
  opal::Status owned = opal::SetPin(*session, opal::kCpinSid, PasswordBytes(password));
  if (!owned) return Refused(call, drive, owned.error(), {"takeOwnership failed", kNoOwnership});
  Out(call, "takeOwnership complete");
  const std::string ownedNote = drive.path + ": the SID password is now the new password; the Locking SP was left as it was";
  opal::Result<uint64_t> lifeCycle = opal::ReadLifeCycle(*session, opal::kLockingSp);
  if (!lifeCycle) return Refused(call, drive, lifeCycle.error(), {kNoActivation, ownedNote});
  if (*lifeCycle != opal::kManufacturedInactive) {
    ErrLines(call, {"Locking SP lifecycle is not Manufactured-Inactive", kNoActivation, ownedNote});
    return kWrongLifeCycle;
  }
  opal::Status activated = opal::ActivateLockingSp(*session);
  if (!activated) return Refused(call, drive, activated.error(), {kNoActivation, ownedNote});
  session->End();
  Out(call, "Locking SP Activate Complete");
  return 0;
}

// Steps 4 to 8 in one Admin1 session: the global range unlocked and not
// lock-enabled, then the shadow MBR on and done, each in one write.
int ConfigureStep(Call& call, Drive& drive, const std::string& password) {
  const std::string activeNote =
      drive.path + ": the drive is owned and its Locking SP active with the new password, but ";
  int rc = 0;
  SessionPtr session = Admin1(call, drive, password, rc);
  if (!session) {
    ErrLines(call, {kNoGlobalRange, activeNote + "the global range and shadow MBR were not configured"});
    return rc;
  }
  opal::Status unlocked = session->Set(opal::kLockingGlobalRange, {{opal::column::kReadLockEnabled, opal::Value::Bool(false)},
                                                                   {opal::column::kWriteLockEnabled, opal::Value::Bool(false)},
                                                                   {opal::column::kReadLocked, opal::Value::Bool(false)},
                                                                   {opal::column::kWriteLocked, opal::Value::Bool(false)}});
  if (!unlocked) {
    return Refused(call, drive, unlocked.error(),
                   {"configureLockingRange Failed ", kNoGlobalRange,
                    activeNote + "the global range and shadow MBR were not configured"});
  }
  Out(call, "LockingRange0 disabled ");
  Out(call, "LockingRange0 set to RW");
  opal::Status shadow = session->Set(opal::kMbrControl, {{opal::column::kMbrEnable, opal::Value::Bool(true)},
                                                         {opal::column::kMbrDone, opal::Value::Bool(true)}});
  if (!shadow) {
    return Refused(call, drive, shadow.error(),
                   {kMbrSetFailed[0], kMbrSetFailed[1], "Unable to set setMBRDone on", kNoMbrShadow,
                    activeNote + "the shadow MBR was left off"});
  }
  session->End();
  Out(call, "MBRDone set on ");
  Out(call, "MBRDone set on ");
  Out(call, "MBREnable set on ");
  return 0;
}

int InitialSetup(Call& call) {
  const std::string& password = call.operands[0];
  std::unique_ptr<Drive> drive = Prologue(call, call.operands[1]);
  if (!drive) return kBadDiskOrOption;
  int rc = 0;
  const std::optional<opal::Bytes> msid = ReadMsidStep(call, *drive, rc);
  if (!msid) return rc;
  if ((rc = OwnAndActivateStep(call, *drive, *msid, password)) != 0) return rc;
  if ((rc = ConfigureStep(call, *drive, password)) != 0) return rc;
  Out(call, "Initial setup of TPer complete on " + drive->path);
  return 0;
}

// --- The table ---------------------------------------------------------------------

const Command<Call> kCommands[] = {
    {"scan", 0, 0, Scan, ""},
    {"query", 1, 1, Query, "<device>"},
    {"listLockingRanges", 2, 2, ListLockingRanges, "<password> <device>"},
    {"setupLockingRange", 5, 5, SetupLockingRange, "<0-15> <start> <length> <password> <device>"},
    {"setLockingRange", 4, 4, SetLockingRange, "<0-15> <RW|RO|LK> <password> <device>"},
    {"enableLockingRange", 3, 3, EnableLockingRange, "<0-15> <password> <device>"},
    {"disableLockingRange", 3, 3, DisableLockingRange, "<0-15> <password> <device>"},
    {"enableUser", 3, 3, EnableUser, "<password> <UserN> <device>"},
    {"setPassword", 4, 4, SetPassword, "<password> <UserN> <new password> <device>"},
    {"revertNoErase", 2, 2, RevertNoErase, "<password> <device>"},
    {"revertTPer", 2, 2, RevertTper, "<SID password> <device>"},
    {"yesIreallywanttoERASEALLmydatausingthePSID", 2, 2, PsidRevert, "<PSID> <device>"},
    {"setMBREnable", 3, 3, SetMbrEnable, "<on|off> <password> <device>"},
    {"setMBRDone", 3, 3, SetMbrDone, "<on|off> <password> <device>"},
    {"loadPBAimage", 3, 3, LoadPbaImage, "<password> <file> <device>"},
    {"initialSetup", 2, 2, InitialSetup, "<password> <device>"},
};

int Usage(Environment& env) {
  Line(env.err, "usage: sedutil-cli -n <command> <operands>   (passwords unhashed; Veltrak's commands only)");
  for (const Command<Call>& command : kCommands) {
    Line(env.err, std::string("  --") + command.name + (*command.usage ? " " : "") + command.usage);
  }
  return kBadDiskOrOption;
}

}  // namespace

int SedutilMain(const std::vector<std::string>& args, Environment& env) {
  if (args.size() < 2 || args[0] != "-n") return Usage(env);
  const Command<Call>* command = FindCommand(kCommands, args[1]);
  if (command == nullptr) {
    Line(env.err, "Invalid command line argument " + args[1]);
    Line(env.err, "sedutil-cli: only Veltrak's commands are answered; see veltrak-opal(8)");
    return kBadDiskOrOption;
  }
  Call call{env, args[1], std::vector<std::string>(args.begin() + 2, args.end())};
  if (!command->Takes(call.operands.size())) {
    Line(env.err, "Incorrect number of paramaters for " + args[1] + " command");
    return kBadDiskOrOption;
  }
  return command->run(call);
}

}  // namespace veltrak_opal
