// One table per tool: each command's name, operand count, handler and the
// operands as its usage shows them. Lookup ignores case, as sedutil's does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "drive_access.h"

namespace veltrak_opal {

template <typename Call>
struct Command {
  const char* name;  // without the leading "--"
  size_t least, most;  // operand counts allowed
  int (*run)(Call&);
  const char* usage;

  bool Takes(size_t count) const { return count >= least && count <= most; }
};

template <typename Call, size_t N>
const Command<Call>* FindCommand(const Command<Call> (&table)[N], const std::string& typed) {
  for (const Command<Call>& command : table) {
    if (SameIgnoringCase(typed, std::string("--") + command.name)) return &command;
  }
  return nullptr;
}

}  // namespace veltrak_opal
