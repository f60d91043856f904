// veltrak-opal: Veltrak's own drive tools, one program that answers as
// sedutil-cli or as Lantivo by the name it is started under.
#include "tools.h"

int main(int argc, char** argv) {
  veltrak_opal::Environment env = veltrak_opal::SystemEnvironment();
  return veltrak_opal::Main(argc > 0 ? argv[0] : "", std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), env);
}
