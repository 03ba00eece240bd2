#include "exchange/FrontMatter.h"

#include "exchange/YamlReading.h"
#include "qlcore/QLJournalEntryFile.h"

#include <initializer_list>
#include <limits>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// In UTF-16 units; bounds what a reader of YAML is given.
constexpr qsizetype longestFrontMatter = qsizetype{64} * 1024;

// The first of these keys that has a value. Of a constant node, for the others add what they do not find.
YAML::Node valueOf(const YAML::Node& map, std::initializer_list<const char*> keys) {
  for (const char* key : keys)
    if (const YAML::Node value = map[key]; value.IsDefined() && !value.IsNull()) return value;
  return YAML::Node(YAML::NodeType::Null);
}

std::optional<double> numberOf(const YAML::Node& node) {
  bool isNumber = false;
  const double number = yamlTextOf(node).toDouble(&isNumber);
  return isNumber ? std::optional(number) : std::nullopt;
}

QString withoutHash(const QString& tag) {
  const QString trimmed = tag.trimmed();
  return trimmed.startsWith(u'#') ? trimmed.mid(1) : trimmed;
}

// A list, or one text with commas. Those of a file of ours are as they were; others' have spaces and signs around them.
QStringList tagsIn(const YAML::Node& node, bool isOurs) {
  QStringList tags;
  const auto add = [&](const QString& told) {
    const QString tag = isOurs ? told : withoutHash(told);
    if (!tag.isEmpty()) tags << tag;
  };
  if (node.IsSequence())
    for (const YAML::Node& tag : node) add(yamlTextOf(tag));
  else
    for (const QString& tag : yamlTextOf(node).split(u',')) add(tag.trimmed());
  return tags;
}

// Places without coordinates cannot be kept.
std::optional<QLLocation> locationIn(const YAML::Node& node) {
  if (!node.IsMap()) return std::nullopt;
  const YAML::Node north = valueOf(node, {"latitude", "lat"});
  const YAML::Node east = valueOf(node, {"longitude", "lon", "lng"});
  if (north.IsNull() || east.IsNull()) return std::nullopt;
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  const QLLocation location{numberOf(north).value_or(none), numberOf(east).value_or(none),
                            yamlTextOf(valueOf(node, {"name", "placeName"}))};
  if (!location.isValid()) throw UnusableYaml{north.Mark(), u"the location is not on this earth"_s};
  return location;
}

std::optional<QLWeather> weatherIn(const YAML::Node& node) {
  const YAML::Node degrees = node.IsMap() ? valueOf(node, {"temperature"}) : node;
  if (!node.IsMap() || degrees.IsNull()) return std::nullopt;
  const QLWeather weather{numberOf(degrees).value_or(std::numeric_limits<double>::quiet_NaN()),
                          yamlTextOf(valueOf(node, {"symbol"})), yamlTextOf(valueOf(node, {"text"})),
                          Date::fromISO8601(yamlTextOf(valueOf(node, {"date"}))),
                          yamlTextOf(valueOf(node, {"provider"}))};
  if (!weather.isValid()) throw UnusableYaml{degrees.Mark(), u"the temperature is none that air can have"_s};
  return weather;
}

FrontMatter frontMatterOf(const YAML::Node& map) {
  FrontMatter matter;
  if (map.IsNull()) return matter;
  if (!map.IsMap()) throw UnusableYaml{map.Mark(), u"the front matter is no list of keys and values"_s};
  matter.uuid = QLJournalEntryFile::canonicalUUID(yamlTextOf(valueOf(map, {"id", "uuid"})));
  if (const YAML::Node date = valueOf(map, {"date", "created"}); !date.IsNull()) {
    matter.moment = WrittenMoment::fromText(yamlTextOf(date));
    if (!matter.moment)
      throw UnusableYaml{date.Mark(), u"\"%1\" is no date; one is written as 2014-03-10T21:00:00+01:00"_s.arg(
                                          yamlTextOf(date).left(60))};
  }
  matter.timeZone = yamlTextOf(valueOf(map, {"timezone", "timeZone"}));
  matter.tags = tagsIn(valueOf(map, {"tags"}), matter.uuid.has_value());
  matter.location = locationIn(valueOf(map, {"location"}));
  matter.weather = weatherIn(valueOf(map, {"weather"}));
  matter.title = yamlTextOf(valueOf(map, {"title"})).simplified();
  return matter;
}

std::optional<FrontMatter> parsed(const QString& yaml, NoteFault* fault) {
  FrontMatter matter;
  auto reason = readYaml(yaml.toUtf8(), [&](const YAML::Node& map) { matter = frontMatterOf(map); });
  if (!reason) return matter;
  // Of the file: the opening line is its first.
  *fault = {reason->line + 1,
            reason->isSyntax ? u"the front matter cannot be read, "_s + reason->reason : reason->reason};
  return std::nullopt;
}

QStringView lineAt(const QString& text, qsizetype start) {
  const qsizetype end = text.indexOf(u'\n', start);
  return QStringView(text).mid(start, end < 0 ? -1 : end - start);
}

// Where the closing line begins, or -1. Lines are looked at as far as front matter may reach.
qsizetype closingLine(const QString& file, qsizetype from) {
  for (qsizetype start = from; start >= 0 && start < file.size() && start < longestFrontMatter;) {
    const QStringView line = lineAt(file, start);
    const bool isIndented = line.startsWith(u' ') || line.startsWith(u'\t');
    if (!isIndented && (line.trimmed() == u"---" || line.trimmed() == u"...")) return start;
    const qsizetype end = file.indexOf(u'\n', start);
    start = end < 0 ? -1 : end + 1;
  }
  return -1;
}

// Between one empty line and one line break, which are no part of it.
QString textBelow(const QString& file, qsizetype closing) {
  const qsizetype end = file.indexOf(u'\n', closing);
  if (end < 0) return {};
  QString text = file.mid(end + 1);
  if (text.startsWith(u'\n')) text.remove(0, 1);
  return text;
}

}  // namespace

std::optional<Note> readNote(QString file, NoteFault* fault) {
  if (file.startsWith(QChar::ByteOrderMark)) file.remove(0, 1);
  if (const qsizetype end = file.indexOf(u'\n'); end > 0 && file[end - 1] == u'\r') file.replace(u"\r\n"_s, u"\n"_s);
  Note note;
  const QStringView first = lineAt(file, 0);
  if (first.trimmed() == u"---" && first.startsWith(u'-')) {
    const qsizetype start = first.size() + 1;
    const qsizetype closing = closingLine(file, start);
    if (closing < 0) {
      *fault = {1, u"the front matter that begins here has no end, a line \"---\""_s};
      return std::nullopt;
    }
    note.frontMatter = parsed(file.mid(start, closing - start), fault);
    if (!note.frontMatter) return std::nullopt;
    file = textBelow(file, closing);
  }
  if (file.endsWith(u'\n')) file.chop(1);
  note.text = std::move(file);
  return note;
}

}  // namespace quillo
