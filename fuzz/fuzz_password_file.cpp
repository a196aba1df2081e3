// libFuzzer target: a password file from outside bytes. Its first line becomes a password of at
// most 39 Windows-1252 characters without NULs or line ends, or is refused.

#include <cstdlib>

#include "security/password_text.h"
#include "security/settings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view file(reinterpret_cast<const char*>(data), size);
  std::string problem;
  auto password = qv::PasswordFromUtf8(qv::FirstLine(file), problem);
  if (!password) return problem.empty() ? (std::abort(), 0) : 0;
  if (password->size() > qv::kMaxPasswordLength ||
      password->find_first_of(std::string_view("\0\r\n", 3)) != std::string::npos)
    std::abort();
  return 0;
}
