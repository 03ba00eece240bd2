#include "exchange/YamlReading.h"

#include <algorithm>
#include <exception>

namespace quillo {

using namespace Qt::StringLiterals;

std::optional<YamlFault> readYaml(const QByteArray& utf8, const std::function<void(const YAML::Node& document)>& read) {
  try {
    const YAML::Node document = YAML::Load(utf8.toStdString());
    read(document);
    return std::nullopt;
  } catch (const UnusableYaml& unusable) {
    return YamlFault{unusable.mark.line + 1, unusable.reason, false};
  } catch (const YAML::Exception& error) {
    // Some come without a place.
    return YamlFault{std::max(error.mark.line, -1) + 1, QString::fromStdString(error.msg)};
  } catch (const std::exception& error) {
    return YamlFault{0, QString::fromLocal8Bit(error.what())};
  }
}

// A mark of the byte order at its beginning is a part of it, which the conversion takes out.
QString yamlTextOf(const YAML::Node& node) {
  return node.IsScalar() ? QString::fromStdString('.' + node.Scalar()).mid(1) : QString();
}

}  // namespace quillo
