#include "entry/spelling/SpellChecker.h"

#include "entry/spelling/SpellingDictionary.h"
#include "entry/spelling/SpellingWords.h"
#include "foundation/FileContents.h"
#include "foundation/Log.h"
#include "foundation/UserDirectories.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <system_error>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestWordChecked = 64;
constexpr qsizetype longestWordCorrected = 24;
constexpr qsizetype shortestWordCorrected = 3;
constexpr qsizetype shortestWordCorrectedByEdit = 5;
// A long text has a few thousand different words.
constexpr qsizetype mostWordsRemembered = 20000;

QSet<QString> wordsOfFile(const QString& path) {
  QSet<QString> words;
  const auto bytes = contentsOfFile(path);
  if (!bytes) return words;
  for (const QByteArray& line : bytes->split('\n')) {
    const QString word = QString::fromUtf8(line).trimmed();
    if (!word.isEmpty() && word.size() <= longestWordChecked) words.insert(word);
  }
  return words;
}

bool isCapitalised(const QString& word) {
  return word.front().isUpper() && word.sliced(1) == word.sliced(1).toLower();
}

bool hasLetterOfAnotherScript(const QString& word, QChar::Script script) {
  if (script == QChar::Script_Common) return false;
  for (const char32_t c : word.toUcs4())
    if (QChar::isLetter(c) && QChar::script(c) != script) return true;
  return false;
}

}  // namespace

SpellChecker::Sources SpellChecker::standardSources(const UserDirectories& user) {
  return {.languages = QLocale::system().uiLanguages(),
          .directories = SpellingDictionary::standardDirectories(user.data),
          .learnedWords = user.data + u"/quillo/LearnedWords.txt"_s};
}

SpellChecker::SpellChecker(Sources sources, QObject* parent) : QObject(parent), m_sources(std::move(sources)) {}

SpellChecker::~SpellChecker() = default;

SpellChecker::Loaded SpellChecker::loaded(const Sources& sources) {
  Loaded result;
  if (const auto files = SpellingDictionary::find(sources.languages, sources.directories))
    result.dictionary = SpellingDictionary::open(*files);
  result.learned = wordsOfFile(sources.learnedWords);
  return result;
}

void SpellChecker::load() {
  if (m_state != State::NotLoaded) return;
  m_state = State::Loading;
  try {
    m_loading = std::async(std::launch::async, [this, sources = m_sources] {
      Loaded result = loaded(sources);
      QMetaObject::invokeMethod(this, &SpellChecker::didLoad, Qt::QueuedConnection);
      return result;
    });
  } catch (const std::system_error&) {
    m_state = State::NoDictionary;
    QLLogInfo(u"Spelling is not checked: no thread to read a dictionary on"_s);
  }
}

void SpellChecker::unload() {
  if (m_state != State::Ready) return;
  m_state = State::NotLoaded;
  m_dictionary.reset();
  m_known = {};
}

void SpellChecker::didLoad() {
  Loaded result = m_loading.get();
  m_dictionary = std::move(result.dictionary);
  m_learned.unite(result.learned);
  m_state = m_dictionary ? State::Ready : State::NoDictionary;
  if (!m_dictionary)
    QLLogInfo(u"Spelling is not checked: no dictionary for %1 in %2"_s.arg(m_sources.languages.join(u", "_s),
                                                                           m_sources.directories.join(u", "_s)));
  Q_EMIT vocabularyDidChange();
}

bool SpellChecker::isTaught(const QString& word) const {
  const auto knows = [this](const QString& form) { return m_learned.contains(form) || m_ignored.contains(form); };
  return knows(word) || knows(word.toLower()) || (word.endsWith("'s"_L1) && knows(word.chopped(2)));
}

bool SpellChecker::isInDictionary(const QString& word) {
  const auto found = m_known.constFind(word);
  if (found != m_known.cend()) return *found;
  if (m_known.size() >= mostWordsRemembered) m_known.clear();
  const bool known = m_dictionary->contains(word);
  m_known.insert(word, known);
  return known;
}

bool SpellChecker::isMisspelled(QStringView word) {
  if (m_state != State::Ready || word.size() > longestWordChecked) return false;
  ++m_lookUpCount;
  const QString form = dictionaryForm(word);
  if (isInDictionary(form) || isTaught(form)) return false;
  return !hasLetterOfAnotherScript(form, m_dictionary->script());
}

QStringList SpellChecker::suggestions(QStringView word, qsizetype atMost) const {
  if (m_state != State::Ready || word.size() > longestWordChecked) return {};
  return m_dictionary->suggestions(dictionaryForm(word)).mid(0, atMost);
}

QStringList SpellChecker::wordsByOneSwap(const QString& word) {
  QStringList words;
  QString candidate = word;
  for (qsizetype i = 1; i < word.size(); ++i) {
    if (word[i - 1] == word[i] || word[i - 1].isSurrogate() || word[i].isSurrogate()) continue;
    std::swap(candidate[i - 1], candidate[i]);
    if (m_dictionary->contains(candidate)) words << candidate;
    std::swap(candidate[i - 1], candidate[i]);
  }
  return words;
}

// At most 2 * 24 * 64 look-ups of some microseconds; a few hundred for usual words.
QStringList SpellChecker::wordsByOneEdit(const QString& word) {
  QStringList words;
  const auto consider = [&](const QString& candidate) {
    if (!words.contains(candidate) && m_dictionary->contains(candidate)) words << candidate;
  };
  const QString letters = m_dictionary->alphabet() + u'\'';
  for (qsizetype i = 0; i <= word.size(); ++i) {
    if (i < word.size()) consider(word.first(i) + word.sliced(i + 1));
    for (const QChar letter : letters) {
      consider(word.first(i) + letter + word.sliced(i));
      if (i < word.size() && word[i] != letter) consider(word.first(i) + letter + word.sliced(i + 1));
    }
  }
  return words;
}

std::optional<QString> SpellChecker::confidentCorrection(QStringView word) {
  if (word.size() < shortestWordCorrected || word.size() > longestWordCorrected || !isMisspelled(word))
    return std::nullopt;
  const QString form = dictionaryForm(word);
  const QString lower = form.toLower();
  const bool capitalised = isCapitalised(form);
  if (form != lower && !capitalised) return std::nullopt;
  QStringList candidates = wordsByOneSwap(lower);
  if (candidates.isEmpty() && !capitalised && form.size() >= shortestWordCorrectedByEdit)
    candidates = wordsByOneEdit(lower);
  if (candidates.size() != 1) return std::nullopt;
  QString& correction = candidates.front();
  if (capitalised) correction[0] = correction[0].toUpper();
  return correction;
}

void SpellChecker::ignoreSpelling(QStringView word) {
  m_ignored.insert(dictionaryForm(word));
  Q_EMIT vocabularyDidChange();
}

void SpellChecker::learnSpelling(QStringView word) {
  const QString form = dictionaryForm(word);
  // What another process has taken off the list is gone here, too, since it told of that.
  const QSet<QString> words = wordsOfFile(m_sources.learnedWords) + m_learned + QSet<QString>{form};
  Error error;
  if (!writeLearnedWords(words, &error))
    QLLogInfo(u"Failed to write the learned words - %1"_s.arg(error.description()));
  m_learned = words;
  Q_EMIT vocabularyDidChange();
}

QStringList SpellChecker::learnedWords() const {
  const QSet<QString> words = wordsOfFile(m_sources.learnedWords);
  QStringList sorted(words.begin(), words.end());
  sorted.sort();
  return sorted;
}

bool SpellChecker::forgetSpelling(QStringView word, Error* error) {
  const QString form = dictionaryForm(word);
  QSet<QString> words = wordsOfFile(m_sources.learnedWords);
  words.remove(form);
  if (!writeLearnedWords(words, error)) return false;
  m_ignored.remove(form);
  m_learned = words;
  Q_EMIT vocabularyDidChange();
  return true;
}

void SpellChecker::learnedWordsDidChange() {
  const QSet<QString> words = wordsOfFile(m_sources.learnedWords);
  if (words == m_learned) return;
  m_learned = words;
  Q_EMIT vocabularyDidChange();
}

bool SpellChecker::writeLearnedWords(const QSet<QString>& words, Error* error) {
  QStringList sorted(words.begin(), words.end());
  sorted.sort();
  const QString text = sorted.isEmpty() ? QString() : sorted.join(u'\n') + u'\n';
  QDir().mkpath(QFileInfo(m_sources.learnedWords).path());
  return writeFileAtomically(m_sources.learnedWords, text.toUtf8(), error);
}

std::optional<SpellingDictionary::Files> SpellChecker::dictionaryFiles() const {
  return SpellingDictionary::find(m_sources.languages, m_sources.directories);
}

}  // namespace quillo
