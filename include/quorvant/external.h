/* Quorvant External field plug-ins: the interface a plug-in library implements.
 *
 * A plug-in is a shared library named lib<NAME>.so, where NAME is the plug-in name stored in an
 * External field's definition. Quorvant looks for it in the data folder's plugins/ folder first,
 * then on the system's library path. It exports up to four entry points with C linkage, each
 * taking a pointer to a parameter block and returning non-zero to accept:
 *
 *   INITEXTERNAL    (QvExternalRecord*)  the record editor sets up the record's External fields
 *   SAVEEXTERNAL    (QvExternalRecord*)  the record editor stores the record
 *   SELECTEXTERNAL  (QvExternalRecord*)  the user activates the External field
 *   CONFIGEXTERNAL  (QvExternalConfig*)  the field editor's Configure... button
 *
 * A record-time entry point may rewrite any field's value buffer (values[i], sizes[i] bytes, in
 * the record encoding: texts NUL-terminated, numbers low byte first). The values are stored
 * only when it returns non-zero AND sets `changed` non-zero. A library stays loaded once a record
 * has called it; after CONFIGEXTERNAL it is unloaded again.
 *
 * The blocks are little-endian with natural alignment on 64-bit hosts (pointers 8 bytes); the
 * assertions below pin every offset. Compiles as C11 and as C++.
 */
#ifndef QUORVANT_EXTERNAL_H
#define QUORVANT_EXTERNAL_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <assert.h>
#endif

#define QV_EXTERNAL_FIELDS 100
#define QV_EXTERNAL_NAME_SIZE 20     /* a field name, NUL-terminated */
#define QV_EXTERNAL_DATABASE_SIZE 32 /* the database name, NUL-terminated */
#define QV_EXTERNAL_DATA_SIZE 20     /* configuration bytes a record-time call sees */
#define QV_EXTERNAL_CONFIG_SIZE 30   /* configuration bytes CONFIGEXTERNAL edits */

/* Event codes of the record-time entry points. */
#define QV_INITEXTERNAL 32001
#define QV_SAVEEXTERNAL 32002
#define QV_SELECTEXTERNAL 32003

/* Field type codes as `types` holds them. */
enum {
  QV_TYPE_NOT_USED = 0, QV_TYPE_TEXT = 1, QV_TYPE_INTEGER = 2, QV_TYPE_FLOAT = 3,
  QV_TYPE_POPUP = 4, QV_TYPE_CHECKBOX = 5, QV_TYPE_UNIQUE = 6, QV_TYPE_IMAGE = 7,
  QV_TYPE_DATE = 8, QV_TYPE_TIME = 9, QV_TYPE_LINK = 10, QV_TYPE_LINKED = 11, QV_TYPE_NOTE = 12,
  QV_TYPE_HEADING = 13, QV_TYPE_DB_POPUP = 14, QV_TYPE_CALCULATED = 15,
  QV_TYPE_RELATIONSHIP = 16, QV_TYPE_CONDITIONAL = 17, QV_TYPE_EXTERNAL = 18
};

/* The record block of INITEXTERNAL, SAVEEXTERNAL and SELECTEXTERNAL (3716 bytes, padded to
 * 3720). Unused field slots have a null buffer and size 0. */
typedef struct QvExternalRecord {
  int32_t reserved;                                        /*    0 not set by Quorvant */
  int32_t setting;                                         /*    4 the field's 32-bit setting */
  uint8_t byte_setting;                                    /*    8 the field's one-byte setting */
  uint8_t data[QV_EXTERNAL_DATA_SIZE];                     /*    9 configuration bytes 0..19 */
  uint8_t pad1[11];                                        /*   29 zero */
  int32_t field;                                           /*   40 slot of the External field */
  char database[QV_EXTERNAL_DATABASE_SIZE];                /*   44 database name */
  int32_t types[QV_EXTERNAL_FIELDS];                       /*   76 type code of every slot */
  char names[QV_EXTERNAL_FIELDS][QV_EXTERNAL_NAME_SIZE];   /*  476 name of every slot */
  char database2[QV_EXTERNAL_DATABASE_SIZE];               /* 2476 database name again */
  uint16_t position;                                       /* 2508 record number, 65000 new */
  uint8_t pad2[2];                                         /* 2510 zero */
  uint8_t* values[QV_EXTERNAL_FIELDS];                     /* 2512 each slot's value buffer */
  uint32_t sizes[QV_EXTERNAL_FIELDS];                      /* 3312 each buffer's size */
  int32_t changed;                                         /* 3712 set non-zero to store */
  uint8_t pad3[4];                                         /* 3716 zero */
} QvExternalRecord;

/* The configuration block of CONFIGEXTERNAL (2472 bytes). On a non-zero return, `setting`,
 * `byte_setting` and `config` are kept as the field's settings. */
typedef struct QvExternalConfig {
  int32_t setting;                                         /*    0 the field's 32-bit setting */
  uint8_t byte_setting;                                    /*    4 the field's one-byte setting */
  uint8_t config[QV_EXTERNAL_CONFIG_SIZE];                 /*    5 configuration bytes */
  uint8_t pad1[1];                                         /*   35 zero */
  int32_t field;                                           /*   36 slot of the External field */
  char database[QV_EXTERNAL_DATABASE_SIZE];                /*   40 database name */
  int32_t types[QV_EXTERNAL_FIELDS];                       /*   72 type code of every slot */
  char names[QV_EXTERNAL_FIELDS][QV_EXTERNAL_NAME_SIZE];   /*  472 name of every slot */
} QvExternalConfig;

typedef int32_t (*QvExternalRecordEntry)(QvExternalRecord* block);
typedef int32_t (*QvExternalConfigEntry)(QvExternalConfig* block);

#ifdef __cplusplus
#define QV_EXTERNAL_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define QV_EXTERNAL_EXPORT __attribute__((visibility("default")))
#endif

static_assert(sizeof(void*) == 8, "the blocks are laid out for 8-byte pointers");
static_assert(offsetof(QvExternalRecord, reserved) == 0, "reserved");
static_assert(offsetof(QvExternalRecord, setting) == 4, "setting");
static_assert(offsetof(QvExternalRecord, byte_setting) == 8, "byte_setting");
static_assert(offsetof(QvExternalRecord, data) == 9, "data");
static_assert(offsetof(QvExternalRecord, pad1) == 29, "pad1");
static_assert(offsetof(QvExternalRecord, field) == 40, "field");
static_assert(offsetof(QvExternalRecord, database) == 44, "database");
static_assert(offsetof(QvExternalRecord, types) == 76, "types");
static_assert(offsetof(QvExternalRecord, names) == 476, "names");
static_assert(offsetof(QvExternalRecord, database2) == 2476, "database2");
static_assert(offsetof(QvExternalRecord, position) == 2508, "position");
static_assert(offsetof(QvExternalRecord, pad2) == 2510, "pad2");
static_assert(offsetof(QvExternalRecord, values) == 2512, "values");
static_assert(offsetof(QvExternalRecord, sizes) == 3312, "sizes");
static_assert(offsetof(QvExternalRecord, changed) == 3712, "changed");
static_assert(offsetof(QvExternalRecord, pad3) == 3716, "pad3");
static_assert(sizeof(QvExternalRecord) == 3720, "record block size");

static_assert(offsetof(QvExternalConfig, setting) == 0, "setting");
static_assert(offsetof(QvExternalConfig, byte_setting) == 4, "byte_setting");
static_assert(offsetof(QvExternalConfig, config) == 5, "config");
static_assert(offsetof(QvExternalConfig, pad1) == 35, "pad1");
static_assert(offsetof(QvExternalConfig, field) == 36, "field");
static_assert(offsetof(QvExternalConfig, database) == 40, "database");
static_assert(offsetof(QvExternalConfig, types) == 72, "types");
static_assert(offsetof(QvExternalConfig, names) == 472, "names");
static_assert(sizeof(QvExternalConfig) == 2472, "configuration block size");

#endif /* QUORVANT_EXTERNAL_H */
