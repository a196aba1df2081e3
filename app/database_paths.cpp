#include "app/database_paths.h"

#include <filesystem>

#include "engine/text.h"

namespace qv::app {

std::string MakeUntitledPath(const std::string& data_folder) {
  std::error_code error;
  for (int n = 1; n < 1000000; ++n) {
    std::string path = StringPrintf("%s/Untitled%d.PDB", data_folder.c_str(), n);
    if (!std::filesystem::exists(path, error)) return path;
  }
  return data_folder + "/Untitled.PDB";
}

std::string ProposedPath(const std::string& data_folder, std::string_view database_name) {
  std::string name = Cp1252ToUtf8(database_name);
  for (char& c : name)
    if (c == '/' || c == '\\' || c == '*' || c == ':') c = '_';
  if (name.empty()) name = "Untitled";
  return StringPrintf("%s/%s.PDB", data_folder.c_str(), name.c_str());
}

}  // namespace qv::app
