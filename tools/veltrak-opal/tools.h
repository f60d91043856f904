// The two faces of veltrak-opal. Each takes the operands after the program
// name and returns the exit status; all input and output goes through env.
#pragma once

#include <string>
#include <vector>

#include "environment.h"

namespace veltrak_opal {

// The sedutil-compatible tool: "-n --<command> <operands>" as Veltrak sends
// them, with sedutil 1.20's lines and exit statuses.
int SedutilMain(const std::vector<std::string>& args, Environment& env);
// The companion tool, in its own words.
int LantivoMain(const std::vector<std::string>& args, Environment& env);
// Picks the face by the base name of argv0 ("sedutil-cli" or "Lantivo");
// under any other name, a usage line and exit status 2.
int Main(const std::string& argv0, const std::vector<std::string>& args, Environment& env);

}  // namespace veltrak_opal
