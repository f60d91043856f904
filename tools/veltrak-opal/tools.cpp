#include "tools.h"

namespace veltrak_opal {

int Main(const std::string& argv0, const std::vector<std::string>& args, Environment& env) {
  const size_t slash = argv0.find_last_of('/');
  const std::string name = slash == std::string::npos ? argv0 : argv0.substr(slash + 1);
  if (name == "sedutil-cli") return SedutilMain(args, env);
  if (name == "Lantivo") return LantivoMain(args, env);
  Line(env.err, "usage: veltrak-opal answers as sedutil-cli or as Lantivo: run it through a link of either name");
  return 2;
}

}  // namespace veltrak_opal
