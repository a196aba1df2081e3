#include "tests/cli/qvdb_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace qv::test {

QvdbResult RunQvdb(const std::vector<std::string>& arguments, const std::string& input,
                   const std::map<std::string, std::string>& environment) {
  TempFolder io;
  std::string in_path = io.Path("in"), out_path = io.Path("out"), err_path = io.Path("err");
  std::ofstream(in_path, std::ios::binary) << input;
  QvdbResult result;
  pid_t pid = fork();
  if (pid == 0) {
    int in = open(in_path.c_str(), O_RDONLY);
    int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(in, 0);
    dup2(out, 1);
    dup2(err, 2);
    unsetenv("QUORVANT_PASSWORD");
    unsetenv("QUORVANT_NEW_PASSWORD");
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    std::vector<char*> argv;
    std::string program = QVDB_PATH;
    argv.push_back(program.data());
    std::vector<std::string> copy = arguments;
    for (auto& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  result.exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.out = Slurp(out_path);
  result.err = Slurp(err_path);
  return result;
}


}  // namespace qv::test
