#pragma once

#include <QByteArray>
#include <QString>

#include <yaml-cpp/yaml.h>

#include <functional>
#include <optional>

namespace quillo {

// A value that is of no use, with its place and the end of a sentence. To be thrown within readYaml(), which catches
// it.
struct UnusableYaml {
  YAML::Mark mark;
  QString reason;
};

// Why a piece of YAML cannot be taken: its line, from 1, and a sentence's end.
struct YamlFault {
  int line{0};
  QString reason;
  bool isSyntax{true};  // otherwise it was thrown by `read`
};

// Calls `read` with the first document of `utf8`. Nothing, where all went well: the library's exceptions, and those of
// `read`, end here. Deep nesting is refused by the library; whoever follows nodes counts them, since an alias makes one
// node stand in very many places.
[[nodiscard]] std::optional<YamlFault> readYaml(const QByteArray& utf8,
                                                const std::function<void(const YAML::Node& document)>& read);

// The text of a scalar, or an empty one.
[[nodiscard]] QString yamlTextOf(const YAML::Node& node);

}  // namespace quillo
