#pragma once
#include <QLocale>

#include "platform/locale.h"
#include "platform/settings.h"

namespace qv {

// Turns Qt's date and time patterns into the Windows-style ones the formatter reads
// ("AP" becomes "tt"; a 24-hour "h" becomes "H"; time-zone letters are dropped).
std::string WindowsDatePattern(const QString& qt_pattern);
std::string WindowsTimePattern(const QString& qt_pattern);

// The locale items of a Qt locale; the settings `DateFormat` and `TimeFormat` override the
// patterns when present.
Locale LocaleFromQt(const QLocale& locale, const Settings* overrides = nullptr);

// Format options for the system locale: time code 1 for a 12-hour pattern, else 2.
FormatOptions SystemFormatOptions(const Settings* overrides = nullptr);

}  // namespace qv
