// The journal's location: the methods of QuilloConfig that keep its path and its two bookmarks.

#include "config/Keys.h"
#include "config/QuilloConfig.h"
#include "foundation/Bookmark.h"
#include "foundation/Log.h"
#include "platform/Workspace.h"

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

std::optional<PropertyListValue> asValue(const std::optional<QByteArray>& data) {
  return data ? std::optional(PropertyListValue(*data)) : std::nullopt;
}

}  // namespace

std::optional<QUrl> QuilloConfig::configuredJournalFileURL() {
  PersistentPropertyList* list = groupProperties();
  return list ? list->URLForKey(Key::journalPackageURL) : std::nullopt;
}

void QuilloConfig::setConfiguredJournalFileURL(const std::optional<QUrl>& url) {
  stopAccessingSecurityScopedResources();
  if (PersistentPropertyList* list = groupProperties()) list->setURLForKey(url, Key::journalPackageURL);
  updateBookmarkDataForConfiguredJournalFile();
  updateSharedBookmarkDataForConfiguredJournalFile();
  startAccessingSecurityScopedResources();
}

std::optional<QUrl> QuilloConfig::resolveJournalFileBookmarkData() {
  const auto data = m_ownDefaults.dataForKey(Key::journalFileBookmarkData);
  if (!data) return std::nullopt;
  Error error;
  const auto resolved = Bookmark::resolve(*data, Bookmark::resolutionWithSecurityScope, &error);
  if (resolved && resolved->isStale) {
    QLLogInfo(u"Journal file bookmark is stale"_s);
    return std::nullopt;
  }
  if (!resolved) {
    QLLogInfo(u"Journal file bookmark read error - %1"_s.arg(error.description()));
    return std::nullopt;
  }
  return resolved->url;
}

void QuilloConfig::updateBookmarkDataForConfiguredJournalFile() {
  Error error;
  const auto data = Bookmark::bookmarkData(configuredJournalFileURL(), Bookmark::creationWithSecurityScope, &error);
  // Stored even when there is none: that removes the old one.
  m_ownDefaults.setObjectForKey(asValue(data), Key::journalFileBookmarkData);
  if (!data) QLLogInfo(u"Journal file bookmark create error - %1"_s.arg(error.description()));
}

void QuilloConfig::updateSharedBookmarkDataForConfiguredJournalFile() {
  Error error;
  const auto data = Bookmark::bookmarkData(configuredJournalFileURL(), Bookmark::plain, &error);
  setSharedValue(asValue(data), Key::journalFileSharedBookmarkData);
  if (!data) QLLogInfo(u"Journal file shared bookmark create error - %1"_s.arg(error.description()));
}

void QuilloConfig::startAccessingSecurityScopedResources() {
  static_cast<void>(resolveJournalFileBookmarkData());
}
void QuilloConfig::stopAccessingSecurityScopedResources() {
  static_cast<void>(resolveJournalFileBookmarkData());
}

bool QuilloConfig::promptMainAppToUpdateBookmarks() {
  return m_workspace && m_workspace->openURL(QUrl(u"quillo://updatebookmarks"_s));
}

}  // namespace quillo
