// Runs veltrak-opal's commands in-process on emulated drives held in memory, for the tests and the hostile-drive
// fuzzer: the world is made from a few words, the exchanges with the drives are counted and may be forged, and the
// drive's state can be read as words.
#pragma once

#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "lantivo_format.h"
#include "local_transport.h"
#include "method.h"
#include "packet.h"
#include "tools.h"
#include "uids.h"
#include "world.h"

namespace tooltest {

const std::string kNoPermission =
    "You do not have permission to access the raw disk in write mode\nPerhaps you might try sudo to run as root\n";
const std::string kFlagNotSet = "The Kernel flag libata.allow_tpm is not set correctly\n"
                                "Please see the readme note about setting the libata.allow_tpm \n";

inline std::string Replace(std::string text, const std::string& a, const std::string& b) {
  for (size_t at = 0; (at = text.find(a, at)) != std::string::npos; at += b.size()) text.replace(at, a.size(), b);
  return text;
}

// Whether text is pattern, in which '*' stands for any run of characters.
inline bool Matches(const char* pattern, const char* text) {
  if (*pattern == '*') return Matches(pattern + 1, text) || (*text != '\0' && Matches(pattern, text + 1));
  return *pattern == *text && (*text == '\0' || Matches(pattern + 1, text + 1));
}

// What a command did; writes counts its calls other than Get and the session's own.
struct Ran { std::string out, err; int status = -1, sends = 0, writes = 0; };

// An answer standing in for the drive's, which never sees the exchange: forge(n) gives it for exchange n (from 1; 0
// is the discovery), or an empty function to let the drive answer.
using Answer = std::function<opal::Result<opal::Bytes>(size_t length)>;
using Forgery = std::function<Answer(int exchange)>;

// Answers of a drive gone wrong: bytes that decode as nothing, or a refusal with status FAIL.
inline opal::Result<opal::Bytes> Garbage(size_t length) { return opal::Bytes(length, 0xA5); }
inline opal::Result<opal::Bytes> FailAnswer(size_t length) {
  opal::ComPacket packet;
  packet.comId = 0x1000;
  packet.payload = opal::EncodeResponse({}, static_cast<int>(opal::MethodStatus::kFail));
  return opal::PadToBlock(opal::Frame(packet), length);
}

struct CountingTransport : opal::Transport {
  CountingTransport(opalsim::World& world, const std::string& path, const std::string& mbr, Ran& ran, Forgery forge)
      : drive(world, path, mbr), ran(ran), forge(std::move(forge)) {}
  opal::Result<opal::Identity> Identify() override { return drive.Identify(); }
  opal::Status Send(uint8_t protocol, uint16_t comId, const opal::Bytes& data) override {
    opal::Result<opal::ComPacket> packet = opal::Unframe(data);
    opal::Result<opal::Message> call = packet ? opal::DecodeMessage(packet->payload) : opal::Fail("");
    ran.writes += call && call->kind == opal::Message::Kind::kCall && call->method != opal::kMethodGet &&
                  call->method != opal::kMethodProperties && call->method != opal::kMethodStartSession;
    ++ran.sends;
    answer = forge ? forge(ran.sends) : nullptr;
    return answer ? opal::Ok() : drive.Send(protocol, comId, data);
  }
  opal::Result<opal::Bytes> Receive(uint8_t protocol, uint16_t comId, size_t length) override {
    const Answer forged = comId != opal::kDiscoveryComId ? answer : forge ? forge(0) : nullptr;
    return forged ? forged(length) : drive.Receive(protocol, comId, length);
  }
  opal::DeviceKind kind() const override { return drive.kind(); }
  opalsim::LocalTransport drive;
  Ran& ran;
  Forgery forge;
  Answer answer;
};

// Factory-new drives /dev/nvme0 and /dev/sda (Opal, 8 ranges and 8 users) and /dev/sdb (no Opal), a /dev/sdc that
// cannot be opened, and a host whose libata flag is set; then, word by word: own[=PASSWORD] (the Opal drives' SID and
// Admin1 with it, default "debug", or msid: not taken; shadow MBR on and done), 16 (sda with 16 ranges), noopal (sda
// without Opal), lockout (sda's Admin1, SID and PSID at the try limit), undone (sda's MBR), grant=N (User1 "u1" and
// User2 "u2" enabled; User1 and User3 may lock sda's range N), rN=START/LENGTH/FLAGS (sda's range N, as State shows
// it), img=BYTES ({dir}/pba.img), refuse=N (exchange N answered FAIL), garbage (every exchange answered so), tpm0 (flag
// not set), noaccess and noopen (for every drive), fold (stderr into stdout), and X=TEXT for the words of command
// lines: S (sedutil-cli -n), L (Lantivo), P (password), D (device), K (PSID); {dir} stands for the bench's directory.
struct Bench {
  explicit Bench(const std::string& words) {
    char pattern[] = "/tmp/veltrak-opal-test-XXXXXX";
    dir = mkdtemp(pattern);
    world.drives = {opalsim::NewDrive("/dev/nvme0", "ZEP NV2000 1TB", "2B2QEXM7",
                                      "PSIDNVME0PSIDNVME0PSIDNVME0PSIDN", 8, true),
                    opalsim::NewDrive("/dev/sda", "KVX 480GB", "SBFK71F3", names["K"], 8, true),
                    opalsim::NewDrive("/dev/sdb", "Other HDD", "CC45", names["K"], 8, false)};
    std::istringstream in(words);
    for (std::string word; in >> word; flags.insert(word)) {
      const std::string key = word.substr(0, word.find('=')), value = word.substr(word.find('=') + 1);
      const std::string pin = value == "own" ? "debug" : value;
      unsigned long long n = 0, start = 0, length = 0;
      char yn[5] = "";
      if (word == "16" || word == "noopal") {
        Sda() = opalsim::NewDrive("/dev/sda", "KVX 480GB", "SBFK71F3", names["K"], 16, word == "16");
      }
      for (opalsim::Drive& d : world.drives) {
        if (key != "own" || !d.opal) continue;
        if (pin != "msid") d.sid.pin.assign(pin.begin(), pin.end());
        opalsim::Activate(d);
        d.mbrEnable = d.mbrDone = true;
      }
      if (word == "lockout") Sda().admins[0].credential.tries = Sda().sid.tries = Sda().psid.tries = 5;
      if (word == "undone") Sda().mbrDone = false;
      if (key == "grant") {
        for (uint8_t u : {0, 1}) Sda().users[u] = {true, {{'u', static_cast<uint8_t>('1' + u)}, 0}};
        n = std::stoul(value);
        Sda().aces[opal::AceSetRdLockedUid(n)] = Sda().aces[opal::AceSetWrLockedUid(n)] =
            opal::AnyOf({opal::kAdmins, opal::UserUid(1), opal::UserUid(3)});
      }
      if (std::sscanf(word.c_str(), "r%llu=%llu/%llu/%4s", &n, &start, &length, yn) == 4) {
        Sda().ranges[n] = {start, length, yn[0] == 'Y', yn[1] == 'Y', yn[2] == 'Y', yn[3] == 'Y', {0}, n};
      }
      for (size_t i = 0; key == "img" && i < std::stoul(value); ++i) image += static_cast<char>(i * 7 + i / 251);
      if (key == "img") std::ofstream(dir + "/pba.img", std::ios::binary) << image;
      if (key == "refuse") forge = [k = std::stoi(value)](int e) { return Answer(e == k ? FailAnswer : nullptr); };
      if (word == "garbage") forge = [](int e) { return Answer(e != 0 ? Garbage : nullptr); };
      if (key.size() == 1) names[key] = value;
    }
  }
  ~Bench() { std::filesystem::remove_all(dir); }
  opalsim::Drive& Sda() { return world.drives[1]; }

  Ran Run(const std::string& line) {
    std::istringstream words(Replace(line, "{dir}", dir));
    std::vector<std::string> argv;
    for (std::string word; words >> word;) {
      for (std::istringstream name(names.count(word) != 0 ? names[word] : word); name >> word;) argv.push_back(word);
    }
    Ran ran;
    std::ostringstream out, err;
    veltrak_opal::Environment env{
        [&](const std::string& path) -> opal::Result<std::unique_ptr<opal::Transport>> {
          if (world.Find(path) == nullptr) return opal::Fail(path + ": cannot open: No such file or directory");
          if (flags.count("noopen") != 0) return opal::Fail(path + ": cannot open: Device or resource busy");
          return std::unique_ptr<opal::Transport>(new CountingTransport(world, path, dir + path.substr(4), ran, forge));
        },
        [&] { return std::vector<std::string>{"null", "sda", "sda1", "sdaa", "sdb", "sdc", "nvme0", "nvme0n1"}; },
        [&] { return flags.count("tpm0") != 0 ? opal::AllowTpm::kNotSet : opal::AllowTpm::kSet; }, out,
        flags.count("fold") != 0 ? out : err,
        [&](const std::string& path) { return world.Find(path) != nullptr && flags.count("noaccess") == 0; }};
    ran.status = veltrak_opal::Main(argv[0], std::vector<std::string>(argv.begin() + 1, argv.end()), env);
    return {out.str(), err.str(), ran.status, ran.sends, ran.writes};
  }

  // sda's state as words: sid (password, or msid), sp (Locking SP on or off), mbr (Enable, Done, bytes written), uN
  // (+ enabled, then the password), rN (start/length/RLKEna WLKEna RLocked WLocked), aceN (who may read-lock /
  // write-lock) and kN (# and a media key).
  std::map<std::string, std::string> State() {
    const opalsim::Drive& d = Sda();
    auto pin = [&](const auto& c) { return c.pin == d.msid ? "msid" : std::string(c.pin.begin(), c.pin.end()); };
    std::map<std::string, std::string> state = {{"sid", pin(d.sid)}, {"sp", d.LockingActive() ? "on" : "off"}};
    state["mbr"] = std::string(1, "NY"[d.mbrEnable]) + "NY"[d.mbrDone] + std::to_string(d.mbrWritten);
    size_t user = 0;
    for (const auto& a : d.users) state["u" + std::to_string(++user)] = "-+"[a.enabled] + pin(a.credential);
    for (unsigned i = 0; i < d.ranges.size(); ++i) {
      const opalsim::Range& r = d.ranges[i];
      const std::string n = std::to_string(i);
      state["k" + n] = "#" + std::to_string(r.dataKey);
      state["r" + n] = std::to_string(r.start) + "/" + std::to_string(r.length) + "/" + "NY"[r.readLockEnabled] +
                       "NY"[r.writeLockEnabled] + "NY"[r.readLocked] + "NY"[r.writeLocked];
      for (opal::Uid ace : {opal::AceSetRdLockedUid(i), opal::AceSetWrLockedUid(i)}) {
        const auto found = d.aces.find(ace);
        const opal::BooleanExpr expr = found == d.aces.end() ? opalsim::DefaultAce(d, ace) : found->second;
        state["ace" + n] += Replace(veltrak_opal::lantivo::Describe(expr), " ", ",") + "/";
      }
    }
    return state;
  }

  opalsim::World world;
  std::string dir, image;
  std::set<std::string> flags;
  Forgery forge;
  std::map<std::string, std::string> names = {{"S", "sedutil-cli -n"}, {"L", "Lantivo"}, {"P", "debug"},
                                               {"D", "/dev/sda"}, {"K", "PSIDSDA0PSIDSDA0PSIDSDA0PSIDSDA0"}};
};

}  // namespace tooltest
