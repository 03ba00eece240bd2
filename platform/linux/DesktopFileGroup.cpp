#include "platform/linux/DesktopFileGroup.h"

#include <algorithm>
#include <iterator>

namespace quillo {

namespace {

constexpr struct {
  char16_t code;
  char16_t meaning;
} escapes[] = {{u's', u' '}, {u'n', u'\n'}, {u't', u'\t'}, {u'r', u'\r'}, {u'\\', u'\\'}};

QString unescaped(QStringView value) {
  QString text;
  text.reserve(value.size());
  for (qsizetype i = 0; i < value.size(); ++i) {
    const QChar next = i + 1 < value.size() ? value[i + 1] : QChar();
    const auto* const found = std::find_if(std::begin(escapes), std::end(escapes),
                                           [next](const auto& escape) { return next == QChar(escape.code); });
    // Any other escape is one of the command line ("\"") or of a list ("\;"), for its own reader.
    if (value[i] != u'\\' || found == std::end(escapes)) {
      text += value[i];
    } else {
      text += QChar(found->meaning);
      ++i;
    }
  }
  return text;
}

bool isHeader(QStringView line, QStringView name) {
  return line.size() == name.size() + 2 && line.endsWith(u']') && line.mid(1, name.size()) == name;
}

}  // namespace

std::optional<DesktopFileGroup> DesktopFileGroup::read(QStringView text, QStringView name) {
  DesktopFileGroup group;
  bool isThere = false;
  bool inGroup = false;
  for (const auto rawLine : text.split(u'\n')) {
    const auto line = rawLine.trimmed();
    if (line.isEmpty() || line.startsWith(u'#')) continue;
    if (line.startsWith(u'[')) {
      inGroup = isHeader(line, name);
      isThere = isThere || inGroup;
      group.isWellFormed = group.isWellFormed && isThere;
      continue;
    }
    const auto equals = line.indexOf(u'=');
    if (inGroup && equals > 0)
      group.values.insert(line.left(equals).trimmed().toString(), unescaped(line.mid(equals + 1).trimmed()));
    else if (inGroup || !isThere)
      group.isWellFormed = false;
  }
  return isThere ? std::optional(std::move(group)) : std::nullopt;
}

bool DesktopFileGroup::isTrue(const QString& key) const {
  return values.value(key) == u"true";
}

QStringList DesktopFileGroup::list(const QString& key) const {
  return values.value(key).split(u';', Qt::SkipEmptyParts);
}

QString DesktopFileGroup::escaped(const QString& value) {
  QString out;
  out.reserve(value.size());
  for (const QChar c : value) {
    const auto* const found = std::find_if(std::begin(escapes), std::end(escapes),
                                           [c](const auto& escape) { return c == QChar(escape.meaning); });
    // A space needs one at the start only, where it would be taken for layout.
    if (found == std::end(escapes) || (c == u' ' && !out.isEmpty()))
      out += c;
    else
      out.append(u'\\').append(QChar(found->code));
  }
  return out;
}

}  // namespace quillo
