#pragma once
#include "platform/paths.h"

namespace qv {

// The XDG documents folder + "/Quorvant3"; $QUORVANT_HOME, when set, is the data folder itself.
class QtPaths : public Paths {
 public:
  std::string DocumentsFolder() const override;
  std::string DataFolder() const override;
  std::string TempFolder() const override;
};

}  // namespace qv
