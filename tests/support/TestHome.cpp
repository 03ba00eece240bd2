#include "tests/support/TestHome.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

#include <ostream>

namespace quillo {

TestHome::TestHome() : m_before(UserDirectories::current()) {
  UserDirectories::setCurrent(UserDirectories::below(m_directory.path()));
}

TestHome::~TestHome() {
  UserDirectories::setCurrent(m_before);
}

QString TestHome::path(const QString& relative) const {
  return relative.isEmpty() ? m_directory.path() : m_directory.filePath(relative);
}

LogCapture::LogCapture() {
  m_before = setLogSink([this](const LogMessage& message) { m_lines << message.text; });
}

LogCapture::~LogCapture() {
  setLogSink(std::move(m_before));
}

int modeOf(const QString& path) {
  struct stat status {};
  return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 0777) : -1;
}

}  // namespace quillo

// Found by argument-dependent look-up only in the global namespace, where QString lives.
void PrintTo(const QString& text, std::ostream* stream) {
  *stream << '"' << text.toStdString() << '"';
}
