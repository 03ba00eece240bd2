// The half of the spelling that needs the dictionary library; a module that SpellingDictionary loads.

#include "entry/spelling/WordList.h"

#include <QtGlobal>

#include <exception>
#include <hunspell/hunspell.hxx>

namespace quillo {

namespace {

class HunspellWordList final : public WordList {
 public:
  HunspellWordList(const char* affixes, const char* words) : m_hunspell(std::make_unique<Hunspell>(affixes, words)) {}

  [[nodiscard]] std::string encoding() const override { return m_hunspell->get_dict_encoding(); }

  [[nodiscard]] bool contains(const std::string& word) const override {
    try {
      return m_hunspell->spell(word);
    } catch (const std::exception&) {
      return false;
    }
  }

  [[nodiscard]] std::vector<std::string> suggestions(const std::string& word) const override {
    try {
      return m_hunspell->suggest(word);
    } catch (const std::exception&) {
      return {};
    }
  }

 private:
  // Its look-ups are not const.
  std::unique_ptr<Hunspell> m_hunspell;
};

}  // namespace

extern "C" Q_DECL_EXPORT void quilloOpenWordList(const char* affixes, const char* words,
                                                 std::unique_ptr<WordList>& list) {
  try {
    list = std::make_unique<HunspellWordList>(affixes, words);
  } catch (const std::exception&) {
    list.reset();
  }
}

}  // namespace quillo
