#pragma once
// The command numbers of the main window's menus and of the column menu. Each QAction carries
// its number as data.

namespace qv::app::command {

inline constexpr int kNew = 32804;
inline constexpr int kOpen = 32785;
inline constexpr int kReopenFirst = 32878;  // .. 32887 for LastFile0 .. LastFile9
inline constexpr int kReopenLast = 32887;
inline constexpr int kMoreFiles = 32888;
inline constexpr int kSave = 32786;
inline constexpr int kSaveAs = 32787;
inline constexpr int kClose = 32803;
inline constexpr int kPreferences = 32805;
inline constexpr int kDbProperties = 32806;
inline constexpr int kExit = 32788;
inline constexpr int kMoveRecords = 32798;
inline constexpr int kCopyRecords = 32799;
inline constexpr int kExportRecords = 32800;
inline constexpr int kPrintRecords = 32890;
inline constexpr int kBeamRecords = 32892;
inline constexpr int kBeamDatabase = 32894;
inline constexpr int kReceive = 32895;
inline constexpr int kDeleteRecords = 32801;
inline constexpr int kRunReport = 32802;
inline constexpr int kFind = 1011;
inline constexpr int kFindAgain = 32797;
inline constexpr int kSort = 32796;
inline constexpr int kFilter = 32795;
inline constexpr int kAbout = 32784;
// Not in the command table: the help page, the record editor on a new record, importing a CSV file.
inline constexpr int kHelp = 0;
inline constexpr int kNewRecord = 32807;
inline constexpr int kImportCsv = 32950;

// The column menu.
inline constexpr int kSortForward = 1300;
inline constexpr int kSortReverse = 1301;
inline constexpr int kFieldProperties = 1302;
inline constexpr int kColumnReport = 1303;
inline constexpr int kSetValues = 1304;
inline constexpr int kHideField = 1305;

}  // namespace qv::app::command
