// The three faces of drivesim, chosen by the name it is started under. Each
// takes the arguments after the program name and returns the exit status.
#pragma once

#include <string>
#include <vector>

// As ./sedutil-cli: the command lines Veltrak sends, answered in that tool's
// words, streams and exit statuses.
int SedutilMain(const std::vector<std::string>& args);

// As ./Lantivo: lock state, access-control entries and user status.
int LantivoMain(const std::vector<std::string>& args);

// As drivesim: create, show and reset the simulated drives.
int AdminMain(const std::vector<std::string>& args);
