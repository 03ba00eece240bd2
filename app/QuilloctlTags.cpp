#include "app/QuilloctlTags.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace quillo::QuilloctlTags {

using namespace Qt::StringLiterals;

QStringList arguments() {
  // More are offered to nobody: a tag that is rarer than these is as quickly typed.
  return {u"entry"_s, u"tags"_s, u"--json"_s, u"--limit"_s, u"3000"_s};
}

std::optional<QStringList> tagsOfAnswer(const QByteArray& answer) {
  const QJsonDocument document = QJsonDocument::fromJson(answer);
  if (!document.isArray()) return std::nullopt;
  QStringList tags;
  for (const QJsonValue& use : document.array())
    if (const QString tag = use[u"tag"_s].toString(); !tag.isEmpty()) tags << tag;
  return tags;
}

}  // namespace quillo::QuilloctlTags
