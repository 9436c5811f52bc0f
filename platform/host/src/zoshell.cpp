#include "zoshell/zoshell.h"

#include <spawn.h>
#include <sys/wait.h>

#include <string>

#include "HostState.h"

extern char** environ;

namespace zo {
namespace host {

int runShellCommand(const char* command, size_t length) {
    if (command == nullptr) {
        return -22;
    }
    const std::string text(command, length);
    char shell[] = "/bin/sh";
    char flag[] = "-c";
    char* argv[] = {shell, flag, const_cast<char*>(text.c_str()), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, shell, nullptr, nullptr, argv, environ) != 0) {
        return -1;
    }
    int status = 0;
    if (waitpid(pid, &status, 0) < 0) {
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace host
}  // namespace zo

int zoshellExecuteCmd(const char* command, size_t length, int mode, int flags) {
    const zo::host::Hooks hooks = zo::host::currentHooks();
    if (hooks.executeShell) {
        return hooks.executeShell(command, length, mode, flags);
    }
    return zo::host::runShellCommand(command, length);
}
