#pragma once
// The conversion of 2.x databases, as the open flow asks for it.

#include "app/open_hooks.h"

namespace qv::app {

class OlderFormatConverter : public FormatConverter {
 public:
  bool IsOlderFormat(const std::string& path) override;
  std::optional<std::string> ParentToConvertFirst(const std::string& path) override;
  bool Convert(const std::string& path, Workspace& workspace) override;
};

}  // namespace qv::app
