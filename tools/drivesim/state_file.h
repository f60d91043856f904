// The simulation's state on disk: one text file in the working directory,
// "key = value" lines with one [device] section per drive, meant to be read
// (and if need be mended) by a person.
#pragma once

#include <string>

#include "drive.h"

extern const char* const kStateFileName;

std::string StateText(const SimState& state);

// Fills state from text. False, with a message naming the line, when the
// text is not a complete state.
bool ParseState(const std::string& text, SimState& state, std::string& error);

// Reads the state file. False, with a message, when it is missing,
// unreadable or damaged.
bool LoadState(SimState& state, std::string& error);

// Replaces the state file as a whole: the text goes to a temporary file that
// is then renamed over it, so a reader never sees half a state. False, with a
// message, when the file cannot be written; the old state is then untouched.
bool SaveState(const SimState& state, std::string& error);

// Whether a path is one the scan reports: /dev/sd[a-z] or /dev/nvmeN.
bool IsScannableDevice(const std::string& device);
