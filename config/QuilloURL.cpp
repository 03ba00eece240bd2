#include "config/QuilloURL.h"

#include <QUrlQuery>

namespace quillo {

using namespace Qt::StringLiterals;

std::optional<QuilloRequest> requestOfURL(const QUrl& url) {
  if (url.scheme() != u"quillo" || (!url.path().isEmpty() && url.path() != u"/")) return std::nullopt;
  // The command is what stands where others have the host.
  const QString command = url.host();
  using Kind = QuilloRequest::Kind;
  if (command == u"open") return QuilloRequest{Kind::Open, {}};
  if (command == u"post") return QuilloRequest{Kind::Post, {}};
  if (command == u"preferences") return QuilloRequest{Kind::Preferences, {}};
  if (command == u"setup") return QuilloRequest{Kind::SetUp, {}};
  if (command == u"updatebookmarks") return QuilloRequest{Kind::UpdateBookmarks, {}};
  if (command == u"edit")
    return QuilloRequest{Kind::Edit, QUrlQuery(url).queryItemValue(u"entryId"_s, QUrl::FullyDecoded)};
  return std::nullopt;
}

}  // namespace quillo
