#pragma once

#include "foundation/Log.h"
#include "foundation/UserDirectories.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace quillo {

// A home directory of its own for the life of the object, in use by everything in the process.
class TestHome {
 public:
  TestHome();
  ~TestHome();
  TestHome(const TestHome&) = delete;
  TestHome& operator=(const TestHome&) = delete;

  [[nodiscard]] QString path(const QString& relative = {}) const;

 private:
  QTemporaryDir m_directory;
  UserDirectories m_before;
};

// The permission bits of a file or folder, -1 where there is none.
[[nodiscard]] int modeOf(const QString& path);

// Collects the lines logged while it lives.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  [[nodiscard]] const QStringList& lines() const { return m_lines; }
  [[nodiscard]] QStringList takeLines() { return std::exchange(m_lines, {}); }

 private:
  QStringList m_lines;
  LogSink m_before;
};

}  // namespace quillo

// Lets test failures show strings.
void PrintTo(const QString& text, std::ostream* stream);
