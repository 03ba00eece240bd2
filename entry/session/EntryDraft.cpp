#include "entry/session/EntryDraft.h"

#include "foundation/Error.h"
#include "foundation/FileContents.h"
#include "foundation/Log.h"
#include "foundation/PropertyListSerialization.h"
#include "foundation/UserDirectories.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <utility>

namespace quillo {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

static constexpr auto writeDelay = 1500ms;

static const QString olderSuffix = u".older"_s;
static const QString textKey = u"text"_s;
static const QString entryKey = u"entry"_s;
static const QString beginKey = u"editBeginDate"_s;
static const QString creationKey = u"creationDate"_s;
static const QString zoneKey = u"timeZone"_s;
static const QString tagsKey = u"tags"_s;
static const QString locationKey = u"location"_s;
static const QString weatherKey = u"weather"_s;

EntryDraft::EntryDraft(QString path, QString formerPath)
    : m_path(std::move(path)), m_formerPath(std::move(formerPath)) {
  m_timer.setSingleShot(true);
  m_timer.setInterval(writeDelay);
  QObject::connect(&m_timer, &QTimer::timeout, [this] {
    const auto content = std::exchange(m_content, {});
    if (const auto now = content ? content() : std::nullopt) write(*now);
  });
}

QString EntryDraft::defaultPath() {
  return UserDirectories::current().state + u"/quillo/UnsavedEntry.plist"_s;
}

QString EntryDraft::defaultFormerPath() {
  return UserDirectories::current().caches + u"/quillo/UnsavedEntry.plist"_s;
}

void EntryDraft::moveHereOnce() {
  const QString older = m_path + olderSuffix;
  const QString former = std::exchange(m_formerPath, {});
  if (!former.isEmpty() && QFileInfo::exists(former)) {
    const QFileInfo here(m_path);
    const bool isNewer = here.exists() && here.lastModified() < QFileInfo(former).lastModified();
    QDir().mkpath(here.path());
    // One step each, none of which replaces a file; where one fails, both texts stay where they are.
    if (!isNewer || QFile::rename(m_path, older)) QFile::rename(former, here.exists() && !isNewer ? older : m_path);
  }
  if (!QFileInfo::exists(m_path)) QFile::rename(older, m_path);
}

bool EntryDraft::isLeftBehind() {
  if (m_isTaken) return false;
  moveHereOnce();
  return QFileInfo::exists(m_path);
}

std::optional<EntryDraft::Content> EntryDraft::takeLeftBehind() {
  const bool isThere = isLeftBehind();
  m_isTaken = true;
  if (!isThere) return std::nullopt;
  m_hasFile = true;
  Error error;
  const auto bytes = contentsOfFile(m_path, &error);
  const auto list = bytes ? PropertyListSerialization::propertyListWithData(*bytes, nullptr, &error) : std::nullopt;
  if (!list) {
    const QString aside = m_path + u".damaged"_s;
    QLLogWarn(u"The text that was not saved the last time cannot be read; it is kept as %1 - %2"_s.arg(
        aside, error.description()));
    QFile::remove(aside);
    QFile::rename(m_path, aside);
    return std::nullopt;
  }
  const PropertyListDictionary& fields = list->dictionary();
  QStringList tags;
  for (const PropertyListValue& tag : fields.value(tagsKey).array()) tags << tag.string();
  return Content{.text = fields.value(textKey).string(),
                 .entryIdentifier = fields.value(entryKey).string(),
                 .editBeginDate = fields.value(beginKey).date(),
                 .creationDate = fields.value(creationKey).date(),
                 .timeZone = fields.value(zoneKey).string(),
                 .tags = tags,
                 .location = QLLocation::fromPropertyList(fields.value(locationKey)),
                 .weather = QLWeather::fromPropertyList(fields.value(weatherKey)),
                 .writtenDate = Date::fromDateTime(QFileInfo(m_path).lastModified())};
}

void EntryDraft::writeSoon(std::function<std::optional<Content>()> content) {
  m_content = std::move(content);
  // Not started anew by every key, or a draft would have to wait for a pause in the typing.
  if (!m_timer.isActive()) m_timer.start();
}

void EntryDraft::write(const Content& content) {
  m_timer.stop();
  m_content = {};
  if (!std::exchange(m_isTaken, true)) {
    // Or a text that nobody has seen yet would be overwritten.
    moveHereOnce();
    QFile::rename(m_path, m_path + olderSuffix);
  }
  PropertyListDictionary fields{{textKey, content.text}};
  if (!content.entryIdentifier.isEmpty()) fields.insert(entryKey, content.entryIdentifier);
  if (content.editBeginDate) fields.insert(beginKey, *content.editBeginDate);
  if (content.creationDate) fields.insert(creationKey, *content.creationDate);
  if (!content.timeZone.isEmpty()) fields.insert(zoneKey, content.timeZone);
  PropertyListArray tags;
  for (const QString& tag : content.tags) tags.append(tag);
  if (!tags.isEmpty()) fields.insert(tagsKey, tags);
  if (content.location) fields.insert(locationKey, content.location->toPropertyList());
  if (content.weather) fields.insert(weatherKey, content.weather->toPropertyList());
  Error error;
  // The binary form holds any character that can be typed or pasted.
  const auto bytes = PropertyListSerialization::dataWithPropertyList(fields, PropertyListFormat::Binary, &error);
  QDir().mkpath(QFileInfo(m_path).path());
  m_hasFile = true;
  if (!(bytes && writeFileAtomically(m_path, *bytes, &error)) && !std::exchange(m_failureIsLogged, true))
    QLLogWarn(u"The text of the entry window cannot be kept for the case of a crash - %1"_s.arg(error.description()));
}

void EntryDraft::remove() {
  m_timer.stop();
  m_content = {};
  if (std::exchange(m_hasFile, false)) QFile::remove(m_path);
}

}  // namespace quillo
