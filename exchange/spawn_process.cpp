#include "exchange/spawn_process.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>

extern char** environ;

namespace qv {

ProcessResult SpawnProcessRunner::Run(const std::vector<std::string>& arguments) {
  ProcessResult result;
  if (arguments.empty() || arguments[0].empty()) {
    result.error = ENOENT;
    return result;
  }
  std::vector<char*> argv;
  for (const std::string& a : arguments) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  pid_t pid = 0;
  int error = posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ);
  if (error != 0) {
    result.error = error;
    return result;
  }
  result.started = true;
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) {
      result.exit_code = -1;
      return result;
    }
  }
  if (WIFEXITED(status))
    result.exit_code = WEXITSTATUS(status);
  else if (WIFSIGNALED(status))
    result.exit_code = 128 + WTERMSIG(status);
  return result;
}

}  // namespace qv
