#include "entry/spelling/SpellingDictionary.h"

#include "entry/spelling/WordList.h"
#include "foundation/LoadableModule.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <unicode/ucnv.h>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

// Longer than any word; the library's own tables end at about a hundred characters.
constexpr qsizetype longestWord = 80;
constexpr qsizetype largestAlphabet = 64;

// How the dictionary formats call some encodings, and how the converter does.
QByteArray converterName(const std::string& dictionaryName) {
  QByteArray name = QByteArray::fromStdString(dictionaryName).trimmed();
  if (name.startsWith("microsoft-")) return name.mid(10);
  if (name.startsWith("TIS620")) return "TIS-620";
  return name.isEmpty() ? QByteArray("ISO-8859-1") : name;
}

QChar::Script scriptOfLanguage(const QString& language) {
  switch (QLocale(language).script()) {
    case QLocale::LatinScript:
      return QChar::Script_Latin;
    case QLocale::CyrillicScript:
      return QChar::Script_Cyrillic;
    case QLocale::GreekScript:
      return QChar::Script_Greek;
    case QLocale::HebrewScript:
      return QChar::Script_Hebrew;
    case QLocale::ArabicScript:
      return QChar::Script_Arabic;
    case QLocale::ArmenianScript:
      return QChar::Script_Armenian;
    case QLocale::GeorgianScript:
      return QChar::Script_Georgian;
    case QLocale::DevanagariScript:
      return QChar::Script_Devanagari;
    case QLocale::KoreanScript:
      return QChar::Script_Hangul;
    default:
      return QChar::Script_Common;
  }
}

std::optional<SpellingDictionary::Files> filesNamed(const QString& name, const QStringList& directories) {
  for (const QString& directory : directories) {
    const QString base = directory + u'/' + name;
    // Nothing but files: opening a pipe would wait for ever.
    if (QFileInfo(base + u".aff"_s).isFile() && QFileInfo(base + u".dic"_s).isFile())
      return SpellingDictionary::Files{name, base + u".aff"_s, base + u".dic"_s};
  }
  return std::nullopt;
}

std::optional<SpellingDictionary::Files> filesOfAnyTerritory(const QString& language, const QStringList& directories) {
  for (const QString& directory : directories)
    for (const QString& found : QDir(directory).entryList({language + u"_*.dic"_s}, QDir::Files, QDir::Name))
      if (const auto files = filesNamed(found.chopped(4), {directory})) return files;
  return std::nullopt;
}

}  // namespace

// Between UTF-16 and the bytes of a dictionary.
class DictionaryEncoding {
 public:
  static std::unique_ptr<DictionaryEncoding> named(const QByteArray& name) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(name.constData(), &status);
    if (U_FAILURE(status)) return nullptr;
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    return std::unique_ptr<DictionaryEncoding>(new DictionaryEncoding(converter));
  }
  ~DictionaryEncoding() { ucnv_close(m_converter); }
  DictionaryEncoding(const DictionaryEncoding&) = delete;
  DictionaryEncoding& operator=(const DictionaryEncoding&) = delete;

  // Nothing for a text that cannot be written in this encoding.
  [[nodiscard]] std::optional<std::string> bytes(const QString& text) const {
    // Four bytes a unit are enough for every encoding of a dictionary.
    std::string result(static_cast<size_t>(text.size()) * 4 + 4, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const int32_t size =
        ucnv_fromUChars(m_converter, result.data(), static_cast<int32_t>(result.size()),
                        reinterpret_cast<const UChar*>(text.utf16()), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    result.resize(static_cast<size_t>(size));
    return result;
  }

  [[nodiscard]] QString text(const char* bytes, qsizetype size) const {
    QString result(size * 2, Qt::Uninitialized);
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length =
        ucnv_toUChars(m_converter, reinterpret_cast<UChar*>(result.data()), static_cast<int32_t>(result.size()), bytes,
                      static_cast<int32_t>(size), &status);
    if (U_FAILURE(status)) return {};
    result.resize(length);
    return result;
  }

 private:
  explicit DictionaryEncoding(UConverter* converter) : m_converter(converter) {}
  UConverter* m_converter;
};

// The letters of the affix file's TRY line; the library itself uses them the same way but does not tell them.
static QString alphabetOfAffixFile(const QString& path, const DictionaryEncoding& encoding) {
  QFile file(path);
  QString alphabet;
  if (file.open(QIODevice::ReadOnly)) {
    // Every line is read at most once; one that is too long is read in pieces.
    while (!file.atEnd()) {
      const QByteArray line = file.readLine(64 * 1024).trimmed();
      if (!line.startsWith("TRY ")) continue;
      for (const QChar c : encoding.text(line.constData() + 4, line.size() - 4))
        if (c.isLetter() && c.isLower() && !alphabet.contains(c) && alphabet.size() < largestAlphabet) alphabet += c;
      break;
    }
  }
  return alphabet.isEmpty() ? u"abcdefghijklmnopqrstuvwxyz"_s : alphabet;
}

QStringList SpellingDictionary::standardDirectories(const QString& userData) {
  QStringList bases{userData};
  const QStringList shared = qEnvironmentVariable("XDG_DATA_DIRS").split(u':', Qt::SkipEmptyParts);
  for (const QString& directory : shared)
    if (directory.startsWith(u'/')) bases << directory;
  bases << u"/usr/local/share"_s << u"/usr/share"_s;
  bases.removeDuplicates();
  QStringList directories;
  for (const QString& base : bases)
    for (const auto folder : {"/hunspell"_L1, "/myspell/dicts"_L1, "/myspell"_L1}) directories << base + folder;
  return directories;
}

std::optional<SpellingDictionary::Files> SpellingDictionary::find(const QStringList& languages,
                                                                  const QStringList& directories) {
  for (QString wanted : languages) {
    wanted.replace(u'-', u'_');
    const QString language = wanted.section(u'_', 0, 0);
    // Also keeps separators of paths out.
    if (language.size() < 2 || language == "C"_L1 || wanted.contains(u'/')) continue;
    const QString usual = QLocale(wanted).name();
    for (const QString& name : {wanted, usual, language})
      if (const auto files = filesNamed(name, directories)) return files;
    if (const auto files = filesOfAnyTerritory(language, directories)) return files;
  }
  return filesNamed(u"en_US"_s, directories);
}

SpellingDictionary::SpellingDictionary() = default;
SpellingDictionary::~SpellingDictionary() = default;

std::unique_ptr<SpellingDictionary> SpellingDictionary::open(const Files& files) {
  static LoadableModule module(u"quillo-spelling"_s);
  auto* const openWordList = module.function<OpenWordList>("quilloOpenWordList");
  if (!openWordList) return nullptr;
  std::unique_ptr<SpellingDictionary> dictionary(new SpellingDictionary);
  openWordList(QFile::encodeName(files.affixes).constData(), QFile::encodeName(files.words).constData(),
               dictionary->m_words);
  if (!dictionary->m_words) return nullptr;
  dictionary->m_encoding = DictionaryEncoding::named(converterName(dictionary->m_words->encoding()));
  if (!dictionary->m_encoding) return nullptr;
  dictionary->m_language = files.language;
  dictionary->m_script = scriptOfLanguage(files.language);
  dictionary->m_alphabet = alphabetOfAffixFile(files.affixes, *dictionary->m_encoding);
  return dictionary;
}

bool SpellingDictionary::contains(const QString& word) const {
  if (word.size() > longestWord) return false;
  const auto bytes = m_encoding->bytes(word);
  return bytes && m_words->contains(*bytes);
}

QStringList SpellingDictionary::suggestions(const QString& word) const {
  if (word.size() > longestWord) return {};
  const auto bytes = m_encoding->bytes(word);
  if (!bytes) return {};
  QStringList words;
  for (const std::string& suggestion : m_words->suggestions(*bytes)) {
    const QString text = m_encoding->text(suggestion.data(), static_cast<qsizetype>(suggestion.size()));
    if (!text.isEmpty()) words << text;
  }
  return words;
}

}  // namespace quillo
