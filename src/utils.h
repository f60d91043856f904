// Command runner: the only place where a command line is executed and its
// text collected, plus the small line-reading helpers every drive operation
// uses to judge a tool's answer.
#pragma once

#include <istream>
#include <sstream>
#include <string>
#include <vector>

// Runs cmd through the shell and returns everything it wrote to standard
// output. Prints "Open Fail" and returns "" when the pipe cannot be opened.
std::string GetExecutedResult(const char* cmd);

// Runs a tool command line with standard error folded into standard output
// (queryCmd + " 2>&1") and returns the whole output positioned at its start.
// The tool's exit status is deliberately not available: callers judge text.
std::stringstream GetCmdResponse(const std::string& queryCmd);

// Runs cmd as it is, standard error left on the terminal, and leaves its
// standard output in result; false, silently, when it could not be started.
bool shellCmd(const std::string& cmd, std::string& result);

// Splits sourceStr into its non-empty items at every whole occurrence of
// delim; one delim is appended first so the tail becomes an item too.
// delim must not be empty.
std::vector<std::string> ParseItems(const std::string& sourceStr, const std::string& delim);

// The seam between the program and every child process it starts: tool
// command lines, the flash lock's UUID command and the screen clear. The
// installed runner gets each of them; tests install one that records them.
class CommandRunner {
 public:
  virtual ~CommandRunner() = default;
  // Runs a tool command line (given without the " 2>&1" suffix) and returns
  // the text it printed, standard error included.
  virtual std::string Run(const std::string& queryCmd) = 0;
  // Runs a shell command and leaves its standard output in result; its
  // standard error stays on the terminal. False when it could not be started.
  virtual bool RunShell(const std::string& cmd, std::string& result) = 0;
  // Runs "clear", which writes straight to the terminal. False when the
  // shell could not be started.
  virtual bool Clear() = 0;
};

// Installs runner for every child process (nullptr restores the shell) and
// returns the one that was installed before.
CommandRunner* SetCommandRunner(CommandRunner* runner);

// Clears the screen through the installed runner; false when that failed.
bool ClearScreen();

// Reads two characters: the first is normally the newline of the last answer
// typed, the second waits for the operator's key. The end of input among
// them ends the program (EndOfInput).
void WaitForKey();

// Ends the program at once with status 0, after flushing what it printed.
// Once standard input has ended or failed nothing is taken from it as an
// answer, so nothing more is sent to any drive.
[[noreturn]] void EndOfInput();

// The pause that ends most screens: "\nEnter any key to continue...", then
// WaitForKey.
void PauseForKey();

// Whether the lines read from a tool's output are also shown to the user.
enum class Echo { kSilent, kShow };

// Reads lines until one holds phrase and returns true there, leaving later
// lines unread; false when the output ends first. With Echo::kShow every line
// read is printed (and flushed) before it is tested.
bool ReadUntilLineWith(std::istream& output, const std::string& phrase, Echo echo);

// True when every line of the output holds phrase; an output without lines
// passes, a blank line or a banner fails.
bool EveryLineHolds(std::istream& output, const std::string& phrase);

// Prints every remaining line of the output, each followed by a newline.
void EchoAllLines(std::istream& output);

// The flag test of the tools' "Key = Y" listings: true only when the one
// character right after the first occurrence of key is "Y". When key is
// absent the position wraps round to key.size() - 1, a quirk kept on purpose;
// a position beyond the line's end throws std::out_of_range.
bool FlagAfter(const std::string& line, const std::string& key);

// Flushes everything written so far, so that a child process's output and
// the dialogue stay in order when standard output is a pipe or a file.
void FlushOutput();
