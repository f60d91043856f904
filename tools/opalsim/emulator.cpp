#include "emulator.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ata.h"
#include "nvme.h"

namespace opalsim {

namespace {

constexpr int kInvalidOpcode = 0x0001;  // the NVMe status Invalid Command Opcode

// Transfers larger than this are refused like a kernel refuses a buffer it
// cannot map.
constexpr size_t kTransferLimit = 16 << 20;

void CopyOut(const opal::Bytes& data, uint64_t address, size_t room) {
  if (address != 0) std::memcpy(reinterpret_cast<void*>(address), data.data(), std::min(room, data.size()));
}

// Sense data of a failed pass-through command, in descriptor format.
void CheckCondition(sg_io_hdr_t& header, const opal::Bytes& sense) {
  header.status = 0x02;  // CHECK CONDITION
  header.masked_status = 0x01;
  header.driver_status = 0x08;  // DRIVER_SENSE
  const size_t length = std::min<size_t>(header.mx_sb_len, sense.size());
  if (header.sbp != nullptr) std::memcpy(header.sbp, sense.data(), length);
  header.sb_len_wr = static_cast<unsigned char>(length);
}

// ILLEGAL REQUEST with the given additional sense code.
opal::Bytes IllegalRequest(uint8_t asc) { return {0x72, 0x05, asc, 0x00, 0, 0, 0, 0}; }

// ABORTED COMMAND with an ATA status return descriptor: error ABRT, status
// DRDY|ERR, as libata reports a command the drive aborted.
opal::Bytes AtaAborted() {
  opal::Bytes sense(22, 0);
  sense[0] = 0x72;
  sense[1] = 0x0B;
  sense[7] = 14;
  sense[8] = 0x09;
  sense[9] = 0x0C;
  sense[11] = 0x04;
  sense[21] = 0x51;
  return sense;
}

}  // namespace

Emulator::Emulator(std::string statePath) : state_(std::move(statePath)) {
  const char* trace = std::getenv("OPALSIM_TRACE");
  if (trace != nullptr) trace_ = trace;
}

void Emulator::Trace(const char* direction, const std::string& node, uint8_t protocol, uint16_t comId,
                     size_t transfer) {
  if (trace_.empty()) return;
  char line[160];
  const int size = std::snprintf(line, sizeof line, "%s %s protocol %u comid 0x%04x length %zu\n", direction,
                                 node.c_str(), protocol, comId, transfer);
  if (size <= 0) return;
  if (static_cast<size_t>(size) >= sizeof line) line[sizeof line - 2] = '\n';
  // One append per line: the processes of a session share the file.
  const int fd = open(trace_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  const size_t length = std::min<size_t>(static_cast<size_t>(size), sizeof line - 1);
  if (write(fd, line, length) < 0) Report("cannot write the trace " + trace_);
  close(fd);
}

void Emulator::Report(const std::string& message) {
  if (message == reported_) return;
  reported_ = message;
  std::fprintf(stderr, "libopalsim: %s\n", message.c_str());
}

const World& Emulator::Current() {
  struct stat now {};
  if (stat(state_.path().c_str(), &now) != 0) {
    world_ = World{};
    seen_ = {};
    return world_;
  }
  if (now.st_ino == seen_.st_ino && now.st_size == seen_.st_size && now.st_mtim.tv_sec == seen_.st_mtim.tv_sec &&
      now.st_mtim.tv_nsec == seen_.st_mtim.tv_nsec && now.st_ctim.tv_sec == seen_.st_ctim.tv_sec &&
      now.st_ctim.tv_nsec == seen_.st_ctim.tv_nsec) {
    return world_;
  }
  opal::Result<World> world = state_.Read();
  if (world) {
    world_ = std::move(*world);
    seen_ = now;
  } else {
    // No drives until the file changes again; it is not read again before.
    world_ = World{};
    seen_ = now;
    Report(world.error().message);
  }
  return world_;
}

NodeKind Emulator::Lookup(const std::string& path) {
  const NodeKind kind = KindOfNode(path);
  if (kind == NodeKind::kNone) return kind;
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  return Current().Find(path) != nullptr ? kind : NodeKind::kNone;
}

bool Emulator::Hides(const std::string& path) {
  // The nodes the tools would take for a drive: SCSI disks and generic
  // devices, NVMe controllers and namespaces.
  const bool disk = path.rfind("/dev/sd", 0) == 0 || path.rfind("/dev/sg", 0) == 0 || path.rfind("/dev/nvme", 0) == 0;
  if (!disk) return false;
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const World& world = Current();
  return world.hideRealDisks && world.Find(path) == nullptr;
}

std::vector<std::string> Emulator::DevNames() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  std::vector<std::string> names;
  for (const Drive& drive : Current().drives) {
    names.push_back(drive.device.substr(5));
    if (drive.IsNvme()) names.push_back(drive.device.substr(5) + "n1");  // its namespace node
  }
  return names;
}

std::optional<std::string> Emulator::AllowTpmText() {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const std::string& flag = Current().allowTpm;
  if (flag == "missing") return std::nullopt;
  return flag + "\n";
}

struct stat Emulator::NodeStat(const std::string& path) {
  struct stat st {};
  st.st_nlink = 1;
  st.st_blksize = 4096;
  st.st_ino = 0x0AA10000 + static_cast<ino_t>(std::hash<std::string>{}(path) & 0xFFFF);
  const std::string name = DriveNode(path).substr(5);
  switch (KindOfNode(path)) {
    case NodeKind::kSata:
      st.st_mode = S_IFBLK | 0660;
      st.st_rdev = makedev(8, 16 * static_cast<unsigned>(path[7] - 'a'));
      break;
    case NodeKind::kNvmeNamespace:
      st.st_mode = S_IFBLK | 0660;
      st.st_rdev = makedev(259, static_cast<unsigned>(std::atoi(name.c_str() + 4)));
      break;
    default:
      st.st_mode = S_IFCHR | 0600;
      st.st_rdev = makedev(241, static_cast<unsigned>(std::atoi(name.c_str() + 4)));
  }
  return st;
}

uint64_t Emulator::Bytes(const std::string& path) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const Drive* drive = Current().Find(path);
  return drive == nullptr ? 0 : drive->blocks * 512;
}

bool Emulator::Send(const std::string& path, uint8_t protocol, uint16_t comId, const opal::Bytes& data) {
  const std::string node = DriveNode(path);
  Trace("IF-SEND", node, protocol, comId, data.size());
  bool served = false;
  opal::Status saved = state_.Update([&](World& world) {
    Drive* drive = world.Find(node);
    if (drive == nullptr) return false;
    const std::string before = Serialize(world);
    served = TperSend(*drive, connections_[node], state_.MbrPath(*drive), protocol, comId, data);
    return Serialize(world) != before;
  });
  if (!saved) {
    Report(saved.error().message);
    return false;
  }
  return served;
}

bool Emulator::Receive(const std::string& path, uint8_t protocol, uint16_t comId, size_t length, opal::Bytes& out) {
  const std::string node = DriveNode(path);
  Trace("IF-RECV", node, protocol, comId, length);
  const Drive* drive = Current().Find(node);
  return drive != nullptr && TperReceive(*drive, connections_[node], protocol, comId, length, out);
}

int Emulator::NvmeAdmin(const std::string& path, nvme_passthru_cmd& command) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const Drive* drive = Current().Find(path);
  if (drive == nullptr) {
    errno = ENODEV;
    return -1;
  }
  if (command.data_len > kTransferLimit || (command.data_len > 0 && command.addr == 0)) {
    errno = command.addr == 0 ? EFAULT : EINVAL;
    return -1;
  }
  if (command.opcode == opal::kNvmeIdentify) {
    opal::Bytes data;
    if ((command.cdw10 & 0xFF) == 1) {
      data = opal::EncodeNvmeIdentify({drive->model, drive->serial, drive->firmware}, drive->opal);
    } else if ((command.cdw10 & 0xFF) == 0) {  // namespace: size, capacity, use; 512-byte blocks
      data.assign(opal::kNvmeIdentifySize, 0);
      for (int field = 0; field < 3; ++field) {
        for (int i = 0; i < 8; ++i) data[8 * field + i] = static_cast<uint8_t>(drive->blocks >> (8 * i));
      }
      data[130] = 9;
    } else {
      return opal::kNvmeInvalidField;
    }
    CopyOut(data, command.addr, command.data_len);
    return 0;
  }
  const bool securityCommand =
      command.opcode == opal::kNvmeSecuritySend || command.opcode == opal::kNvmeSecurityReceive;
  // A controller without Opal has no Security Send and Receive at all.
  if (securityCommand && !drive->opal) return kInvalidOpcode;
  const opal::NvmeSecurity security = opal::DecodeNvmeSecurity(command);
  if (security.length > kTransferLimit) return opal::kNvmeInvalidField;
  if (command.opcode == opal::kNvmeSecuritySend) {
    const uint8_t* from = reinterpret_cast<const uint8_t*>(command.addr);
    const opal::Bytes data(from, from + std::min<size_t>(security.length, command.data_len));
    return Send(path, security.protocol, security.comId, data) ? 0 : opal::kNvmeInvalidField;
  }
  if (command.opcode == opal::kNvmeSecurityReceive) {
    opal::Bytes data;
    if (!Receive(path, security.protocol, security.comId, security.length, data)) return opal::kNvmeInvalidField;
    CopyOut(data, command.addr, command.data_len);
    return 0;
  }
  return kInvalidOpcode;
}

int Emulator::SgIo(const std::string& path, sg_io_hdr_t& header) {
  std::lock_guard<std::recursive_mutex> lock(mutex_);
  const Drive* drive = Current().Find(path);
  if (drive == nullptr) {
    errno = ENODEV;
    return -1;
  }
  if (header.interface_id != 'S' || header.cmdp == nullptr || header.dxfer_len > kTransferLimit) {
    errno = header.interface_id != 'S' ? ENOSYS : EINVAL;
    return -1;
  }
  header.status = header.masked_status = header.msg_status = 0;
  header.host_status = header.driver_status = 0;
  header.sb_len_wr = 0;
  header.resid = 0;
  header.duration = 0;
  header.info = 0;
  opal::Result<opal::AtaCommand> command = opal::DecodeAtaCdb(header.cmdp, header.cmd_len);
  if (!command) {
    CheckCondition(header, IllegalRequest(0x20));  // invalid command operation code
    return 0;
  }
  const uint64_t buffer = reinterpret_cast<uintptr_t>(header.dxferp);
  if (command->command == opal::kAtaIdentifyDevice) {
    CopyOut(opal::EncodeAtaIdentify({drive->model, drive->serial, drive->firmware}, drive->blocks), buffer,
            header.dxfer_len);
    return 0;
  }
  if (command->command != opal::kAtaTrustedSend && command->command != opal::kAtaTrustedReceive) {
    CheckCondition(header, AtaAborted());
    return 0;
  }
  if (Current().allowTpm == "0") {
    // libata refuses trusted commands unless the kernel allows them.
    CheckCondition(header, IllegalRequest(0x24));
    return 0;
  }
  bool served = false;
  if (command->command == opal::kAtaTrustedSend) {
    const uint8_t* from = static_cast<const uint8_t*>(header.dxferp);
    const size_t length = from == nullptr ? 0 : std::min<size_t>(command->length, header.dxfer_len);
    served = Send(path, command->protocol, command->comId, opal::Bytes(from, from + length));
  } else {
    opal::Bytes data;
    served = Receive(path, command->protocol, command->comId, command->length, data);
    if (served) CopyOut(data, buffer, header.dxfer_len);
  }
  if (!served) CheckCondition(header, AtaAborted());
  return 0;
}

}  // namespace opalsim
