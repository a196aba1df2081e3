/* Small plug-ins for the External field tests, one behaviour per library (BEHAVIOUR is set by
 * the build). Written in C against the public header, as plug-in authors write them; the
 * offsets plug-in reads the blocks by raw offsets, so the layout is checked from this side. */
#include <quorvant/external.h>
#include <stdio.h>
#include <string.h>

#define REFUSE 1    /* changes values and sets the flag, but returns 0 */
#define UNFLAGGED 2 /* changes values and returns 1, but leaves the flag 0 */
#define WRITER 3    /* writes its own value and an Integer, returns 1 with the flag */
#define OFFSETS 4   /* checks every offset and writes "ok" or the first bad offset */
#define COUNTER 5   /* writes how often it was called: state kept while it stays loaded */
#define FILLER 6    /* fills its whole buffer with text and no NUL */

static void PutOwn(QvExternalRecord* block, const char* text) {
  uint8_t* own = block->values[block->field];
  memset(own, 0, block->sizes[block->field]);
  memcpy(own, text, strlen(text) + 1);
}

#if BEHAVIOUR == OFFSETS
static int32_t I32(const uint8_t* b, size_t at) {
  int32_t v;
  memcpy(&v, b + at, 4);
  return v;
}

/* The record the test builds: "Offsets" with Text "Name" = "Alpha" (length 12), Integer "Qty"
 * = 42, this field in slot 2 (setting 0x11223344, byte 0x55, configuration 1..30), record 7. */
static int CheckRecord(const uint8_t* b) {
  uint8_t* name_value;
  uint16_t position;
  uint32_t size;
  if (I32(b, 4) != 0x11223344) return 4;
  if (b[8] != 0x55) return 8;
  for (int i = 0; i < 20; ++i)
    if (b[9 + i] != i + 1) return 9;
  for (int i = 29; i < 40; ++i)
    if (b[i] != 0) return 29;
  if (I32(b, 40) != 2) return 40;
  if (strcmp((const char*)b + 44, "Offsets") != 0) return 44;
  if (I32(b, 76) != QV_TYPE_TEXT || I32(b, 80) != QV_TYPE_INTEGER ||
      I32(b, 84) != QV_TYPE_EXTERNAL || I32(b, 88) != 0)
    return 76;
  if (strcmp((const char*)b + 476, "Name") != 0 || strcmp((const char*)b + 496, "Qty") != 0)
    return 476;
  if (strcmp((const char*)b + 2476, "Offsets") != 0) return 2476;
  memcpy(&position, b + 2508, 2);
  if (position != 7) return 2508;
  memcpy(&name_value, b + 2512, 8);
  if (name_value == NULL || strcmp((const char*)name_value, "Alpha") != 0) return 2512;
  memcpy(&name_value, b + 2512 + 8 * 3, 8);
  if (name_value != NULL) return 2536;
  memcpy(&size, b + 3312, 4);
  if (size != 13) return 3312;
  memcpy(&size, b + 3312 + 4, 4);
  if (size != 4) return 3316;
  if (I32(b, 3712) != 0) return 3712;
  return 0;
}

static int CheckConfig(const uint8_t* b) {
  if (I32(b, 0) != 0x11223344) return 1000;
  if (b[4] != 0x55) return 1004;
  for (int i = 0; i < 30; ++i)
    if (b[5 + i] != i + 1) return 1005;
  if (I32(b, 36) != 2) return 1036;
  if (strcmp((const char*)b + 40, "Offsets") != 0) return 1040;
  if (I32(b, 72) != QV_TYPE_TEXT || I32(b, 80) != QV_TYPE_EXTERNAL) return 1072;
  if (strcmp((const char*)b + 472 + 20, "Qty") != 0) return 1472;
  return 0;
}

static int32_t Answer(QvExternalRecord* block) {
  char text[16] = "ok";
  int bad = CheckRecord((const uint8_t*)block);
  if (bad) snprintf(text, sizeof text, "bad %d", bad);
  PutOwn(block, text);
  int32_t one = 1;
  memcpy((uint8_t*)block + 3712, &one, 4);
  return 1;
}

QV_EXTERNAL_EXPORT int32_t CONFIGEXTERNAL(QvExternalConfig* block) {
  int bad = CheckConfig((const uint8_t*)block);
  memset(block->config, 0, sizeof block->config);
  snprintf((char*)block->config, sizeof block->config, bad ? "bad %d" : "ok", bad);
  return 1;
}
#elif BEHAVIOUR == COUNTER
static int calls;

static int32_t Answer(QvExternalRecord* block) {
  char text[16];
  snprintf(text, sizeof text, "%d", ++calls);
  PutOwn(block, text);
  block->changed = 1;
  return 1;
}
#elif BEHAVIOUR == FILLER
static int32_t Answer(QvExternalRecord* block) {
  memset(block->values[block->field], 'x', block->sizes[block->field]);
  block->changed = 1;
  return 1;
}
#else
static int32_t Answer(QvExternalRecord* block) {
  PutOwn(block, "written");
  int32_t qty = 99;
  memcpy(block->values[1], &qty, 4);
  block->changed = BEHAVIOUR == UNFLAGGED ? 0 : 1;
  return BEHAVIOUR == REFUSE ? 0 : 1;
}

#if BEHAVIOUR == WRITER
QV_EXTERNAL_EXPORT int32_t CONFIGEXTERNAL(QvExternalConfig* block) {
  block->setting = 0x01020304;
  block->byte_setting = 7;
  memcpy(block->config, "configured", 10);
  return 1;
}
#endif
#endif

QV_EXTERNAL_EXPORT int32_t INITEXTERNAL(QvExternalRecord* block) {
  return Answer(block);
}
QV_EXTERNAL_EXPORT int32_t SAVEEXTERNAL(QvExternalRecord* block) {
  return Answer(block);
}
QV_EXTERNAL_EXPORT int32_t SELECTEXTERNAL(QvExternalRecord* block) {
  return Answer(block);
}
