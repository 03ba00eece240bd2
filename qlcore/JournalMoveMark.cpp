#include "qlcore/JournalMoveMark.h"

#include "foundation/FileContents.h"
#include "qlcore/FolderFiles.h"
#include "qlcore/JournalError.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <optional>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView suffix{".placing"};

std::optional<struct stat> statusOf(const QString& path) {
  struct stat status {};
  if (::lstat(QFile::encodeName(path).constData(), &status) != 0) return std::nullopt;
  return status;
}

bool isLater(const timespec& time, const timespec& than) {
  return time.tv_sec != than.tv_sec ? time.tv_sec > than.tv_sec : time.tv_nsec > than.tv_nsec;
}

// Nothing below it has changed in any way, as only the kernel sets these times; nothing has come or gone in it.
bool isUntouchedSince(const QString& folder, const timespec& moment) {
  const auto top = statusOf(folder);
  if (!top || !S_ISDIR(top->st_mode) || isLater(top->st_mtim, moment)) return false;
  // Ends with the folder's contents: links are not followed.
  QDirIterator below(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
  while (below.hasNext()) {
    const auto status = statusOf(below.next());
    if (!status || isLater(status->st_ctim, moment)) return false;
  }
  return true;
}

}  // namespace

JournalMoveMark::JournalMoveMark(const QString& source, const QString& target)
    : m_source(source),
      m_target(target),
      m_path(u"%1/.%2.%3"_s.arg(QFileInfo(target).path(), QFileInfo(target).fileName()).arg(::getpid()) + suffix) {}

bool JournalMoveMark::make(Error* error) const {
  Error reason;
  if (writeFileAtomically(m_path, QFile::encodeName(m_source), &reason)) return true;
  return fail(error, JournalError::forWriting(reason));
}

void JournalMoveMark::remove() const {
  QFile::remove(m_path);
}

QStringList JournalMoveMark::marksLeft() const {
  const QFileInfo target(m_target);
  const QString beginning = u".%1."_s.arg(target.fileName());
  QStringList marks;
  const QStringList names = QDir(target.path()).entryList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
  for (const QString& name : names) {
    if (!name.startsWith(beginning) || !name.endsWith(suffix)) continue;
    const auto number = QStringView(name).sliced(beginning.size(), name.size() - beginning.size() - suffix.size());
    if (isOfFinishedWork(number)) marks << target.path() + u'/' + name;
  }
  return marks;
}

bool JournalMoveMark::findsLeftover() const {
  for (const QString& mark : marksLeft()) {
    const auto source = contentsOfFile(mark, nullptr);
    const auto status = statusOf(mark);
    if (source && status && QFile::decodeName(*source) == m_source && isUntouchedSince(m_target, status->st_ctim))
      return true;
  }
  return false;
}

void JournalMoveMark::removeLeftovers() const {
  for (const QString& mark : marksLeft()) QFile::remove(mark);
}

}  // namespace quillo
