#include "app/launch_request.h"

#include <cstdlib>

namespace qv::app {

LaunchRequest ParseLaunch(const std::vector<std::string>& arguments) {
  LaunchRequest request;
  std::string joined;
  for (const std::string& a : arguments) {
    if (!joined.empty()) joined += ' ';
    joined += a;
  }
  if (joined.find(kNotificationWord) != std::string::npos) {
    request.kind = LaunchRequest::Notification;
    request.text = joined;
    return request;
  }
  for (const std::string& a : arguments) {
    if (a.empty() || a[0] == '-') continue;  // options are Qt's own (-platform, -style ...)
    request.kind = LaunchRequest::OpenFile;
    request.path = a;
    break;
  }
  return request;
}

std::string LaunchText(const LaunchRequest& request) {
  switch (request.kind) {
    case LaunchRequest::Notification: return request.text;
    case LaunchRequest::OpenFile: return request.path;
    case LaunchRequest::Nothing: break;
  }
  return {};
}

LaunchRequest ParseLaunchText(std::string_view text) {
  LaunchRequest request;
  if (text.empty()) return request;
  if (text.find(kNotificationWord) != std::string_view::npos) {
    request.kind = LaunchRequest::Notification;
    request.text = std::string(text);
  } else {
    request.kind = LaunchRequest::OpenFile;
    request.path = std::string(text);
  }
  return request;
}

int NotificationNumber(std::string_view text) {
  std::size_t space = text.find(' ');
  if (space == std::string_view::npos) return 0;
  std::string rest(text.substr(space + 1));
  long n = std::strtol(rest.c_str(), nullptr, 10);
  return n > 0 && n < 1000000 ? static_cast<int>(n) : 0;
}

}  // namespace qv::app
