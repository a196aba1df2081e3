#include "app/older_format_converter.h"

#include "exchange/conversion.h"

namespace qv::app {

bool OlderFormatConverter::IsOlderFormat(const std::string& path) {
  return IsOlderFormatFile(path);
}

std::optional<std::string> OlderFormatConverter::ParentToConvertFirst(const std::string& path) {
  return qv::ParentToConvertFirst(path);
}

bool OlderFormatConverter::Convert(const std::string& path, Workspace& workspace) {
  return ConvertOldDatabase(path, workspace.prompter, workspace.clock) == 1;
}

}  // namespace qv::app
