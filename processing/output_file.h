#pragma once
// A file written through a large buffer, for the exports. It is written beside the target and
// put in place by Close, so a failed export leaves an existing file as it was and no truncated
// one behind.

#include <string>
#include <string_view>

#include "engine/atomic_file.h"

namespace qv {

class OutputFile {
 public:
  // Starts a new version of the file at `path`; ok() says whether that worked.
  explicit OutputFile(const std::string& path);
  // Without Close, nothing replaces the file.
  ~OutputFile() = default;
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool ok() const { return file_.ok(); }
  void Write(std::string_view text);
  // Writes the rest and puts the file in place; false when anything could not be written, and
  // then the file at the path is unchanged.
  bool Close();

 private:
  bool Flush();
  AtomicFile file_;
  std::string buffer_;
  bool failed_ = false;
  bool closed_ = false;
};

}  // namespace qv
