#pragma once

#include <CLI/CLI.hpp>

#include <span>
#include <string>

namespace quillo::ctl {

// What help says of the formats of a command, one a line.
template <typename Format>
[[nodiscard]] std::string listOfFormats(std::span<const Format> formats) {
  constexpr size_t width = 17;
  std::string list = "Formats:";
  for (const Format& format : formats) {
    std::string name = format.name;
    name.resize(width, ' ');
    list += "\n  " + name + format.description;
  }
  return list;
}

// A format by its name. The parser's own check does not tell of it in words.
template <typename Format>
[[nodiscard]] CLI::Validator isFormat(std::span<const Format> formats) {
  return CLI::Validator(
      [formats](const std::string& word) {
        std::string names;
        for (const Format& format : formats) {
          if (word == format.name) return std::string();
          names += (names.empty() ? "" : ", ") + std::string(format.name);
        }
        return "there is no format \"" + word + "\"; there are " + names;
      },
      "");
}

}  // namespace quillo::ctl
