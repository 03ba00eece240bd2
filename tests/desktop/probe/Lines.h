#pragma once

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <unistd.h>

#include <functional>

// How the programs here are led by a test: a command a line on standard input, an event a line on standard output.

inline void say(const QString& line) {
  QTextStream(stdout) << line << Qt::endl;
}

// Says that it is ready, and runs the application until the input ends.
inline int serveLines(const std::function<void(const QString&)>& run) {
  QByteArray unread;
  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, [&] {
    char buffer[4096];
    const auto length = read(STDIN_FILENO, buffer, sizeof buffer);
    if (length <= 0) return QCoreApplication::quit();
    unread.append(buffer, length);
    for (auto end = unread.indexOf('\n'); end >= 0; end = unread.indexOf('\n')) {
      run(QString::fromUtf8(unread.left(end)));
      unread.remove(0, end + 1);
    }
  });
  say(QStringLiteral("ready"));
  return QCoreApplication::exec();
}
