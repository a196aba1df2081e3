#pragma once
// The file names the program proposes for databases that have no file yet.

#include <string>
#include <string_view>

namespace qv::app {

// The first data-folder path "UntitledN.PDB", N counting from 1, that names no existing file.
std::string MakeUntitledPath(const std::string& data_folder);
// The path a Save-as dialog starts with: the data folder and the database's name (8-bit, as
// the file holds it) with ".PDB". Characters a file name cannot hold become "_".
std::string ProposedPath(const std::string& data_folder, std::string_view database_name);

}  // namespace qv::app
