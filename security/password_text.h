#pragma once
// Password text as a user gives it (typed, or the first line of a password file) becomes the
// 8-bit text the key is made from. A password the character set cannot hold exactly is refused:
// replacing its letters would let other passwords open the database.

#include <optional>
#include <string>
#include <string_view>

namespace qv {

// The first line of a password file, without its line end (LF, CR LF or CR).
std::string_view FirstLine(std::string_view file);
// The stored form of a UTF-8 password; nothing (with the reason) when it holds a NUL, malformed
// UTF-8 or a letter Windows-1252 lacks, or is longer than 39 characters.
std::optional<std::string> PasswordFromUtf8(std::string_view utf8, std::string& problem);

}  // namespace qv
