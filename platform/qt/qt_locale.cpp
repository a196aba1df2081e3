#include "platform/qt/qt_locale.h"

#include "platform/pattern_check.h"

namespace qv {

namespace {

// The first character of a pattern that is neither a letter nor a quote: the separator.
std::string SeparatorOf(const std::string& pattern, const char* fallback) {
  for (char c : pattern)
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '\'')) return std::string(1, c);
  return fallback;
}

}  // namespace

std::string WindowsDatePattern(const QString& qt_pattern) {
  QString p = qt_pattern;
  p.remove('\'');
  return p.toStdString();
}

std::string WindowsTimePattern(const QString& qt_pattern) {
  QString p = qt_pattern;
  p.remove('\'');
  p.remove('t');
  bool twelve = p.contains("AP", Qt::CaseInsensitive);
  p.replace("AP", "tt", Qt::CaseInsensitive);
  if (!twelve) p.replace('h', 'H');
  return p.trimmed().toStdString();
}

Locale LocaleFromQt(const QLocale& qlocale, const Settings* overrides) {
  Locale locale;
  if (qlocale.language() == QLocale::C) {
    // The C locale spells the month's name; plain numbers read better in a database.
    locale.short_date = "yyyy-MM-dd";
    locale.time_format = "HH:mm:ss";
  } else {
    locale.short_date = WindowsDatePattern(qlocale.dateFormat(QLocale::ShortFormat));
    locale.time_format = WindowsTimePattern(qlocale.timeFormat(QLocale::LongFormat));
  }
  if (overrides) {
    // A pattern the formatter cannot read is ignored rather than showing dates without parts.
    if (auto d = overrides->read("DateFormat"); d && DatePatternProblem(*d).empty())
      locale.short_date = *d;
    if (auto t = overrides->read("TimeFormat"); t && TimePatternProblem(*t).empty())
      locale.time_format = *t;
  }
  locale.date_separator = SeparatorOf(locale.short_date, "/");
  locale.time_separator = SeparatorOf(locale.time_format, ":");
  locale.am = qlocale.amText().toStdString();
  locale.pm = qlocale.pmText().toStdString();
  return locale;
}

FormatOptions SystemFormatOptions(const Settings* overrides) {
  FormatOptions options;
  options.locale = LocaleFromQt(QLocale::system(), overrides);
  options.time_code = options.locale.time_format.find("tt") != std::string::npos ? 1 : 2;
  if (options.locale.time_separator == ".") options.time_code += 3;
  options.decimal_comma = QLocale::system().decimalPoint() == ",";
  return options;
}

}  // namespace qv
