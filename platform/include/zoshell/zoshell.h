#ifndef ZOSHELL_ZOSHELL_H
#define ZOSHELL_ZOSHELL_H

#include <cstddef>

// Runs a shell command of the platform's diagnostic shell. `mode` and `flags` select how the
// command runs. Returns a negative value when the command could not be executed.
extern "C" int zoshellExecuteCmd(const char* command, size_t length, int mode, int flags);

#endif
