#include "environment.h"

#include <dirent.h>
#include <unistd.h>

#include <iostream>

namespace veltrak_opal {

namespace {

std::vector<std::string> DevEntries() {
  std::vector<std::string> names;
  DIR* dir = opendir("/dev");
  if (dir == nullptr) return names;
  while (const dirent* entry = readdir(dir)) names.emplace_back(entry->d_name);
  closedir(dir);
  return names;
}

bool MayReadWrite(const std::string& path) { return access(path.c_str(), R_OK | W_OK) == 0; }

}  // namespace

Environment SystemEnvironment() {
  return Environment{opal::OpenTransport, DevEntries, opal::ReadAllowTpm, std::cout, std::cerr, MayReadWrite};
}

void Line(std::ostream& stream, const std::string& text) { stream << text << '\n' << std::flush; }

}  // namespace veltrak_opal
