#pragma once

#include <memory>
#include <string>
#include <vector>

namespace quillo {

// The words of a dictionary, in the bytes of its own encoding. Made in the module quillo-spelling, the only part of the
// program that has the dictionary library. Nothing throws.
class WordList {
 public:
  virtual ~WordList() = default;

  // As the affix file names it.
  [[nodiscard]] virtual std::string encoding() const = 0;
  [[nodiscard]] virtual bool contains(const std::string& word) const = 0;
  // Best first.
  [[nodiscard]] virtual std::vector<std::string> suggestions(const std::string& word) const = 0;
};

// The module's function "quilloOpenWordList". The paths are those of the .aff and the .dic file. Leaves `list` empty
// when they cannot be used.
using OpenWordList = void(const char* affixes, const char* words, std::unique_ptr<WordList>& list);

}  // namespace quillo
