#pragma once
// The production ProcessRunner: posix_spawnp and waitpid.

#include "platform/process_runner.h"

namespace qv {

class SpawnProcessRunner : public ProcessRunner {
 public:
  ProcessResult Run(const std::vector<std::string>& arguments) override;
};

}  // namespace qv
