#include "session_harness.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

void WriteFile(const fs::path& path, const std::string& text, bool executable = false) {
  std::ofstream(path, std::ios::binary) << text;
  if (executable) fs::permissions(path, fs::perms::owner_all, fs::perm_options::add);
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// A case pattern in which everything but `*` is quoted literally.
std::string ShellPattern(const std::string& pattern) {
  std::string quoted = "''";
  for (char c : pattern) {
    if (c == '*') {
      quoted += "*''";
    } else if (c == '\'') {
      quoted.insert(quoted.size() - 1, "'\\''");
    } else {
      quoted.insert(quoted.size() - 1, 1, c);
    }
  }
  return quoted;
}

}  // namespace

Session::Session() {
  char dir_template[] = "/tmp/veltrak-session-XXXXXX";
  if (mkdtemp(dir_template) == nullptr) throw std::runtime_error("mkdtemp failed");
  dir_ = dir_template;
  fs::create_directory(dir_ + "/bin");
  WriteFile(dir_ + "/bin/clear", "#!/bin/sh\necho '[clear]'\n", true);
}

Session::~Session() {
  std::error_code ignored;
  fs::remove_all(dir_, ignored);
}

Session& Session::On(const std::string& tool, const std::string& pattern, const std::string& output) {
  std::vector<Rule>& rules = tools_[tool];
  for (Rule& rule : rules) {
    if (rule.pattern == pattern) {
      rule.outputs.push_back(output);
      return *this;
    }
  }
  rules.push_back(Rule{pattern, {output}});
  return *this;
}

std::string Session::ToolPath(const std::string& tool) const {
  const bool in_working_dir = tool == "sedutil-cli" || tool == "Lantivo";
  return dir_ + (in_working_dir ? "/" : "/bin/") + tool;
}

// Each fake tool logs its call, then prints the next output of the first
// rule whose pattern matches; counters live in files beside the outputs.
void Session::WriteTools() const {
  const std::string replies = dir_ + "/.replies";
  fs::create_directories(replies);
  for (const auto& [tool, rules] : tools_) {
    std::string script = "#!/bin/sh\nprintf '%s\\n' \"" + tool + " $*\" >> '" + dir_ +
                         "/calls.log'\n"
                         "reply() {\n"
                         "  n=$(cat \"$1.count\" 2>/dev/null || echo 0); n=$((n+1)); echo $n > \"$1.count\"\n"
                         "  if [ -f \"$1.$n\" ]; then cat \"$1.$n\"; else cat \"$1.last\"; fi\n"
                         "}\n"
                         "case \"$*\" in\n";
    for (size_t r = 0; r < rules.size(); ++r) {
      const std::string base = replies + "/" + tool + "." + std::to_string(r);
      for (size_t k = 0; k < rules[r].outputs.size(); ++k) {
        WriteFile(base + "." + std::to_string(k + 1), rules[r].outputs[k]);
      }
      WriteFile(base + ".last", rules[r].outputs.back());
      script += "  " + ShellPattern(rules[r].pattern) + ") reply '" + base + "' ;;\n";
    }
    script += "esac\n";
    WriteFile(ToolPath(tool), script, true);
  }
}

void Session::Run(const std::string& input) {
  WriteTools();
  WriteFile(dir_ + "/.input", input);
  const std::string command = "cd '" + dir_ + "' && PATH='" + dir_ + "/bin':\"$PATH\" timeout " +
                              VELTRAK_SESSION_LIMIT " '" VELTRAK_BINARY "' < .input > .screen 2>&1";
  const int status = std::system(command.c_str());
  exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  screen = ReadFile(dir_ + "/.screen");
}

std::string Session::Calls() const { return ReadFile(dir_ + "/calls.log"); }
