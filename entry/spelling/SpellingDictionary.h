#pragma once

#include <QChar>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace quillo {

class DictionaryEncoding;
class WordList;

// One hunspell dictionary, in whatever encoding its files are. Can be opened on any thread and used on one at a time.
class SpellingDictionary {
 public:
  struct Files {
    QString language;  // as the files are named: "en_US"
    QString affixes;   // NAME.aff
    QString words;     // NAME.dic
  };

  // Where dictionaries are installed, first below `userData`, the user's own directory for data.
  [[nodiscard]] static QStringList standardDirectories(const QString& userData);
  // The dictionary of the first of `languages` ("de-AT", "de_AT" or "de") that has one: of the same territory, else of
  // the language alone, else of any territory. With none of them, American English. Nothing where that is missing too.
  [[nodiscard]] static std::optional<Files> find(const QStringList& languages, const QStringList& directories);

  // Null when the files cannot be used. The first call loads the dictionary library.
  [[nodiscard]] static std::unique_ptr<SpellingDictionary> open(const Files& files);
  ~SpellingDictionary();

  [[nodiscard]] const QString& language() const { return m_language; }
  // The script that the language is written in; Script_Common where that is not known.
  [[nodiscard]] QChar::Script script() const { return m_script; }
  // The lower-case letters that a slip may put in place of another.
  [[nodiscard]] const QString& alphabet() const { return m_alphabet; }

  // Words with characters that the dictionary's encoding lacks are none of its words.
  [[nodiscard]] bool contains(const QString& word) const;
  // Best first. May take a tenth of a second.
  [[nodiscard]] QStringList suggestions(const QString& word) const;

 private:
  SpellingDictionary();

  QString m_language;
  QChar::Script m_script{QChar::Script_Common};
  QString m_alphabet;
  std::unique_ptr<DictionaryEncoding> m_encoding;
  std::unique_ptr<WordList> m_words;
};

}  // namespace quillo
