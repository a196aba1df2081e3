#include "processing/output_file.h"

namespace qv {

namespace {
constexpr std::size_t kBufferSize = 1 << 16;
}  // namespace

OutputFile::OutputFile(const std::string& path) : file_(path) {
  buffer_.reserve(kBufferSize);
}

void OutputFile::Write(std::string_view text) {
  if (!ok() || failed_ || closed_) return;
  if (buffer_.size() + text.size() < kBufferSize) {
    buffer_.append(text);
    return;
  }
  // A large text goes out as it is rather than through a copy in the buffer.
  Flush();
  if (!failed_ && !file_.Write(text.data(), text.size())) failed_ = true;
}

bool OutputFile::Flush() {
  if (!file_.Write(buffer_.data(), buffer_.size())) failed_ = true;
  buffer_.clear();
  return !failed_;
}

bool OutputFile::Close() {
  if (closed_) return !failed_;
  closed_ = true;
  if (!ok() || !Flush()) {
    file_.Discard();
    failed_ = true;
    return false;
  }
  failed_ = file_.Commit().result != WriteResult::Written;
  return !failed_;
}

}  // namespace qv
