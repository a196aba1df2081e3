#pragma once
// Runs the built qvdb with arguments and captures what it prints and its exit code.

#include <map>
#include <string>
#include <vector>

#include "tests/support/temp_files.h"

namespace qv::test {

struct QvdbResult {
  int exit_code = -1;
  std::string out;  // standard output
  std::string err;  // standard error
};

// Runs qvdb with these arguments (no shell involved); `input` is fed to standard input.
// `environment` is added to qvdb's environment; the password variables are cleared first so
// the caller's own never leak in.
QvdbResult RunQvdb(const std::vector<std::string>& arguments, const std::string& input = "",
                   const std::map<std::string, std::string>& environment = {});

}  // namespace qv::test
