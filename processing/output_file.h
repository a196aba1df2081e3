#pragma once
// A file written through a large buffer, for the exports.

#include <cstdio>
#include <string>
#include <string_view>

namespace qv {

class OutputFile {
 public:
  // Opens (replacing) the file at `path`; ok() says whether that worked.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool ok() const { return file_ != nullptr; }
  void Write(std::string_view text);
  // Flushes and closes; false when anything could not be written.
  bool Close();

 private:
  std::FILE* file_ = nullptr;
  bool failed_ = false;
};

}  // namespace qv
