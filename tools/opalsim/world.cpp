#include "world.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace opalsim {

using opal::Fail;

NodeKind KindOfNode(const std::string& path) {
  if (path.size() == 8 && path.compare(0, 7, "/dev/sd") == 0 && path[7] >= 'a' && path[7] <= 'z') {
    return NodeKind::kSata;
  }
  const std::string prefix = "/dev/nvme";
  if (path.rfind(prefix, 0) != 0) return NodeKind::kNone;
  size_t end = prefix.size();
  while (end < path.size() && end < prefix.size() + 2 && std::isdigit(static_cast<unsigned char>(path[end]))) ++end;
  if (end == prefix.size()) return NodeKind::kNone;
  if (end == path.size()) return NodeKind::kNvmeController;
  return path.compare(end, std::string::npos, "n1") == 0 ? NodeKind::kNvmeNamespace : NodeKind::kNone;
}

std::string DriveNode(const std::string& path) {
  // /dev/nvme0n1 is namespace 1 of the drive whose controller is /dev/nvme0.
  if (KindOfNode(path) == NodeKind::kNvmeNamespace) return path.substr(0, path.size() - 2);
  return path;
}

Drive* World::Find(const std::string& path) {
  const std::string node = DriveNode(path);
  for (Drive& drive : drives) {
    if (drive.device == node) return &drive;
  }
  return nullptr;
}

const Drive* World::Find(const std::string& path) const { return const_cast<World*>(this)->Find(path); }

// --- Text form ------------------------------------------------------------------

namespace {

const char kMagic[] = "opalsim-state 1";

std::string Hex(const Bytes& bytes) {
  if (bytes.empty()) return "-";
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (uint8_t b : bytes) {
    text += kDigits[b >> 4];
    text += kDigits[b & 0xF];
  }
  return text;
}

std::string Hex64(uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

std::string NumberList(const std::vector<uint64_t>& numbers) {
  if (numbers.empty()) return "-";
  std::string text;
  for (uint64_t n : numbers) text += (text.empty() ? "" : ",") + std::to_string(n);
  return text;
}

std::string ExprText(const BooleanExpr& expr) {
  if (expr.empty()) return "-";
  static const char* kOps[] = {"AND", "OR", "NOT"};
  std::string text;
  for (const opal::AceTerm& term : expr) {
    text += (text.empty() ? "" : ",") + (term.isOperator ? std::string(kOps[static_cast<int>(term.op)])
                                                          : Hex64(term.authority));
  }
  return text;
}

void PutCredential(std::ostream& out, const Credential& c) { out << Hex(c.pin) << ' ' << c.tries; }

void PutDrive(std::ostream& out, const Drive& d) {
  out << "drive " << d.device << '\n'
      << "model " << d.model << '\n'
      << "firmware " << d.firmware << '\n'
      << "serial " << d.serial << '\n'
      << "opal " << (d.opal ? "yes" : "no") << '\n'
      << "blocks " << d.blocks << '\n'
      << "ranges " << d.rangeCount << '\n'
      << "users " << d.userCount << '\n';
  for (const auto& [name, value] : SettingList(d.settings)) out << "set " << name << ' ' << value << '\n';
  out << "msid " << Hex(d.msid) << '\n';
  out << "sid ";
  PutCredential(out, d.sid);
  out << "\npsid ";
  PutCredential(out, d.psid);
  out << "\nlife-cycle " << d.lifeCycle << '\n'
      << "generation " << d.generation << '\n'
      << "fail-next " << d.failNext << '\n';
  for (size_t i = 0; i < d.admins.size(); ++i) {
    out << "admin " << i + 1 << ' ' << d.admins[i].enabled << ' ';
    PutCredential(out, d.admins[i].credential);
    out << '\n';
  }
  for (size_t i = 0; i < d.users.size(); ++i) {
    out << "user " << i + 1 << ' ' << d.users[i].enabled << ' ';
    PutCredential(out, d.users[i].credential);
    out << '\n';
  }
  for (size_t i = 0; i < d.ranges.size(); ++i) {
    const Range& r = d.ranges[i];
    out << "range " << i << ' ' << r.start << ' ' << r.length << ' ' << r.readLockEnabled << ' '
        << r.writeLockEnabled << ' ' << r.readLocked << ' ' << r.writeLocked << ' ' << NumberList(r.lockOnReset)
        << ' ' << Hex64(r.dataKey) << '\n';
  }
  for (const auto& [uid, expr] : d.aces) out << "ace " << Hex64(uid) << ' ' << ExprText(expr) << '\n';
  out << "mbr " << d.mbrEnable << ' ' << d.mbrDone << ' ' << NumberList(d.mbrDoneOnReset) << ' ' << d.mbrWritten
      << '\n'
      << "end\n";
}

// Reads the words of one line, reporting the first that does not parse.
class LineReader {
 public:
  LineReader(const std::string& line, size_t number) : words_(line), number_(number) {}

  std::string Word() {
    std::string word;
    if (!(words_ >> word)) Error("a value is missing");
    return word;
  }
  std::string Rest() {
    std::string rest;
    std::getline(words_ >> std::ws, rest);
    if (rest.empty()) Error("a value is missing");
    return rest;
  }
  uint64_t Number(uint64_t limit = UINT64_MAX) {
    const std::string word = Word();
    if (word.empty() || word.size() > 20 || word.find_first_not_of("0123456789") != std::string::npos) {
      Error("\"" + word + "\" is not a number");
      return 0;
    }
    errno = 0;
    const unsigned long long value = std::strtoull(word.c_str(), nullptr, 10);
    if (errno != 0 || value > limit) Error(word + " is out of range");
    return value;
  }
  bool Flag() { return Number(1) == 1; }
  uint64_t Hex64() {
    const std::string word = Word();
    if (word.size() != 16 || word.find_first_not_of("0123456789abcdef") != std::string::npos) {
      Error("\"" + word + "\" is not a 16-digit hex number");
      return 0;
    }
    return std::strtoull(word.c_str(), nullptr, 16);
  }
  Bytes HexBytes(size_t limit) {
    const std::string word = Word();
    Bytes bytes;
    if (word == "-") return bytes;
    if (word.size() % 2 != 0 || word.size() / 2 > limit ||
        word.find_first_not_of("0123456789abcdef") != std::string::npos) {
      Error("\"" + word + "\" is not a hex byte string");
      return bytes;
    }
    for (size_t i = 0; i < word.size(); i += 2) bytes.push_back(static_cast<uint8_t>(std::stoul(word.substr(i, 2), nullptr, 16)));
    return bytes;
  }
  std::vector<uint64_t> Numbers() {
    const std::string word = Word();
    std::vector<uint64_t> numbers;
    if (word == "-") return numbers;
    std::stringstream items(word);
    for (std::string item; std::getline(items, item, ',');) {
      if (item.empty() || item.size() > 3 || item.find_first_not_of("0123456789") != std::string::npos) {
        Error("\"" + word + "\" is not a list of small numbers");
        break;
      }
      numbers.push_back(std::stoull(item));
    }
    return numbers;
  }
  BooleanExpr Expr() {
    const std::string word = Word();
    BooleanExpr expr;
    if (word == "-") return expr;
    std::stringstream items(word);
    for (std::string item; std::getline(items, item, ',');) {
      if (item == "AND" || item == "OR" || item == "NOT") {
        expr.push_back(opal::AceTerm::Operator(item == "AND" ? opal::BooleanOp::kAnd
                                               : item == "OR" ? opal::BooleanOp::kOr
                                                              : opal::BooleanOp::kNot));
      } else if (item.size() == 16 && item.find_first_not_of("0123456789abcdef") == std::string::npos) {
        expr.push_back(opal::AceTerm::Authority(std::strtoull(item.c_str(), nullptr, 16)));
      } else {
        Error("\"" + item + "\" is neither an authority nor an operator");
        break;
      }
    }
    return expr;
  }
  Credential ReadCredential() {
    Credential c;
    c.pin = HexBytes(32);
    c.tries = Number();
    return c;
  }
  void End() {
    std::string extra;
    if (words_ >> extra) Error("unexpected \"" + extra + "\"");
  }
  void Error(const std::string& message) {
    if (error_.empty()) error_ = "line " + std::to_string(number_) + ": " + message;
  }
  const std::string& error() const { return error_; }

 private:
  std::istringstream words_;
  size_t number_;
  std::string error_;
};

// Reads one "key ..." line of a drive into it.
void ParseDriveLine(Drive& d, const std::string& key, LineReader& in) {
  if (key == "model") {
    d.model = in.Rest();
  } else if (key == "firmware") {
    d.firmware = in.Rest();
  } else if (key == "serial") {
    d.serial = in.Rest();
  } else if (key == "opal") {
    const std::string word = in.Word();
    if (word != "yes" && word != "no") in.Error("opal must be yes or no");
    d.opal = word == "yes";
  } else if (key == "blocks") {
    d.blocks = in.Number();
  } else if (key == "ranges") {
    d.rangeCount = static_cast<unsigned>(in.Number(255));
  } else if (key == "users") {
    d.userCount = static_cast<unsigned>(in.Number(255));
  } else if (key == "set") {
    const std::string name = in.Word();
    const std::string value = in.Word();
    std::string reason;
    if (in.error().empty() && !ApplySetting(d.settings, name, value, reason)) in.Error(reason);
  } else if (key == "msid") {
    d.msid = in.HexBytes(32);
  } else if (key == "sid") {
    d.sid = in.ReadCredential();
  } else if (key == "psid") {
    d.psid = in.ReadCredential();
  } else if (key == "life-cycle") {
    d.lifeCycle = in.Number();
    if (d.lifeCycle != opal::kManufactured && d.lifeCycle != opal::kManufacturedInactive) {
      in.Error("life-cycle must be 8 or 9");
    }
  } else if (key == "generation") {
    d.generation = in.Number();
  } else if (key == "fail-next") {
    d.failNext = in.Number();
  } else if (key == "admin" || key == "user") {
    std::vector<Authority>& list = key == "admin" ? d.admins : d.users;
    const uint64_t n = in.Number(255);
    Authority a;
    a.enabled = in.Flag();
    a.credential = in.ReadCredential();
    if (n != list.size() + 1) in.Error(key + " " + std::to_string(n) + " out of order");
    list.push_back(a);
  } else if (key == "range") {
    const uint64_t n = in.Number(255);
    Range r;
    r.start = in.Number();
    r.length = in.Number();
    r.readLockEnabled = in.Flag();
    r.writeLockEnabled = in.Flag();
    r.readLocked = in.Flag();
    r.writeLocked = in.Flag();
    r.lockOnReset = in.Numbers();
    r.dataKey = in.Hex64();
    if (n != d.ranges.size()) in.Error("range " + std::to_string(n) + " out of order");
    d.ranges.push_back(r);
  } else if (key == "ace") {
    const Uid uid = in.Hex64();
    d.aces[uid] = in.Expr();
  } else if (key == "mbr") {
    d.mbrEnable = in.Flag();
    d.mbrDone = in.Flag();
    d.mbrDoneOnReset = in.Numbers();
    d.mbrWritten = in.Number();
  } else {
    in.Error("unknown entry \"" + key + "\"");
  }
}

std::string CheckDrive(const Drive& d) {
  const NodeKind kind = KindOfNode(d.device);
  if (kind != NodeKind::kNvmeController && kind != NodeKind::kSata) return "drive " + d.device + ": not an /dev/nvmeN or /dev/sdX path";
  if (d.ranges.size() != d.rangeCount + 1u) return "drive " + d.device + ": " + std::to_string(d.ranges.size()) +
                                                     " range lines for " + std::to_string(d.rangeCount) + " ranges";
  if (d.users.size() != d.userCount) return "drive " + d.device + ": user lines do not match its users";
  if (d.admins.size() != 4) return "drive " + d.device + ": it needs 4 admin lines";
  if (d.msid.empty()) return "drive " + d.device + ": no MSID";
  return "";
}

}  // namespace

std::string Serialize(const World& world) {
  std::ostringstream out;
  out << kMagic << '\n' << "allow-tpm " << world.allowTpm << '\n' << "real-disks " << (world.hideRealDisks ? "hide" : "show") << '\n';
  for (const Drive& drive : world.drives) PutDrive(out, drive);
  return out.str();
}

opal::Result<World> ParseWorld(const std::string& text) {
  std::istringstream lines(text);
  std::string line;
  if (!std::getline(lines, line) || line != kMagic) return Fail("line 1: not an opalsim state file");
  World world;
  Drive* drive = nullptr;
  size_t driveLine = 0;  // where the open drive began, for an error at the end of the file
  for (size_t number = 2; std::getline(lines, line); ++number) {
    if (line.empty()) continue;
    LineReader in(line, number);
    const std::string key = in.Word();
    if (drive == nullptr && key == "allow-tpm") {
      world.allowTpm = in.Word();
      if (world.allowTpm != "1" && world.allowTpm != "0" && world.allowTpm != "missing") {
        in.Error("allow-tpm must be 1, 0 or missing");
      }
    } else if (drive == nullptr && key == "real-disks") {
      const std::string word = in.Word();
      if (word != "hide" && word != "show") in.Error("real-disks must be hide or show");
      world.hideRealDisks = word == "hide";
    } else if (drive == nullptr && key == "drive") {
      const std::string device = in.Word();
      if (world.Find(device) != nullptr) in.Error("drive " + device + " appears twice");
      world.drives.push_back(Drive{});
      drive = &world.drives.back();
      driveLine = number;
      drive->device = device;
      drive->admins.clear();
      drive->users.clear();
      drive->ranges.clear();
    } else if (drive != nullptr && key == "end") {
      const std::string problem = CheckDrive(*drive);
      if (!problem.empty()) in.Error(problem);
      drive = nullptr;
    } else if (drive != nullptr) {
      ParseDriveLine(*drive, key, in);
    } else {
      in.Error("unexpected \"" + key + "\" outside a drive");
    }
    if (in.error().empty() && key != "model" && key != "firmware" && key != "serial") in.End();
    if (!in.error().empty()) return Fail(in.error());
  }
  if (drive != nullptr) return Fail("line " + std::to_string(driveLine) + ": drive " + drive->device + " has no end line");
  return world;
}

// --- The file -----------------------------------------------------------------------

namespace {

opal::Result<std::string> Slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return Fail(path + ": " + std::strerror(errno));
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// An flock on a file beside the state (the state itself is replaced by
// rename, so it cannot carry the lock).
class Lock {
 public:
  Lock(const std::string& path, int operation) {
    fd_ = open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ >= 0) {
      while (flock(fd_, operation) != 0 && errno == EINTR) {
      }
    }
  }
  ~Lock() {
    if (fd_ >= 0) close(fd_);
  }
  bool held() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

opal::Status WriteAtomically(const std::string& path, const std::string& text) {
  const std::string temporary = path + ".tmp";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out.flush()) return Fail(temporary + ": cannot write");
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) return Fail(path + ": " + std::strerror(errno));
  return opal::Ok();
}

}  // namespace

opal::Result<World> StateFile::Read() const {
  Lock lock(path_, LOCK_SH);
  opal::Result<std::string> text = Slurp(path_);
  if (!text) return text.error();
  opal::Result<World> world = ParseWorld(*text);
  if (!world) return Fail(path_ + ": " + world.error().message);
  return world;
}

opal::Status StateFile::Update(const std::function<bool(World&)>& change, bool create) const {
  Lock lock(path_, LOCK_EX);
  if (!lock.held()) return Fail(path_ + ".lock: " + std::strerror(errno));
  World world;
  if (!create || access(path_.c_str(), F_OK) == 0) {
    opal::Result<std::string> text = Slurp(path_);
    if (!text) return text.error();
    opal::Result<World> read = ParseWorld(*text);
    if (!read) return Fail(path_ + ": " + read.error().message);
    world = std::move(*read);
  }
  if (!change(world)) return opal::Ok();
  return WriteAtomically(path_, Serialize(world));
}

opal::Status StateFile::Replace(const World& world) const {
  Lock lock(path_, LOCK_EX);
  if (!lock.held()) return Fail(path_ + ".lock: " + std::strerror(errno));
  return WriteAtomically(path_, Serialize(world));
}

std::string StateFile::MbrPath(const Drive& drive) const {
  return path_ + ".mbr-" + drive.device.substr(drive.device.rfind('/') + 1);
}

opal::Status WriteMbr(const std::string& path, uint64_t offset, const Bytes& data) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) return Fail(path + ": " + std::strerror(errno));
  const ssize_t written = pwrite(fd, data.data(), data.size(), static_cast<off_t>(offset));
  close(fd);
  if (written != static_cast<ssize_t>(data.size())) return Fail(path + ": cannot write");
  return opal::Ok();
}

opal::Result<Bytes> ReadMbr(const std::string& path, uint64_t offset, size_t length) {
  Bytes data(length, 0);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return data;  // nothing written yet: zeros
  const ssize_t got = pread(fd, data.data(), length, static_cast<off_t>(offset));
  close(fd);
  if (got < 0) return Fail(path + ": " + std::strerror(errno));
  return data;
}

void ClearMbr(const std::string& path) { unlink(path.c_str()); }

}  // namespace opalsim
