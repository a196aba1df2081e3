/* quorvant-checksum: an External field plug-in that keeps a CRC-32 of the record's other
 * values, as eight hexadecimal digits, so a changed or damaged record shows at a glance.
 *
 * Texts count up to their NUL, numbers, dates, times and pictures by their bytes; headings,
 * External and computed fields are left out, so recalculation does not change the sum. It needs
 * no configuration: it has no CONFIGEXTERNAL, and the field editor keeps the settings as they
 * are. The field should be at least 9 characters long. */
#include <quorvant/external.h>
#include <stdio.h>
#include <string.h>

static uint32_t Crc32(uint32_t crc, const uint8_t* bytes, size_t n) {
  crc = ~crc;
  for (size_t i = 0; i < n; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

static int IsText(int32_t type) {
  return type == QV_TYPE_TEXT || type == QV_TYPE_NOTE || type == QV_TYPE_FLOAT ||
         type == QV_TYPE_POPUP || type == QV_TYPE_DB_POPUP;
}

static int Counted(int32_t type) {
  return type != QV_TYPE_NOT_USED && type != QV_TYPE_HEADING && type != QV_TYPE_EXTERNAL &&
         type != QV_TYPE_CALCULATED && type != QV_TYPE_CONDITIONAL;
}

static int32_t Update(QvExternalRecord* block) {
  uint32_t crc = 0;
  for (int slot = 0; slot < QV_EXTERNAL_FIELDS; ++slot) {
    if (!Counted(block->types[slot]) || block->values[slot] == NULL) continue;
    size_t n = block->sizes[slot];
    if (IsText(block->types[slot])) n = strnlen((const char*)block->values[slot], n);
    crc = Crc32(crc, block->values[slot], n);
  }
  uint8_t* own = block->values[block->field];
  size_t size = block->sizes[block->field];
  if (own == NULL || size == 0) return 0;
  char text[9];
  snprintf(text, sizeof text, "%08X", (unsigned)crc);
  if (strncmp((const char*)own, text, size - 1) == 0) return 0; /* already up to date */
  memset(own, 0, size);
  memcpy(own, text, strlen(text) < size ? strlen(text) : size - 1);
  block->changed = 1;
  return 1;
}

QV_EXTERNAL_EXPORT int32_t INITEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}
QV_EXTERNAL_EXPORT int32_t SAVEEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}
QV_EXTERNAL_EXPORT int32_t SELECTEXTERNAL(QvExternalRecord* block) {
  return Update(block);
}
