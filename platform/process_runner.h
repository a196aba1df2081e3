#pragma once
// Starting an outside program (the print command) and waiting for it to end. No shell is
// involved: the first argument names the program, found through PATH.

#include <string>
#include <vector>

namespace qv {

struct ProcessResult {
  bool started = false;
  int error = 0;      // why it could not be started (an errno value) when not started
  int exit_code = 0;  // its exit status; 128 + the signal number when a signal ended it
};

class ProcessRunner {
 public:
  virtual ~ProcessRunner() = default;
  // Runs the program with these arguments and waits, without a time limit, for it to end.
  virtual ProcessResult Run(const std::vector<std::string>& arguments) = 0;
};

}  // namespace qv
