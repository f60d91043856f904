// libopalsim.so: loaded with LD_PRELOAD into any dynamically linked program,
// it shows the emulated drives of $OPALSIM_STATE as Linux devices. Opening
// /dev/nvmeN, /dev/nvmeNn1 or /dev/sdX of an emulated drive gives a
// descriptor on /dev/null that the ioctl hook recognises; a listing of /dev
// gains the drives' nodes; stat reports device nodes; the libata flag reads
// as the emulated host says. Every other path and descriptor goes straight
// to libc: the library is also loaded into the shell and everything else a
// session runs.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "emulator.h"

using opalsim::Emulator;
using opalsim::NodeKind;

namespace {

const char kAllowTpmPath[] = "/sys/module/libata/parameters/allow_tpm";

// The real libc function of a hook, found once.
template <typename F>
F Real(F& cached, const char* name) {
  if (cached == nullptr) cached = reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
  return cached;
}
#define REAL(name) Real(real_##name, #name)

using OpenFn = int (*)(const char*, int, ...);
using OpenatFn = int (*)(int, const char*, int, ...);
using CloseFn = int (*)(int);
using Dup2Fn = int (*)(int, int);
using Dup3Fn = int (*)(int, int, int);
using IoctlFn = int (*)(int, unsigned long, ...);
using AccessFn = int (*)(const char*, int);
using FopenFn = FILE* (*)(const char*, const char*);
using OpendirFn = DIR* (*)(const char*);
using ReaddirFn = struct dirent* (*)(DIR*);
using Readdir64Fn = struct dirent64* (*)(DIR*);
using ClosedirFn = int (*)(DIR*);
using StatFn = int (*)(const char*, struct stat*);
using Stat64Fn = int (*)(const char*, struct stat64*);
using FstatFn = int (*)(int, struct stat*);
using Fstat64Fn = int (*)(int, struct stat64*);
using FstatatFn = int (*)(int, const char*, struct stat*, int);
using Fstatat64Fn = int (*)(int, const char*, struct stat64*, int);
using XstatFn = int (*)(int, const char*, struct stat*);
using Xstat64Fn = int (*)(int, const char*, struct stat64*);
using FxstatFn = int (*)(int, int, struct stat*);
using StatxFn = int (*)(int, const char*, int, unsigned int, struct statx*);
using GetxattrFn = ssize_t (*)(const char*, const char*, void*, size_t);
using ListxattrFn = ssize_t (*)(const char*, char*, size_t);
using Fxstat64Fn = int (*)(int, int, struct stat64*);

OpenFn real_open, real_open64, real___open_2, real___open64_2;
OpenatFn real_openat, real_openat64;
CloseFn real_close;
Dup2Fn real_dup2;
Dup3Fn real_dup3;
IoctlFn real_ioctl;
AccessFn real_access;
FopenFn real_fopen, real_fopen64;
OpendirFn real_opendir;
ReaddirFn real_readdir;
Readdir64Fn real_readdir64;
ClosedirFn real_closedir;
StatFn real_stat, real_lstat;
Stat64Fn real_stat64, real_lstat64;
FstatFn real_fstat;
Fstat64Fn real_fstat64;
FstatatFn real_fstatat;
Fstatat64Fn real_fstatat64;
XstatFn real___xstat, real___lxstat;
Xstat64Fn real___xstat64, real___lxstat64;
FxstatFn real___fxstat;
Fxstat64Fn real___fxstat64;
StatxFn real_statx;
GetxattrFn real_getxattr, real_lgetxattr;
ListxattrFn real_listxattr, real_llistxattr;

// Everything the hooks share, made on first use.
struct Shim {
  std::mutex mutex;
  Emulator* emulator = nullptr;  // none when OPALSIM_STATE is not set
  std::map<int, std::string> devices;  // open descriptor to the path it was opened by
  // For each listing of /dev: the emulated names still to show, and the
  // entries handed out (they must live until the next readdir).
  struct Listing {
    std::vector<std::string> names;
    struct dirent entry;
    struct dirent64 entry64;
  };
  std::map<DIR*, Listing> listings;
};

Shim& TheShim() {
  static Shim* shim = [] {
    Shim* made = new Shim;  // never freed: hooks may run during exit
    const char* state = getenv("OPALSIM_STATE");
    if (state != nullptr && *state != '\0') made->emulator = new Emulator(state);
    return made;
  }();
  return *shim;
}

// The emulated node path names, or kNone. Cheap for every other path.
NodeKind Emulated(const char* path) {
  if (path == nullptr || std::strncmp(path, "/dev/", 5) != 0) return NodeKind::kNone;
  Shim& shim = TheShim();
  return shim.emulator == nullptr ? NodeKind::kNone : shim.emulator->Lookup(path);
}

// One of the host's own disks, hidden from a rehearsal: as if it did not
// exist.
bool Hidden(const char* path) {
  if (path == nullptr || std::strncmp(path, "/dev/", 5) != 0) return false;
  Shim& shim = TheShim();
  return shim.emulator != nullptr && shim.emulator->Hides(path);
}

int NoSuchFile() {
  errno = ENOENT;
  return -1;
}

bool IsAllowTpm(const char* path) {
  return path != nullptr && std::strcmp(path, kAllowTpmPath) == 0 && TheShim().emulator != nullptr;
}

// A pointer the C library declares never null may still be null in a
// caller that breaks that promise; the real function then decides.
bool IsNull(const void* pointer) { return pointer == nullptr; }

// Whether dir is a listing of /dev that gains the emulated nodes.
bool Listed(DIR* dir) {
  Shim& shim = TheShim();
  std::lock_guard<std::mutex> lock(shim.mutex);
  return shim.listings.count(dir) > 0;
}

// The emulated device behind a descriptor; empty for any other.
std::string DeviceOf(int fd) {
  if (fd < 0) return "";
  Shim& shim = TheShim();
  if (shim.emulator == nullptr) return "";
  std::lock_guard<std::mutex> lock(shim.mutex);
  auto found = shim.devices.find(fd);
  return found == shim.devices.end() ? "" : found->second;
}

void Forget(int fd) {
  Shim& shim = TheShim();
  if (shim.emulator == nullptr || fd < 0) return;
  std::lock_guard<std::mutex> lock(shim.mutex);
  shim.devices.erase(fd);
}

int OpenDevice(const char* path, int flags) {
  const int fd = REAL(open)("/dev/null", (flags & O_ACCMODE) | (flags & O_CLOEXEC));
  if (fd >= 0) {
    Shim& shim = TheShim();
    std::lock_guard<std::mutex> lock(shim.mutex);
    shim.devices[fd] = path;
  }
  return fd;
}

// A descriptor whose content is the emulated libata flag; -1 with ENOENT
// when the emulated host has none.
int OpenAllowTpm() {
  const std::optional<std::string> text = TheShim().emulator->AllowTpmText();
  if (!text) {
    errno = ENOENT;
    return -1;
  }
  const int fd = memfd_create("allow_tpm", MFD_CLOEXEC);
  if (fd < 0) return -1;
  if (write(fd, text->data(), text->size()) != static_cast<ssize_t>(text->size()) || lseek(fd, 0, SEEK_SET) != 0) {
    REAL(close)(fd);
    errno = EIO;
    return -1;
  }
  return fd;
}

FILE* FopenAllowTpm(const char* mode) {
  const int fd = OpenAllowTpm();
  return fd < 0 ? nullptr : fdopen(fd, mode);
}

mode_t ModeArgument(int flags, va_list args) {
  return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE ? static_cast<mode_t>(va_arg(args, int)) : 0;
}

// An emulated node, a hidden disk or the libata flag; -2 for any other path.
int OpenSpecial(const char* path, int flags) {
  if (Emulated(path) != NodeKind::kNone) return OpenDevice(path, flags);
  if (Hidden(path)) return NoSuchFile();
  if (IsAllowTpm(path)) return OpenAllowTpm();
  return -2;
}

int OpenHook(OpenFn real, const char* path, int flags, mode_t mode) {
  const int special = OpenSpecial(path, flags);
  return special != -2 ? special : real(path, flags, mode);
}

int OpenAtHook(OpenatFn real, int dirfd, const char* path, int flags, mode_t mode) {
  const int special = OpenSpecial(path, flags);
  return special != -2 ? special : real(dirfd, path, flags, mode);
}

// struct stat and struct stat64 share one layout on 64-bit Linux.
static_assert(sizeof(struct stat) == sizeof(struct stat64), "stat and stat64 differ");

template <typename Stat>
bool FillStat(const std::string& path, Stat* out) {
  if (out == nullptr) return false;
  const struct stat st = TheShim().emulator->NodeStat(path);
  std::memcpy(out, &st, sizeof st);
  return true;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = ModeArgument(flags, args);
  va_end(args);
  return OpenHook(REAL(open), path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = ModeArgument(flags, args);
  va_end(args);
  return OpenHook(REAL(open64), path, flags, mode);
}

int __open_2(const char* path, int flags) { return OpenHook(REAL(__open_2), path, flags, 0); }
int __open64_2(const char* path, int flags) { return OpenHook(REAL(__open64_2), path, flags, 0); }

int openat(int dirfd, const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = ModeArgument(flags, args);
  va_end(args);
  return OpenAtHook(REAL(openat), dirfd, path, flags, mode);
}

int openat64(int dirfd, const char* path, int flags, ...) {
  va_list args;
  va_start(args, flags);
  const mode_t mode = ModeArgument(flags, args);
  va_end(args);
  return OpenAtHook(REAL(openat64), dirfd, path, flags, mode);
}

int close(int fd) {
  Forget(fd);
  return REAL(close)(fd);
}

// A descriptor replaced by dup2 or dup3 is no longer the device.
int dup2(int fd, int target) {
  Forget(target);
  return REAL(dup2)(fd, target);
}

int dup3(int fd, int target, int flags) {
  Forget(target);
  return REAL(dup3)(fd, target, flags);
}

int access(const char* path, int mode) {
  if (Emulated(path) != NodeKind::kNone) return 0;
  if (Hidden(path)) return NoSuchFile();
  if (IsAllowTpm(path) && TheShim().emulator->AllowTpmText()) return (mode & W_OK) ? (errno = EACCES, -1) : 0;
  return REAL(access)(path, mode);
}

int ioctl(int fd, unsigned long request, ...) {
  va_list args;
  va_start(args, request);
  void* argument = va_arg(args, void*);
  va_end(args);
  const std::string device = DeviceOf(fd);
  if (device.empty()) return REAL(ioctl)(fd, request, argument);
  Emulator& emulator = *TheShim().emulator;
  const NodeKind kind = opalsim::KindOfNode(device);
  switch (request) {
    case NVME_IOCTL_ADMIN_CMD:
      if (kind == NodeKind::kSata) break;
      return emulator.NvmeAdmin(device, *static_cast<nvme_passthru_cmd*>(argument));
    case SG_IO:
      if (kind != NodeKind::kSata) break;
      return emulator.SgIo(device, *static_cast<sg_io_hdr_t*>(argument));
    case NVME_IOCTL_ID:
      if (kind == NodeKind::kNvmeNamespace) return 1;
      break;
    case BLKGETSIZE64:
      if (kind == NodeKind::kNvmeController) break;
      *static_cast<uint64_t*>(argument) = emulator.Bytes(device);
      return 0;
    case BLKSSZGET:
      if (kind == NodeKind::kNvmeController) break;
      *static_cast<int*>(argument) = 512;
      return 0;
  }
  errno = ENOTTY;
  return -1;
}

FILE* fopen(const char* path, const char* mode) {
  return IsAllowTpm(path) ? FopenAllowTpm(mode) : REAL(fopen)(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  return IsAllowTpm(path) ? FopenAllowTpm(mode) : REAL(fopen64)(path, mode);
}

DIR* opendir(const char* path) {
  DIR* dir = REAL(opendir)(path);
  Shim& shim = TheShim();
  if (dir != nullptr && shim.emulator != nullptr &&
      (std::strcmp(path, "/dev") == 0 || std::strcmp(path, "/dev/") == 0)) {
    std::vector<std::string> names = shim.emulator->DevNames();
    std::lock_guard<std::mutex> lock(shim.mutex);
    shim.listings[dir].names = std::move(names);
  }
  return dir;
}

}  // extern "C"

namespace {

// The next entry of a listing of /dev: the real ones first (a real name
// the emulator also has is shown once), then the emulated ones.
template <typename Entry, typename Fetch>
Entry* NextEntry(DIR* dir, Fetch fetch, Entry Shim::Listing::*slot) {
  Shim& shim = TheShim();
  if (shim.emulator == nullptr || !Listed(dir)) return fetch(dir);
  // The emulator is asked with the shim's lock released: it opens and closes
  // the state file, and close() comes back through this library.
  for (Entry* real; (real = fetch(dir)) != nullptr;) {
    const std::string name = real->d_name;
    const bool hidden = shim.emulator->Hides("/dev/" + name);
    std::lock_guard<std::mutex> lock(shim.mutex);
    auto listing = shim.listings.find(dir);
    if (listing != shim.listings.end()) {
      std::vector<std::string>& names = listing->second.names;
      names.erase(std::remove(names.begin(), names.end(), name), names.end());
    }
    if (!hidden) return real;
  }
  std::lock_guard<std::mutex> lock(shim.mutex);
  auto listing = shim.listings.find(dir);
  if (listing == shim.listings.end() || listing->second.names.empty()) return nullptr;
  std::vector<std::string>& names = listing->second.names;
  Entry& entry = listing->second.*slot;
  entry = Entry{};
  entry.d_ino = 0x0AA10000 + names.size();
  entry.d_reclen = sizeof(Entry);
  const std::string& name = names.front();
  entry.d_type = name.rfind("nvme", 0) == 0 && name.find('n', 4) == std::string::npos ? DT_CHR : DT_BLK;
  std::snprintf(entry.d_name, sizeof entry.d_name, "%s", name.c_str());
  names.erase(names.begin());
  return &entry;
}

}  // namespace

extern "C" {

struct dirent* readdir(DIR* dir) { return NextEntry(dir, REAL(readdir), &Shim::Listing::entry); }

struct dirent64* readdir64(DIR* dir) { return NextEntry(dir, REAL(readdir64), &Shim::Listing::entry64); }

int closedir(DIR* dir) {
  Shim& shim = TheShim();
  if (shim.emulator != nullptr) {
    std::lock_guard<std::mutex> lock(shim.mutex);
    shim.listings.erase(dir);
  }
  return REAL(closedir)(dir);
}

// stat and its relatives: emulated nodes are device nodes.
#define PATH_STAT(name, Stat)                                               \
  int name(const char* path, Stat* out) {                                   \
    if (Emulated(path) != NodeKind::kNone) return FillStat(path, out) ? 0 : -1; \
    if (Hidden(path)) return NoSuchFile();                                  \
    return REAL(name)(path, out);                                           \
  }
PATH_STAT(stat, struct stat)
PATH_STAT(stat64, struct stat64)
PATH_STAT(lstat, struct stat)
PATH_STAT(lstat64, struct stat64)

#define FD_STAT(name, Stat)                                    \
  int name(int fd, Stat* out) {                                \
    const std::string device = DeviceOf(fd);                   \
    if (!device.empty()) return FillStat(device, out) ? 0 : -1; \
    return REAL(name)(fd, out);                                \
  }
FD_STAT(fstat, struct stat)
FD_STAT(fstat64, struct stat64)

#define AT_STAT(name, Stat)                                                     \
  int name(int dirfd, const char* path, Stat* out, int flags) {                 \
    if (Emulated(path) != NodeKind::kNone) return FillStat(path, out) ? 0 : -1; \
    if (Hidden(path)) return NoSuchFile();                                      \
    return REAL(name)(dirfd, path, out, flags);                                 \
  }
AT_STAT(fstatat, struct stat)
AT_STAT(fstatat64, struct stat64)

// The versioned forms that programs built against older C libraries call.
#define XSTAT(name, Stat)                                                       \
  int name(int version, const char* path, Stat* out) {                          \
    if (Emulated(path) != NodeKind::kNone) return FillStat(path, out) ? 0 : -1; \
    if (Hidden(path)) return NoSuchFile();                                      \
    return REAL(name)(version, path, out);                                      \
  }
XSTAT(__xstat, struct stat)
XSTAT(__xstat64, struct stat64)
XSTAT(__lxstat, struct stat)
XSTAT(__lxstat64, struct stat64)

#define FXSTAT(name, Stat)                                       \
  int name(int version, int fd, Stat* out) {                     \
    const std::string device = DeviceOf(fd);                     \
    if (!device.empty()) return FillStat(device, out) ? 0 : -1;  \
    return REAL(name)(version, fd, out);                         \
  }
FXSTAT(__fxstat, struct stat)
FXSTAT(__fxstat64, struct stat64)

// statx, as ls and other newer programs call it, by path or (with an empty
// path) by descriptor.
int statx(int dirfd, const char* path, int flags, unsigned int mask, struct statx* out) {
  std::string device;
  if (Emulated(path) != NodeKind::kNone) {
    device = path;
  } else if ((flags & AT_EMPTY_PATH) && !IsNull(path) && *path == '\0') {
    device = DeviceOf(dirfd);
  }
  if (device.empty() && Hidden(path)) return NoSuchFile();
  if (device.empty()) return REAL(statx)(dirfd, path, flags, mask, out);
  const struct stat st = TheShim().emulator->NodeStat(device);
  *out = {};
  out->stx_mask = STATX_BASIC_STATS;
  out->stx_blksize = static_cast<uint32_t>(st.st_blksize);
  out->stx_nlink = static_cast<uint32_t>(st.st_nlink);
  out->stx_mode = static_cast<uint16_t>(st.st_mode);
  out->stx_ino = st.st_ino;
  out->stx_rdev_major = major(st.st_rdev);
  out->stx_rdev_minor = minor(st.st_rdev);
  return 0;
}

// Device nodes carry no extended attributes (ls -l asks for ACLs).
#define GETXATTR(name)                                                                  \
  ssize_t name(const char* path, const char* attribute, void* value, size_t size) {    \
    if (Emulated(path) != NodeKind::kNone) return errno = ENOTSUP, -1;                  \
    return REAL(name)(path, attribute, value, size);                                    \
  }
GETXATTR(getxattr)
GETXATTR(lgetxattr)

#define LISTXATTR(name)                                                \
  ssize_t name(const char* path, char* list, size_t size) {            \
    if (Emulated(path) != NodeKind::kNone) return errno = ENOTSUP, -1; \
    return REAL(name)(path, list, size);                               \
  }
LISTXATTR(listxattr)
LISTXATTR(llistxattr)

}  // extern "C"
