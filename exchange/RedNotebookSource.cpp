#include "exchange/RedNotebookSource.h"

#include "exchange/RedNotebookMarkup.h"
#include "exchange/SourceFiles.h"
#include "exchange/TextEntry.h"
#include "exchange/YamlReading.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// More than anybody writes in a month. The library takes some hundred bytes of memory for each one of a hostile file.
constexpr qsizetype largestMonth = qsizetype{2} * 1024 * 1024;
// Of categories and the words in them in one file, counted as often as an alias repeats them.
constexpr int mostWords = 10'000;

// A category's name as a tag of one word.
QString tagOf(const QString& name) {
  return name.simplified().replace(u' ', u'-');
}

// One day as its file has it.
class Day {
 public:
  // `words` counts those of the whole file.
  Day(const YAML::Node& day, int& words) : m_words(words) {
    if (!day.IsMap()) m_problem = u"the day has no text and no categories"_s;
    if (!day.IsMap()) return;
    for (const auto& part : day) {
      const QString name = yamlTextOf(part.first);
      if (name == u"text")
        m_text = markdownOfRedNotebook(yamlTextOf(part.second));
      else if (!addCategory(name, part.second))
        break;
    }
    while (!m_text.isEmpty() && m_text.back().isSpace()) m_text.chop(1);
  }

  // The end of a sentence, where it cannot be taken.
  [[nodiscard]] const QString& problem() const { return m_problem; }
  [[nodiscard]] QString text() const { return m_text.isEmpty() ? m_lists.mid(2) : m_text + m_lists; }
  // May have some of them twice.
  [[nodiscard]] const QStringList& tags() const { return m_tags; }

 private:
  bool countWord() {
    if (++m_words <= mostWords) return true;
    m_problem = u"there are too many words in categories"_s;
    return false;
  }

  bool addCategory(const QString& name, const YAML::Node& words) {
    if (!countWord()) return false;
    const bool isOfTags = name.compare(u"Tags"_s, Qt::CaseInsensitive) == 0;
    if (!isOfTags) m_tags << tagOf(name);
    QString list;
    const auto add = [&](const YAML::Node& one) {
      const QString told = yamlTextOf(one).simplified();
      if (isOfTags)
        m_tags << tagOf(told);
      else if (!told.isEmpty())
        list += u"\n- "_s + markdownOfRedNotebook(told);
      return countWord();
    };
    // Each stands as a key without a value.
    if (words.IsMap())
      for (const auto& one : words)
        if (!add(one.first)) return false;
    if (words.IsSequence())
      for (const auto& one : words)
        if (!add(one)) return false;
    if (words.IsScalar() && !add(words)) return false;
    if (!list.isEmpty()) m_lists += u"\n\n## "_s + name.simplified() + u'\n' + list;
    return true;
  }

  int& m_words;
  QString m_problem;
  QString m_text;
  QString m_lists;
  QStringList m_tags;
};

ImportItem itemOf(const YAML::Node& key, const YAML::Node& value, const QString& path, QDate month, int& words) {
  const ImportPlace place{path, key.Mark().line + 1};
  bool isNumber = false;
  const int number = yamlTextOf(key).toInt(&isNumber);
  const QDate date(month.year(), month.month(), isNumber ? number : 0);
  if (!date.isValid()) {
    const QString told = yamlTextOf(key).left(40).simplified();
    return ImportProblem{place, u"\"%1\" is no day of %2"_s.arg(told, month.toString(u"yyyy-MM"_s))};
  }
  const auto moment = zonedDate({date, std::nullopt, std::nullopt}, {});
  if (!moment) return ImportProblem{place, u"its date is outside the years 1 to 9999"_s};
  const Day day(value, words);
  if (!day.problem().isEmpty()) return ImportProblem{place, day.problem()};
  if (day.text().trimmed().isEmpty()) return ImportPassedBy{place, u"there is no text in it"_s};
  const QString folder = QFileInfo(path).canonicalPath();
  TextEntry entry{uuidOfPlace(folder + u"\nrednotebook "_s + date.toString(Qt::ISODate)),
                  day.text(),
                  *moment,
                  {},
                  std::nullopt,
                  std::nullopt};
  entry.addTags(day.tags());
  // There they are the tags, whatever is set here.
  entry.addHashtags();
  return ImportedEntry{place, entry.uuid, entry.fields(), false};
}

}  // namespace

std::optional<QDate> RedNotebookSource::monthOf(const QString& fileName) {
  static const QRegularExpression pattern(u"^(\\d{4})-(\\d{2})\\.txt$"_s);
  const auto match = pattern.match(fileName);
  const QDate month(match.captured(1).toInt(), match.captured(2).toInt(), 1);
  return month.isValid() ? std::optional(month) : std::nullopt;
}

bool RedNotebookSource::readMonth(const QByteArray& utf8, const QString& path, QDate month, const ImportTaker& take) {
  if (utf8.size() > largestMonth) return take(ImportProblem{{path, 0}, u"it is longer than 2 MiB"_s});
  bool isToGoOn = true;
  int words = 0;
  const auto fault = readYaml(utf8, [&](const YAML::Node& days) {
    if (days.IsNull()) return;
    if (!days.IsMap()) throw UnusableYaml{days.Mark(), u"it is no list of days"_s};
    for (const auto& day : days) {
      isToGoOn = take(itemOf(day.first, day.second, path, month, words));
      if (!isToGoOn) return;
    }
  });
  if (!fault) return isToGoOn;
  const QString reason = fault->isSyntax ? u"it cannot be read, "_s + fault->reason : fault->reason;
  return take(ImportProblem{{path, fault->line}, reason});
}

void RedNotebookSource::forEach(const ImportTaker& take) {
  const auto takeFile = [&](const QString& path) {
    const auto month = monthOf(QFileInfo(path).fileName());
    if (!month) return take(ImportProblem{{path, 0}, u"its name is no month, such as 2014-03.txt"_s});
    ImportProblem problem;
    const auto bytes = utf8OfFile(path, &problem);
    return bytes ? readMonth(*bytes, path, *month, take) : take(problem);
  };
  if (!QFileInfo(m_path).isDir()) {
    takeFile(m_path);
    return;
  }
  if (!QFileInfo(m_path).isReadable()) {
    take(ImportProblem{{m_path, 0}, u"the folder cannot be read"_s});
    return;
  }
  const QDir folder(m_path);
  for (const QString& name : folder.entryList({u"*.txt"_s}, QDir::Files, QDir::Name))
    if (monthOf(name) && !takeFile(folder.filePath(name))) return;
}

}  // namespace quillo
