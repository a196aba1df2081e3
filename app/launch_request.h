#pragma once
// What a launch's command line asks for: nothing, a database to open, or the hand-off of an
// alarm notification ("AppRunToHandleNotification N").

#include <string>
#include <string_view>
#include <vector>

namespace qv::app {

inline constexpr std::string_view kNotificationWord = "AppRunToHandleNotification";

struct LaunchRequest {
  enum Kind { Nothing, OpenFile, Notification } kind = Nothing;
  std::string path;  // OpenFile
  std::string text;  // Notification: the command-line text as given
};

// From the arguments after the program name.
LaunchRequest ParseLaunch(const std::vector<std::string>& arguments);
// The command-line text a second launch hands to the running program.
std::string LaunchText(const LaunchRequest& request);
LaunchRequest ParseLaunchText(std::string_view text);
// The alarm number: the decimal number after the first space; 0 when there is none.
int NotificationNumber(std::string_view text);

}  // namespace qv::app
