#include "app/preferences_store.h"

#include "exchange/obex_socket.h"

namespace qv::app {

namespace {
bool ReadFlag(const Settings& settings, const char* key, bool fallback) {
  return ReadIntSetting(settings, key, fallback ? 1 : 0) != 0;
}
}  // namespace

Preferences ReadPreferences(const Settings& settings) {
  Preferences p;
  p.auto_save = ReadFlag(settings, "AutoSave", p.auto_save);
  p.auto_sip = ReadFlag(settings, "AutoSIP", p.auto_sip);
  p.allow_checks = ReadFlag(settings, "AllowChecks", p.allow_checks);
  p.allow_popups = ReadFlag(settings, "AllowPopups", p.allow_popups);
  p.allow_date_time = ReadFlag(settings, "AllowDateTime", p.allow_date_time);
  p.print_command = settings.read("PrintCommand").value_or("");
  return p;
}

void WritePreferences(Settings& settings, const Preferences& p) {
  WriteIntSetting(settings, "AutoSave", p.auto_save);
  WriteIntSetting(settings, "AutoSIP", p.auto_sip);
  WriteIntSetting(settings, "AllowChecks", p.allow_checks);
  WriteIntSetting(settings, "AllowPopups", p.allow_popups);
  WriteIntSetting(settings, "AllowDateTime", p.allow_date_time);
  if (!p.print_command.empty()) settings.write("PrintCommand", p.print_command);
}

BeamPreferences ReadBeamPreferences(const Settings& settings) {
  BeamPreferences p;
  p.peer = settings.read(kPeerSetting).value_or(p.peer);
  int port = ReadIntSetting(settings, kPortSetting, p.port);
  if (port > 0 && port <= 65535) p.port = port;
  p.bind = settings.read(kBindSetting).value_or(p.bind);
  return p;
}

void WriteBeamPreferences(Settings& settings, const BeamPreferences& p) {
  settings.write(kPeerSetting, p.peer);
  WriteIntSetting(settings, kPortSetting, p.port);
  settings.write(kBindSetting, p.bind);
}

}  // namespace qv::app
