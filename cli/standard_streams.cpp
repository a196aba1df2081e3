#include "cli/standard_streams.h"

#include <QTemporaryFile>
#include <cstdio>

#include "cli/cli_context.h"
#include "engine/container.h"
#include "processing/output_file.h"

namespace qv::cli {

bool IsStandardStream(const std::string& path) {
  return path == "-";
}

std::optional<Bytes> ReadInput(CliContext& context, const std::string& path) {
  if (!IsStandardStream(path)) {
    auto bytes = ReadWholeFile(path);
    if (!bytes) context.Error("cannot read '" + path + "'");
    return bytes;
  }
  Bytes bytes;
  std::uint8_t buffer[1 << 16];
  std::size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, stdin)) > 0)
    bytes.insert(bytes.end(), buffer, buffer + n);
  if (std::ferror(stdin)) {
    context.Error("cannot read standard input");
    return std::nullopt;
  }
  return bytes;
}

bool WriteOutput(CliContext& context, const std::string& path, std::string_view text) {
  if (IsStandardStream(path)) {
    bool ok = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (std::fflush(stdout) == 0 && ok) return true;
    context.Error("cannot write to standard output");
    return false;
  }
  OutputFile file(path);
  file.Write(text);
  if (file.ok() && file.Close()) return true;
  context.Error("cannot write '" + path + "'");
  return false;
}

OutputStream::OutputStream(CliContext& context, const std::string& path)
    : context_(context), path_(path) {
  if (!IsStandardStream(path)) file_ = std::make_unique<OutputFile>(path);
}

OutputStream::~OutputStream() = default;

void OutputStream::Write(std::string_view text) {
  if (file_)
    file_->Write(text);
  else if (!failed_)
    failed_ = std::fwrite(text.data(), 1, text.size(), stdout) != text.size();
}

bool OutputStream::Finish() {
  if (file_ ? file_->ok() && file_->Close() : std::fflush(stdout) == 0 && !failed_) return true;
  context_.Error(file_ ? "cannot write '" + path_ + "'" : "cannot write to standard output");
  return false;
}

std::unique_ptr<Database> OpenStandardInput(CliContext& context) {
  auto bytes = ReadInput(context, "-");
  if (!bytes) return nullptr;
  // The whole file is read into memory as it opens, so the copy lives only that long.
  QTemporaryFile copy;
  if (!copy.open() ||
      copy.write(reinterpret_cast<const char*>(bytes->data()),
                 static_cast<qint64>(bytes->size())) != static_cast<qint64>(bytes->size()) ||
      !copy.flush()) {
    context.Error("cannot keep standard input in a temporary file");
    return nullptr;
  }
  auto db = context.Open(copy.fileName().toStdString());
  if (db) db->path = "-";
  return db;
}

bool SaveRefused(CliContext& context, const Database& db) {
  if (!IsStandardStream(db.path)) return false;
  context.Error("the database came from standard input and cannot be saved; give its file");
  return true;
}

}  // namespace qv::cli
