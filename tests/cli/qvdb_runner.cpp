#include "tests/cli/qvdb_runner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace qv::test {

namespace {

// The child's environment: this one without the password variables, with `changes` applied.
std::vector<std::string> ChildEnvironment(const std::map<std::string, std::string>& changes) {
  std::vector<std::string> entries;
  for (char** e = environ; *e != nullptr; ++e) {
    std::string entry = *e;
    std::string name = entry.substr(0, entry.find('='));
    if (name == "QUORVANT_PASSWORD" || name == "QUORVANT_NEW_PASSWORD" || changes.count(name))
      continue;
    entries.push_back(std::move(entry));
  }
  for (const auto& [name, value] : changes) entries.push_back(name + "=" + value);
  return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

QvdbResult RunQvdb(const std::vector<std::string>& arguments, const std::string& input,
                   const std::map<std::string, std::string>& environment) {
  TempFolder io;
  std::string in_path = io.Path("in"), out_path = io.Path("out"), err_path = io.Path("err");
  std::ofstream(in_path, std::ios::binary) << input;
  QvdbResult result;
  // Everything the child needs is built before fork: tests run qvdb from several threads, and a
  // child of a threaded process must not allocate (another thread may hold the allocator's lock).
  std::vector<std::string> args{QVDB_PATH};
  args.insert(args.end(), arguments.begin(), arguments.end());
  std::vector<std::string> env = ChildEnvironment(environment);
  std::vector<char*> argv = Pointers(args), envp = Pointers(env);
  pid_t pid = fork();
  if (pid == 0) {
    int in = open(in_path.c_str(), O_RDONLY);
    int out = open(out_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    int err = open(err_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(in, 0);
    dup2(out, 1);
    dup2(err, 2);
    execve(argv[0], argv.data(), envp.data());
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
