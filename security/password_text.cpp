#include "security/password_text.h"

#include "engine/text.h"
#include "security/settings.h"

namespace qv {

std::string_view FirstLine(std::string_view file) {
  return file.substr(0, file.find_first_of("\r\n"));
}

std::optional<std::string> PasswordFromUtf8(std::string_view utf8, std::string& problem) {
  StoredText stored = Utf8ToStored(utf8);
  if (!stored.exact) {
    problem = "a password may hold only the letters of Windows-1252 (Western European)";
    return std::nullopt;
  }
  if (stored.text.size() > kMaxPasswordLength) {
    problem = StringPrintf("a password has at most %zu characters", kMaxPasswordLength);
    return std::nullopt;
  }
  return std::move(stored.text);
}

}  // namespace qv
