#include "qlcore/index/JournalQuestion.h"

#include "qlcore/index/QuestionDates.h"
#include "qlcore/index/SearchWords.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Longer ones come from a slip of the clipboard, and would take long to answer.
constexpr qsizetype longestQuestion = 2000;
constexpr qsizetype mostTerms = 60;

// A piece of what was typed: [-][key:]value, where the value may be in quotes.
struct Term {
  QString key;  // in lower case, without the colon; "#" for a tag written with its sign
  QString value;
  bool isExcluded{false};
  bool isQuoted{false};
};

bool isQuote(QChar c) {
  return c == u'"' || c == u'“' || c == u'”' || c == u'„' || c == u'«' || c == u'»';
}

bool isKey(QStringView word) {
  static constexpr std::array keys{QStringView(u"tag"), QStringView(u"place"), QStringView(u"on"),
                                   QStringView(u"since"), QStringView(u"before")};
  return std::any_of(keys.begin(), keys.end(),
                     [&](QStringView key) { return word.compare(key, Qt::CaseInsensitive) == 0; });
}

// Parts what was typed into terms.
class Terms {
 public:
  explicit Terms(const QString& typed) : m_typed(typed) {}

  QList<Term> all() {
    QList<Term> terms;
    while (skipSpaces()) terms << term();
    return terms;
  }

 private:
  [[nodiscard]] bool isAtEnd() const { return m_at >= m_typed.size(); }
  bool skipSpaces() {
    while (!isAtEnd() && m_typed[m_at].isSpace()) ++m_at;
    return !isAtEnd();
  }

  Term term() {
    Term term;
    if (m_typed[m_at] == u'-') {
      term.isExcluded = true;
      ++m_at;
    }
    if (!isAtEnd() && m_typed[m_at] == u'#') {
      term.key = u"#"_s;
      ++m_at;
    } else {
      readKey(term);
    }
    readValue(term);
    return term;
  }

  void readKey(Term& term) {
    qsizetype end = m_at;
    while (end < m_typed.size() && m_typed[end].isLetter()) ++end;
    const QStringView word = QStringView(m_typed).sliced(m_at, end - m_at);
    if (end >= m_typed.size() || m_typed[end] != u':' || !isKey(word)) return;
    term.key = word.toString().toLower();
    m_at = end + 1;
  }

  // A quotation that is not closed yet goes on to the end.
  void readValue(Term& term) {
    term.isQuoted = !isAtEnd() && isQuote(m_typed[m_at]);
    if (term.isQuoted) ++m_at;
    const qsizetype start = m_at;
    while (!isAtEnd() && (term.isQuoted ? !isQuote(m_typed[m_at]) : !m_typed[m_at].isSpace())) {
      // A quotation may begin right behind a word.
      if (!term.isQuoted && isQuote(m_typed[m_at])) break;
      ++m_at;
    }
    term.value = m_typed.sliced(start, m_at - start);
    if (term.isQuoted && !isAtEnd()) ++m_at;
  }

  const QString& m_typed;
  qsizetype m_at{0};
};

bool hasWords(const QString& text) {
  return SearchWords(text).next();
}

// Makes the question out of the terms.
class Reading {
 public:
  Reading(QList<Term> terms, QDate today) : m_terms(std::move(terms)), m_today(today) {}

  // False, with the reason in problem(), where they make no sense.
  bool run() {
    for (m_at = 0; m_at < m_terms.size(); ++m_at)
      if (!read(m_terms[m_at])) return false;
    if (m_question.firstDay && m_question.lastDay && *m_question.firstDay > *m_question.lastDay)
      return fails(u"There is no day on or after %1 and on or before %2."_s.arg(
          m_question.firstDay->toString(Qt::ISODate), m_question.lastDay->toString(Qt::ISODate)));
    if (!m_terms.isEmpty() && m_question == JournalQuestion())
      return fails(u"A word with at least one letter or digit is needed to search for."_s);
    if (m_lastWord >= 0) m_question.phrases[m_lastWord].isPrefix = mayGoOn(m_question.phrases[m_lastWord].text);
    return true;
  }
  [[nodiscard]] const JournalQuestion& question() const { return m_question; }
  [[nodiscard]] const QString& problem() const { return m_problem; }

 private:
  bool fails(const QString& problem) {
    m_problem = problem;
    return false;
  }

  // A last word of one letter after others ("don't") is whole: too much begins with it.
  static bool mayGoOn(const QString& text) {
    SearchWords words(text);
    int count = 0;
    qsizetype lastSize = 0;
    bool isCharacter = false;
    while (words.next()) {
      ++count;
      lastSize = words.folded().size();
      isCharacter = words.isCharacter();
    }
    return !isCharacter && (count == 1 || lastSize > 1);
  }

  bool read(const Term& term) {
    if (term.key.isEmpty()) return readWord(term);
    if (term.key == u"#" || term.key == u"tag") return readTag(term);
    if (term.key == u"place") return readPlace(term);
    return readDate(term);
  }

  bool readWord(const Term& term) {
    // Signs alone ask for nothing.
    if (!hasWords(term.value)) return true;
    if (!term.isExcluded && !term.isQuoted) m_lastWord = m_question.phrases.size();
    m_question.phrases << JournalQuestion::Phrase{term.value, false, term.isExcluded};
    return true;
  }

  bool readTag(const Term& term) {
    const QString name = (term.value.startsWith(u'#') ? term.value.sliced(1) : term.value).trimmed();
    if (name.isEmpty() && term.key == u"#") return true;
    if (name.isEmpty()) return fails(u"The name of a tag is missing after \"tag:\"."_s);
    m_question.tags << JournalQuestion::Name{name, term.isExcluded};
    return true;
  }

  bool readPlace(const Term& term) {
    if (!hasWords(term.value)) return fails(u"The name of a place is missing after \"place:\"."_s);
    m_question.places << JournalQuestion::Name{term.value.trimmed(), term.isExcluded};
    return true;
  }

  // A date may be of several words that are not in quotes: as many are taken as make one.
  QString dateWords(const Term& term, std::optional<DaySpan>& days) {
    constexpr qsizetype mostWords = 3;
    QString words = term.value;
    QString longest = words;
    days = daysMeant(words, m_today);
    const qsizetype first = m_at;
    for (qsizetype i = 1; !term.isQuoted && i < mostWords && first + i < m_terms.size(); ++i) {
      const Term& next = m_terms[first + i];
      if (!next.key.isEmpty() || next.isQuoted || next.isExcluded) break;
      words += u' ' + next.value;
      const auto more = daysMeant(words, m_today);
      if (!more && !(i == 1 && words.compare(u"this day"_s, Qt::CaseInsensitive) == 0)) continue;
      days = more;
      longest = words;
      m_at = first + i;
    }
    return longest;
  }

  bool readDate(const Term& term) {
    if (term.value.trimmed().isEmpty())
      return fails(
          u"A date is missing after \"%1:\", such as 2025-03-10, 2025-03, yesterday or last-tuesday."_s.arg(term.key));
    if (term.isExcluded)
      return fails(u"\"%1:\" cannot be excluded with a dash; use \"since:\" or \"before:\" instead."_s.arg(term.key));
    std::optional<DaySpan> days;
    QString words = dateWords(term, days).toLower();
    words.replace(u'-', u' ').replace(u'_', u' ');
    if (term.key == u"on" && words.simplified() == u"this day") {
      m_question.anniversary = JournalQuestion::Anniversary{m_today};
      return true;
    }
    if (!days)
      return fails(
          u"\"%1\" is no date; write one as 2025-03-10, 2025-03, yesterday or last-tuesday."_s.arg(term.value));
    if (term.key != u"before") takeFirstDay(days->first);
    if (term.key == u"before") takeLastDay(days->first.addDays(-1));
    if (term.key == u"on") takeLastDay(days->last);
    return true;
  }

  void takeFirstDay(QDate day) { m_question.firstDay = std::max(m_question.firstDay.value_or(day), day); }
  void takeLastDay(QDate day) { m_question.lastDay = std::min(m_question.lastDay.value_or(day), day); }

  QList<Term> m_terms;
  QDate m_today;
  qsizetype m_at{0};
  qsizetype m_lastWord{-1};
  JournalQuestion m_question;
  QString m_problem;
};

}  // namespace

std::optional<JournalQuestion> JournalQuestion::parse(const QString& typed, QDate today, QString* problem) {
  const auto failed = [problem](const QString& reason) {
    if (problem) *problem = reason;
    return std::nullopt;
  };
  if (typed.size() > longestQuestion) return failed(u"The question is too long; a few words are enough."_s);
  QList<Term> terms = Terms(typed).all();
  if (terms.size() > mostTerms) return failed(u"These are too many words to search for at once."_s);
  Reading reading(std::move(terms), today);
  if (!reading.run()) return failed(reading.problem());
  return reading.question();
}

}  // namespace quillo
