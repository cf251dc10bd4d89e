#pragma once

// The host's command line, from words to commands.

namespace host {

/// Runs one command and answers the exit code: 0 done, 1 could not be done, 2 wrong usage.
int runCommandLine(int count, char** words);

}  // namespace host
