// Runs the built veltrak as an operator would: in a fresh temporary directory
// holding fake ./sedutil-cli and ./Lantivo scripts (any other fake tool, and a
// `clear` printing "[clear]", first on PATH), with scripted standard input.
// Each fake tool logs its call to calls.log and also writes it to the screen
// where the program ran it, as "$ TOOL ARGUMENTS" and a newline.
#pragma once

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace fs = std::filesystem;

inline std::string Slurp(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class Session {
 public:
  Session() {
    char dir[] = "/tmp/veltrak-session-XXXXXX";
    if (mkdtemp(dir) == nullptr) throw std::runtime_error("mkdtemp failed");
    dir_ = dir;
    fs::create_directory(dir_ / "bin");
    Write("bin/clear", "#!/bin/sh\necho '[clear]'\n", true);
  }
  ~Session() {
    std::error_code ignored;
    fs::remove_all(dir_, ignored);
  }

  // Reads a transcript or a fixture (tests/transcripts/README.md): registers
  // its tools, and those of the fixtures it uses, and returns its other
  // sections by kind ("input", "screen", "status").
  std::map<std::string, std::string> Load(const fs::path& file) {
    if (!fs::is_regular_file(file)) throw std::runtime_error("no file " + file.string());
    std::map<std::string, std::string> sections;
    std::string ignored, *body = &ignored;  // where the lines of the current section go
    std::istringstream text(Slurp(file));
    for (std::string line; std::getline(text, line);) {
      if (line.rfind("--- ", 0) != 0) {
        *body += line + "\n";
        continue;
      }
      std::istringstream words(line.substr(4));
      std::string kind, name, pattern;
      std::getline(words >> kind >> name >> std::ws, pattern);
      body = &ignored;
      if (kind == "use") {
        Load(file.parent_path().parent_path() / "fixtures" / (name + ".tools"));
      } else if (kind == "tool") {  // a pattern seen before queues one more output
        auto& rules = tools_[name];
        auto rule = std::find_if(rules.begin(), rules.end(), [&](const auto& r) { return r.first == pattern; });
        if (rule == rules.end()) rule = rules.insert(rules.end(), {pattern, {}});
        body = &rule->second.emplace_back();
      } else {
        body = &(sections[kind] = kind == "status" ? name : "");
      }
    }
    return sections;
  }

  // Runs veltrak on input, filling screen (standard output and error, with
  // the tool calls) and exit_status; a session that hangs is killed (124).
  // When a tool is called with arguments that, joined by blanks, match a
  // pattern of its own (`*` is the only wildcard), it prints that pattern's
  // next output, the last one repeating; the first pattern that matches
  // answers, and a call that matches none prints nothing.
  void Run(const std::string& input) {
    for (const auto& [tool, rules] : tools_) {
      std::string script = "#!/bin/sh\nlog=\"" + tool + " $*\"\nprintf '%s\\n' \"$log\" >> '" + (dir_ / "calls.log").string() +
                           "'\nprintf '$ %s\\n' \"$log\" >> '" + (dir_ / ".screen").string() + "'\n" +
                           "next() { n=$(($(cat \"$1.n\" 2>/dev/null) + 1)); echo $n > \"$1.n\"; "
                           "cat \"$1.$n\" 2>/dev/null || cat \"$1.last\"; }\ncase \"$*\" in\n";
      for (size_t r = 0; r < rules.size(); ++r) {
        const std::string base = (dir_ / ("." + tool + std::to_string(r))).string();
        for (size_t k = 0; k < rules[r].second.size(); ++k) Write(base + "." + std::to_string(k + 1), rules[r].second[k]);
        Write(base + ".last", rules[r].second.back());
        std::string quoted;  // every character but `*` matches itself
        for (char c : rules[r].first) quoted += c == '*' ? "*" : std::string("\\") + c;
        script += quoted + ") next '" + base + "';;\n";
      }
      Write((tool == "sedutil-cli" || tool == "Lantivo" ? "" : "bin/") + tool, script + "esac\n", true);
    }
    Write(".input", input);
    Write(".screen", "");
    const std::string command = "cd '" + dir_.string() + "' && PATH='" + dir_.string() + "/bin':\"$PATH\" timeout " +
                                VELTRAK_SESSION_LIMIT " '" VELTRAK_BINARY "' < .input >> .screen 2>&1";
    const int status = std::system(command.c_str());
    exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    screen = Slurp(dir_ / ".screen");
  }

  // Every tool call in order, a line each: the tool, a blank, its arguments.
  std::string Calls() const { return Slurp(dir_ / "calls.log"); }

  // Writes a file of the session's directory.
  void Write(const fs::path& name, const std::string& text, bool executable = false) const {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    if (executable) fs::permissions(dir_ / name, fs::perms::owner_all, fs::perm_options::add);
  }

  std::string screen;
  int exit_status = -1;

 private:
  fs::path dir_;
  std::map<std::string, std::vector<std::pair<std::string, std::vector<std::string>>>> tools_;
};
