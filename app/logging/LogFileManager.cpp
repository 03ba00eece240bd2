#include "app/logging/LogFileManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

namespace quillo {

using namespace Qt::StringLiterals;

namespace {

constexpr auto filePrefix = "quillo-agent-"_L1;
constexpr auto fileSuffix = ".log"_L1;

// 0 for a name that is not one of ours: numbers begin at 1.
quint64 numberOfName(const QString& name) {
  if (!name.startsWith(filePrefix) || !name.endsWith(fileSuffix)) return 0;
  const qsizetype length = name.size() - filePrefix.size() - fileSuffix.size();
  if (length < 6 || length > 18) return 0;  // 18 digits leave room to count on from
  const QStringView digits = QStringView(name).mid(filePrefix.size(), length);
  if (!std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; })) return 0;
  return digits.toULongLong();
}

FileDescriptor openForAppending(const QString& path, int extraFlags) {
  const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | extraFlags;
  return FileDescriptor(::open(QFile::encodeName(path).constData(), flags, 0600));
}

bool canBeContinued(const FileDescriptor& file) {
  struct stat status {};
  return file.isOpen() && ::fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_size < LogFileManager::maximumFileSize;
}

}  // namespace

void LogFileManager::createDirectory() const {
  if (m_directory.isEmpty()) return;
  const QFileInfo directory(m_directory);
  QDir().mkpath(directory.path());
  ::mkdir(QFile::encodeName(directory.filePath()).constData(), 0700);
}

QString LogFileManager::pathOfNumber(quint64 number) const {
  return m_directory + u'/' + filePrefix + u"%1"_s.arg(number, 6, 10, QChar(u'0')) + fileSuffix;
}

QStringList LogFileManager::sortedLogFilePaths() const {
  if (m_directory.isEmpty()) return {};  // QDir would take it for the current directory
  // By no pattern: those are matched by the engine of expressions, which takes half a megabyte.
  QStringList names = QDir(m_directory).entryList(QDir::Files | QDir::Hidden);
  names.removeIf([](const QString& name) { return numberOfName(name) == 0; });
  std::sort(names.begin(), names.end(),
            [](const QString& left, const QString& right) { return numberOfName(left) > numberOfName(right); });
  for (QString& name : names) name.prepend(m_directory + u'/');
  return names;
}

FileDescriptor LogFileManager::openCurrentFile() const {
  if (m_directory.isEmpty()) return {};
  const QStringList paths = sortedLogFilePaths();
  quint64 number = 0;
  if (!paths.isEmpty()) {
    number = numberOfName(QFileInfo(paths.first()).fileName());
    if (auto newest = openForAppending(paths.first(), 0); canBeContinued(newest)) return newest;
  }
  // A number is taken only when another agent has made that file since the listing; eight such races do not happen.
  FileDescriptor file;
  for (int attempt = 0; attempt < 8 && !file.isOpen(); ++attempt) {
    file = openForAppending(pathOfNumber(++number), O_CREAT | O_EXCL);
    if (!file.isOpen() && errno != EEXIST) return {};
  }
  // The new file takes a place of its own.
  if (file.isOpen()) {
    for (const QString& path : paths.mid(maximumNumberOfLogFiles - 1)) QFile::remove(path);
  }
  return file;
}

}  // namespace quillo
