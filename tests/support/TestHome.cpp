#include "tests/support/TestHome.h"

#include <QDir>

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

}  // namespace quillo

// Found by argument-dependent look-up only in the global namespace, where QString lives.
void PrintTo(const QString& text, std::ostream* stream) {
  *stream << '"' << text.toStdString() << '"';
}
