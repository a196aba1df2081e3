#pragma once
#include <string>

namespace qv {

class Paths {
 public:
  virtual ~Paths() = default;
  // The personal documents folder (the handheld's "My Documents").
  virtual std::string DocumentsFolder() const = 0;
  // Where databases live: the documents folder + "/Quorvant3", or $QUORVANT_HOME.
  virtual std::string DataFolder() const = 0;
  // The per-user runtime or temporary folder (for IrData.dat).
  virtual std::string TempFolder() const = 0;
};

}  // namespace qv
