#include "exchange/YamlText.h"

#include <QStringList>

#include <algorithm>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Letters first, then letters, digits and a few signs that mean nothing; and none of the words that stand for a value.
bool isPlain(const QString& text) {
  static const QStringList values{u"true"_s, u"false"_s, u"null"_s, u"yes"_s, u"no"_s,
                                  u"on"_s,   u"off"_s,   u"y"_s,    u"n"_s};
  const auto isPlainSign = [](QChar c) {
    return c.unicode() < 0x80 && (c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u'/' || c == u'+');
  };
  return !text.isEmpty() && text.front().isLetter() && std::all_of(text.begin(), text.end(), isPlainSign) &&
         !values.contains(text, Qt::CaseInsensitive);
}

// What YAML does not let stand in its text, and what breaks a line for some readers.
bool needsEscape(QChar c) {
  const char16_t unit = c.unicode();
  return unit < 0x20 || (unit >= 0x7F && unit <= 0xA0) || unit == 0x2028 || unit == 0x2029 || unit == 0xFEFF ||
         unit >= 0xFFFE;
}

}  // namespace

QString yamlText(const QString& text) {
  if (isPlain(text)) return text;
  QString quoted(u'"');
  for (const QChar c : text) {
    if (c == u'"' || c == u'\\')
      quoted += u'\\' + QString(c);
    else if (c == u'\n')
      quoted += u"\\n"_s;
    else if (needsEscape(c))
      quoted += u"\\u%1"_s.arg(c.unicode(), 4, 16, QChar(u'0'));
    else
      quoted += c;
  }
  return quoted + u'"';
}

}  // namespace quillo
