// quorvant-age: an External field plug-in that shows how many days old a record is, counted
// from a Date field chosen when the field is configured (a date of purchase, of birth, of an
// order). Records with no date show nothing.
//
// Configure... lists the database's Date fields when it runs inside the Quorvant application;
// anywhere else (qvdb plugin ... configure) it takes the first Date field unless one is chosen.
// The choice is kept as the slot number + 1 in the one-byte setting (0: none chosen).

#include <quorvant/external.h>

#include <QApplication>
#include <QInputDialog>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace {

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long DaysFromCivil(long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long>(doe) - 719468;
}

// Today as a Date value counts: days since 1 January 1904, local time.
long Today() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return DaysFromCivil(local.tm_year + 1900, static_cast<unsigned>(local.tm_mon + 1),
                       static_cast<unsigned>(local.tm_mday)) -
         DaysFromCivil(1904, 1, 1);
}

int FirstDateField(const QvExternalConfig* block) {
  for (int slot = 0; slot < QV_EXTERNAL_FIELDS; ++slot)
    if (block->types[slot] == QV_TYPE_DATE) return slot;
  return -1;
}

// The Date field the user picks, -1 when cancelled.
int AskDateField(const QvExternalConfig* block, int chosen) {
  QStringList names;
  QList<int> date_slots;
  for (int slot = 0; slot < QV_EXTERNAL_FIELDS; ++slot) {
    if (block->types[slot] != QV_TYPE_DATE) continue;
    names << QString::fromLatin1(
        block->names[slot], static_cast<int>(strnlen(block->names[slot], QV_EXTERNAL_NAME_SIZE)));
    date_slots << slot;
  }
  bool ok = false;
  const int current = std::max<int>(0, static_cast<int>(date_slots.indexOf(chosen)));
  QString picked = QInputDialog::getItem(QApplication::activeWindow(), "Age in days",
                                         "Count the days since:", names, current, false, &ok);
  return ok ? date_slots.at(names.indexOf(picked)) : -1;
}

void PutText(QvExternalRecord* block, const char* text) {
  uint8_t* own = block->values[block->field];
  const size_t size = block->sizes[block->field];
  if (own == nullptr || size == 0) return;
  if (std::strncmp(reinterpret_cast<const char*>(own), text, size) == 0) return;
  std::memset(own, 0, size);
  std::memcpy(own, text, std::min(std::strlen(text), size - 1));
  block->changed = 1;
}

int32_t Update(QvExternalRecord* block) {
  const int slot = block->byte_setting - 1;
  if (slot < 0 || slot >= QV_EXTERNAL_FIELDS || block->types[slot] != QV_TYPE_DATE) return 0;
  const uint8_t* date = block->values[slot];
  const uint32_t day = date ? uint32_t{date[0]} | uint32_t{date[1]} << 8 | uint32_t{date[2]} << 16 |
                                  uint32_t{date[3]} << 24
                            : 0;
  char text[24] = "";
  if (day != 0) std::snprintf(text, sizeof text, "%ld", Today() - static_cast<long>(day));
  PutText(block, text);
  return block->changed != 0;
}

}  // namespace

QV_EXTERNAL_EXPORT int32_t INITEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}
QV_EXTERNAL_EXPORT int32_t SAVEEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}
QV_EXTERNAL_EXPORT int32_t SELECTEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}

QV_EXTERNAL_EXPORT int32_t CONFIGEXTERNAL(QvExternalConfig* block) {
  const int chosen = block->byte_setting - 1;
  const bool valid =
      chosen >= 0 && chosen < QV_EXTERNAL_FIELDS && block->types[chosen] == QV_TYPE_DATE;
  int slot = -1;
  if (FirstDateField(block) < 0) return 0;  // nothing to count from
  if (qobject_cast<QApplication*>(QCoreApplication::instance()))
    slot = AskDateField(block, chosen);
  else
    slot = valid ? chosen : FirstDateField(block);
  if (slot < 0) return 0;
  block->byte_setting = static_cast<uint8_t>(slot + 1);
  return 1;
}
