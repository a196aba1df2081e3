#include "processing/output_file.h"

namespace qv {

OutputFile::OutputFile(const std::string& path) : file_(std::fopen(path.c_str(), "wb")) {
  if (file_) std::setvbuf(file_, nullptr, _IOFBF, 1 << 16);
}

OutputFile::~OutputFile() {
  Close();
}

void OutputFile::Write(std::string_view text) {
  if (!file_ || text.empty()) return;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) failed_ = true;
}

bool OutputFile::Close() {
  if (!file_) return !failed_;
  if (std::fclose(file_) != 0) failed_ = true;
  file_ = nullptr;
  return !failed_;
}

}  // namespace qv
