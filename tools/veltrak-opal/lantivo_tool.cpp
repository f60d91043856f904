// The companion face: lock state of a range, who may lock it, and which
// users are enabled. On success every line it prints holds "success" (or is
// the listing asked for); every failure goes to standard error in words that
// never hold it, and the exit status is 0 only on success.
#include <algorithm>
#include <functional>
#include <ostream>

#include "command_table.h"
#include "lantivo_format.h"
#include "sedutil_format.h"
#include "tables.h"
#include "tools.h"
#include "uids.h"

namespace veltrak_opal {

namespace {

using opal::Uid;
using SessionPtr = std::unique_ptr<opal::Session>;

constexpr int kFailed = 1;     // the drive refused or failed
constexpr int kUsage = 2;      // the command line is wrong
constexpr int kNoDrive = 3;    // the device cannot be opened or is not Opal

struct Call {
  Environment& env;
  std::vector<std::string> operands;
};

void Out(Call& call, const std::string& line) { Line(call.env.out, line); }
// One failure line; returns status for the caller to hand on.
int Fail(Call& call, const std::string& why, int status = kFailed) {
  Line(call.env.err, "Lantivo: " + why);
  return status;
}

std::string StatusWords(const opal::Error& error) {
  return error.status >= 0 ? std::string("the drive answered ") + opal::StatusName(error.status) : error.message;
}

// --- Operands --------------------------------------------------------------------

std::optional<unsigned> RangeOperand(Call& call, const std::string& typed) {
  std::optional<unsigned> range = RangeNumber(typed);
  if (!range) Fail(call, "the range must be a number from 0 to the drive's last range", kUsage);
  return range;
}

std::optional<bool> YesNoOperand(Call& call, const std::string& typed) {
  if (SameIgnoringCase(typed, "Y")) return true;
  if (SameIgnoringCase(typed, "N")) return false;
  Fail(call, "each lock flag must be Y or N", kUsage);
  return std::nullopt;
}

struct LockKinds {
  bool read = false, write = false;
};

std::optional<LockKinds> KindsOperand(Call& call, const std::string& typed) {
  if (SameIgnoringCase(typed, "R")) return LockKinds{true, false};
  if (SameIgnoringCase(typed, "W")) return LockKinds{false, true};
  if (SameIgnoringCase(typed, "RW")) return LockKinds{true, true};
  Fail(call, "the locking kind must be R, W or RW", kUsage);
  return std::nullopt;
}

// --- Device and sessions -------------------------------------------------------------

// The device as an Opal drive; nullptr after the failure line.
std::unique_ptr<Drive> OpenOpal(Call& call, const std::string& path) {
  Opened opened = OpenDrive(call.env, path);
  if (opened.problem == OpenProblem::kNone) return std::move(opened.drive);
  std::string why = opened.message;
  if (opened.problem == OpenProblem::kNotOpal && opened.drive->IsSata() &&
      why.find("libata.allow_tpm") == std::string::npos && call.env.allowTpm() != opal::AllowTpm::kSet) {
    why += " (the kernel may be blocking SATA trusted commands: boot with libata.allow_tpm=1)";
  }
  Fail(call, why);
  return nullptr;
}

// A Locking SP session as who; nullptr after the failure line.
SessionPtr LockingSession(Call& call, Drive& drive, const Principal& who, const std::string& password) {
  opal::Result<SessionPtr> session = StartAs(drive, opal::kLockingSp, who.authority, password);
  if (session) return std::move(*session);
  const std::string name = AuthorityName(who.authority);
  switch (session.error().status) {
    case static_cast<int>(opal::MethodStatus::kNotAuthorized):
      Fail(call, drive.path + " refused " + name + ": wrong password, or " + name + " is not enabled");
      break;
    case static_cast<int>(opal::MethodStatus::kAuthorityLockedOut):
      Fail(call, name + " is locked out of " + drive.path + " after too many wrong passwords; power-cycle the drive");
      break;
    case static_cast<int>(opal::MethodStatus::kInvalidParameter):
      Fail(call, drive.path + " refused a session on its Locking SP (INVALID_PARAMETER): is the drive owned and "
                              "its locking activated?");
      break;
    default: Fail(call, drive.path + ": starting a session as " + name + " failed: " + StatusWords(session.error()));
  }
  return nullptr;
}

const Principal kAdmin1 = {opal::kAdmin1, opal::kCpinAdmin1};

// What a command does in its session; 0, or the exit status after its failure line.
using SessionWork = std::function<int(Drive&, opal::Session&)>;
// What a command checks of the drive before it signs in; the same.
using DriveCheck = std::function<int(const Drive&)>;

// Opens the device as an Opal drive, checks it, signs in to the Locking SP as
// who and does the work; the session ends only when the work succeeded (a
// refused call leaves it to the drive). Returns the first step's failure.
int InLockingSession(Call& call, const std::string& path, const Principal& who, const std::string& password,
                     const SessionWork& work, const DriveCheck& check = nullptr) {
  std::unique_ptr<Drive> drive = OpenOpal(call, path);
  if (!drive) return kNoDrive;
  if (check) {
    if (int status = check(*drive); status != 0) return status;
  }
  SessionPtr session = LockingSession(call, *drive, who, password);
  if (!session) return kFailed;
  if (int status = work(*drive, *session); status != 0) return status;
  session->End();
  return 0;
}

// A refused call on a range: why, and whether the range exists at all.
int RangeRefused(Call& call, Drive& drive, opal::Session& session, unsigned range, const std::string& step,
                 const opal::Error& error) {
  std::string why = drive.path + ": " + step + " of locking range " + std::to_string(range) + " failed: " + StatusWords(error);
  if (error.status == static_cast<int>(opal::MethodStatus::kInvalidParameter)) {
    opal::Result<uint64_t> last = opal::ReadMaxRanges(session);
    if (last && range > *last) why += " (the drive has locking ranges 0 to " + std::to_string(*last) + ")";
  }
  return Fail(call, why);
}

// --- Commands ------------------------------------------------------------------------

int Scan(Call& call) {
  Out(call, "Lantivo: drives seen in /dev");
  for (const std::string& path : ScannedPaths(call.env.deviceNames())) {
    Opened opened = OpenDrive(call.env, path);
    const Drive* drive = opened.drive.get();
    Out(call, sedutil::ScanLine(path, opened.problem == OpenProblem::kNone ? &drive->discovery : nullptr,
                                drive != nullptr ? &drive->identity : nullptr));
  }
  Out(call, "Lantivo: end of the list");
  return 0;
}

// I P R|W|RW D: switches read and/or write locking of range I on or off.
int SwitchLocking(Call& call, bool enable) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[0]);
  if (!range) return kUsage;
  const std::optional<LockKinds> kinds = KindsOperand(call, call.operands[2]);
  if (!kinds) return kUsage;
  std::vector<std::pair<uint64_t, opal::Value>> columns;
  std::string done;
  const std::string flag = enable ? " = Y" : " = N";
  if (kinds->read) {
    columns.push_back({opal::column::kReadLockEnabled, opal::Value::Bool(enable)});
    done += "ReadLockEnabled" + flag;
  }
  if (kinds->write) {
    columns.push_back({opal::column::kWriteLockEnabled, opal::Value::Bool(enable)});
    done += std::string(done.empty() ? "" : ", ") + "WriteLockEnabled" + flag;
  }
  const int status =
      InLockingSession(call, call.operands[3], kAdmin1, call.operands[1], [&](Drive& drive, opal::Session& session) {
        opal::Status set = session.Set(opal::RangeUid(*range), columns);
        return set ? 0 : RangeRefused(call, drive, session, *range, "changing the lock switches", set.error());
      });
  if (status == 0) Out(call, "Locking Range " + std::to_string(*range) + ": " + done + ": success");
  return status;
}

int EnableLockingRange(Call& call) { return SwitchLocking(call, true); }
int DisableLockingRange(Call& call) { return SwitchLocking(call, false); }

// I Y|N Y|N P D [Admin1|UserN]: sets the read and write lock of range I, as
// Admin1 or as a user the range was granted to.
int SetLockingRange(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[0]);
  if (!range) return kUsage;
  const std::optional<bool> readLocked = YesNoOperand(call, call.operands[1]);
  if (!readLocked) return kUsage;
  const std::optional<bool> writeLocked = YesNoOperand(call, call.operands[2]);
  if (!writeLocked) return kUsage;
  Principal who = kAdmin1;
  if (call.operands.size() > 5) {
    const std::optional<Principal> named = StrictPrincipal(call.operands[5]);
    if (!named) return Fail(call, "the last operand must name Admin1 or a user, e.g. User2", kUsage);
    who = *named;
  }
  const int status =
      InLockingSession(call, call.operands[4], who, call.operands[3], [&](Drive& drive, opal::Session& session) {
        opal::Status set =
            session.Set(opal::RangeUid(*range), {{opal::column::kReadLocked, opal::Value::Bool(*readLocked)},
                                                 {opal::column::kWriteLocked, opal::Value::Bool(*writeLocked)}});
        return set ? 0 : RangeRefused(call, drive, session, *range, "locking or unlocking", set.error());
      });
  if (status == 0) {
    Out(call, "Locking Range " + std::to_string(*range) + ": ReadLocked = " + (*readLocked ? "Y" : "N") +
                  ", WriteLocked = " + (*writeLocked ? "Y" : "N") + " as " + AuthorityName(who.authority) +
                  ": success");
  }
  return status;
}

// The two ACEs that decide who may set a range's read and write lock.
struct LockAce {
  const char* what;
  Uid (*uid)(unsigned);
};
const LockAce kLockAces[] = {{"read-lock", opal::AceSetRdLockedUid}, {"write-lock", opal::AceSetWrLockedUid}};

// Reads the range's lock ACEs, in kLockAces' order, into expressions.
int ReadLockAces(Call& call, Drive& drive, opal::Session& session, unsigned range,
                 std::vector<opal::BooleanExpr>& expressions) {
  for (const LockAce& ace : kLockAces) {
    opal::Result<opal::BooleanExpr> expr = opal::ReadAce(session, ace.uid(range));
    if (!expr) {
      return RangeRefused(call, drive, session, range, std::string("reading the ") + ace.what + " access entry",
                          expr.error());
    }
    expressions.push_back(*expr);
  }
  return 0;
}

// Writes expressions[i] into the range's lock ACEs in order; on a failure
// says which were written.
int WriteLockAces(Call& call, Drive& drive, opal::Session& session, unsigned range,
                  const std::vector<std::optional<opal::BooleanExpr>>& expressions) {
  for (size_t i = 0; i < 2; ++i) {
    if (!expressions[i]) continue;
    opal::Status written = opal::WriteAce(session, kLockAces[i].uid(range), *expressions[i]);
    if (!written) {
      const int status = RangeRefused(call, drive, session, range,
                                      std::string("writing the ") + kLockAces[i].what + " access entry", written.error());
      if (i == 1 && expressions[0]) {
        Fail(call, drive.path + ": the read-lock access entry of range " + std::to_string(range) +
                       " was already changed to " + lantivo::Describe(*expressions[0]) +
                       "; the write-lock entry was left as it was");
      }
      return status;
    }
  }
  return 0;
}

// D P I User...: lets the users lock and unlock range I too.
int AddAce(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[2]);
  if (!range) return kUsage;
  std::vector<Uid> users;
  for (size_t i = 3; i < call.operands.size(); ++i) {
    const std::optional<Principal> user = StrictPrincipal(call.operands[i]);
    if (!user || call.operands[i].rfind("User", 0) != 0) {
      return Fail(call, "users must be named User1, User2, ...", kUsage);
    }
    users.push_back(user->authority);
  }
  const DriveCheck hasUsers = [&](const Drive& drive) {
    const unsigned userCount = drive.discovery.opal2 ? drive.discovery.opal2->lockingUsers : 0;
    for (Uid user : users) {
      if (userCount > 0 && user - opal::kUsers > userCount) {
        return Fail(call, drive.path + " has no " + AuthorityName(user) + ": its users are User1 to User" +
                              std::to_string(userCount));
      }
    }
    return 0;
  };
  opal::BooleanExpr readLockAfter;
  const int status = InLockingSession(
      call, call.operands[0], kAdmin1, call.operands[1],
      [&](Drive& drive, opal::Session& session) {
        // Both entries are read and checked before either is written.
        std::vector<opal::BooleanExpr> current;
        if (int status = ReadLockAces(call, drive, session, *range, current); status != 0) return status;
        std::vector<std::optional<opal::BooleanExpr>> changes(2);
        for (size_t i = 0; i < 2; ++i) {
          opal::Result<std::vector<Uid>> listed = opal::AuthoritiesOfAnyOf(current[i]);
          if (!listed) {
            return Fail(call, drive.path + ": the " + kLockAces[i].what + " access entry of range " +
                                  std::to_string(*range) + " reads \"" + lantivo::Describe(current[i]) +
                                  "\", which is not a plain list of alternatives; nothing was changed (clear it with "
                                  "--Delete_AllUser_ACE_Locking_range first)");
          }
          opal::BooleanExpr granted = lantivo::Granted(*listed, users);
          if (granted != current[i]) changes[i] = granted;
          if (i == 0) readLockAfter = granted;
        }
        return WriteLockAces(call, drive, session, *range, changes);
      },
      hasUsers);
  if (status == 0) {
    Out(call, "Locking Range " + std::to_string(*range) + ": may be locked and unlocked by " +
                  lantivo::Describe(readLockAfter) + ": success");
  }
  return status;
}

// D P I: leaves range I's locks to the administrators alone.
int DeleteAllUserAce(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[2]);
  if (!range) return kUsage;
  const opal::BooleanExpr adminsOnly = opal::AnyOf({opal::kAdmins});
  const int status =
      InLockingSession(call, call.operands[0], kAdmin1, call.operands[1], [&](Drive& drive, opal::Session& session) {
        return WriteLockAces(call, drive, session, *range, {adminsOnly, adminsOnly});
      });
  if (status == 0) {
    Out(call,
        "Locking Range " + std::to_string(*range) + ": users removed, only the administrators may lock it: success");
  }
  return status;
}

// D P I: one line naming who may lock range I, Admin1 first.
int ListUserAce(Call& call) {
  const std::optional<unsigned> range = RangeOperand(call, call.operands[2]);
  if (!range) return kUsage;
  std::vector<opal::BooleanExpr> expressions;
  const int status = InLockingSession(
      call, call.operands[0], kAdmin1, call.operands[1],
      [&](Drive& drive, opal::Session& session) { return ReadLockAces(call, drive, session, *range, expressions); });
  if (status == 0) Out(call, lantivo::AccessLine(*range, expressions[0], expressions[1]));
  return status;
}

// P D (the password first): whether each user of the drive is enabled.
int ListUserStatus(Call& call) {
  unsigned userCount = 0;
  const DriveCheck countsUsers = [&](const Drive& drive) {
    userCount = drive.discovery.opal2 ? drive.discovery.opal2->lockingUsers : 0;
    return userCount > 0 ? 0 : Fail(call, drive.path + " does not say how many users it has (no Opal 2 feature)");
  };
  std::vector<bool> enabled;
  const int status = InLockingSession(
      call, call.operands[1], kAdmin1, call.operands[0],
      [&](Drive& drive, opal::Session& session) {
        for (unsigned user = 1; user <= userCount; ++user) {
          opal::Result<bool> on = opal::ReadEnabled(session, opal::UserUid(user));
          if (!on) {
            return Fail(call, drive.path + ": reading whether User" + std::to_string(user) +
                                  " is enabled failed: " + StatusWords(on.error()));
          }
          enabled.push_back(*on);
        }
        return 0;
      },
      countsUsers);
  for (unsigned user = 1; status == 0 && user <= userCount; ++user)
    Out(call, lantivo::UserStatusLine(user, enabled[user - 1]));
  return status;
}

const Command<Call> kCommands[] = {
    {"scan", 0, 0, Scan, ""},
    {"enableLockingRange", 4, 4, EnableLockingRange, "RANGE PASSWORD R|W|RW DEVICE"},
    {"disableLockingRange", 4, 4, DisableLockingRange, "RANGE PASSWORD R|W|RW DEVICE"},
    {"setLockingRange", 5, 6, SetLockingRange, "RANGE Y|N Y|N PASSWORD DEVICE [Admin1|UserN]"},
    {"Add_ACE_Locking_range", 4, SIZE_MAX, AddAce, "DEVICE PASSWORD RANGE UserN [UserN ...]"},
    {"Delete_AllUser_ACE_Locking_range", 3, 3, DeleteAllUserAce, "DEVICE PASSWORD RANGE"},
    {"list_User_ACE_Locking_range", 3, 3, ListUserAce, "DEVICE PASSWORD RANGE"},
    {"ListUserStatus", 2, 2, ListUserStatus, "PASSWORD DEVICE"},
};

int Usage(Environment& env) {
  Line(env.err, "usage: Lantivo --<command> <operands>, one of:");
  for (const Command<Call>& command : kCommands) {
    Line(env.err, std::string("  --") + command.name + (*command.usage ? " " : "") + command.usage);
  }
  Line(env.err, "--setLockingRange sets the read lock, then the write lock (Y locked, N unlocked), as Admin1, or as the");
  Line(env.err, "  user named last when that user may lock the range (--Add_ACE_Locking_range) and PASSWORD is its own.");
  return kUsage;
}

}  // namespace

int LantivoMain(const std::vector<std::string>& args, Environment& env) {
  const Command<Call>* command = args.empty() ? nullptr : FindCommand(kCommands, args[0]);
  if (command == nullptr) {
    if (!args.empty()) Line(env.err, "Lantivo: unknown command");
    return Usage(env);
  }
  Call call{env, std::vector<std::string>(args.begin() + 1, args.end())};
  if (!command->Takes(call.operands.size())) {
    Line(env.err, std::string("Lantivo: wrong number of operands for --") + command->name);
    return Usage(env);
  }
  return command->run(call);
}

}  // namespace veltrak_opal
