// One program, three faces: the name it was started under picks the face,
// so links named sedutil-cli and Lantivo answer as those tools.
#include <string>
#include <vector>

#include "interfaces.h"

int main(int argc, char** argv) {
  if (argc < 1) return AdminMain({});
  const std::string invoked = argv[0];
  const std::string name = invoked.substr(invoked.find_last_of('/') + 1);
  const std::vector<std::string> args(argv + 1, argv + argc);
  if (name == "sedutil-cli") return SedutilMain(args);
  if (name == "Lantivo") return LantivoMain(args);
  return AdminMain(args);
}
