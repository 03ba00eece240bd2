#pragma once

#include "foundation/FileContents.h"
#include "qlcore/ConflictNames.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QMap>
#include <QRandomGenerator>
#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

namespace quillo {

// Carries files between two folders as a synchroniser does that counts each side's changes: a change that the other
// side had not seen is a conflict, in which one version keeps the name and the other becomes a conflict copy, and an
// edit wins over a removal. What is on its way comes in any order, late, and sometimes twice.
class SynchroniserDouble {
 public:
  SynchroniserDouble(std::array<QString, 2> folders, QRandomGenerator& random)
      : m_folders(std::move(folders)), m_random(random) {}

  // Notices what was changed in both folders and puts it on its way.
  void scan() {
    scan(0);
    scan(1);
  }
  // Delivers something, if there is anything.
  void deliverOne() {
    if (m_messages.isEmpty()) return;
    const auto at = m_random.bounded(m_messages.size());
    const Message message = m_random.bounded(8) == 0 ? m_messages[at] : m_messages.takeAt(at);
    // What it is about to write over must be what it knows.
    scan(message.to);
    deliver(message);
  }
  // Until both folders are the same. Each turn delivers what one scan has found, and what is delivered is a change no
  // more.
  void finish() {
    for (int turn = 0; turn < 50; ++turn) {
      scan();
      if (m_messages.isEmpty()) return;
      while (!m_messages.isEmpty()) deliverOne();
    }
    ADD_FAILURE() << "the synchroniser goes on for ever";
  }
  // How many conflict copies it made.
  [[nodiscard]] int copies() const { return m_copies; }

 private:
  using Vector = std::array<int, 2>;  // changes of each side
  struct State {
    QByteArray content;
    bool exists{false};
    Vector changes{0, 0};
  };
  struct Message {
    int to;
    QString name;
    State state;
  };

  static bool covers(const Vector& a, const Vector& b) { return a[0] >= b[0] && a[1] >= b[1]; }
  static Vector both(const Vector& a, const Vector& b) { return {std::max(a[0], b[0]), std::max(a[1], b[1])}; }

  void scan(int side) {
    QMap<QString, State>& known = m_known[side];
    QStringList names = QDir(m_folders[side]).entryList({QStringLiteral("*.plist")}, QDir::Files);
    for (auto file = known.cbegin(); file != known.cend(); ++file)
      if (!names.contains(file.key())) names << file.key();
    for (const QString& name : std::as_const(names)) {
      const auto content = contentsOfFile(m_folders[side] + u'/' + name);
      State& state = known[name];
      if (state.exists == content.has_value() && state.content == content.value_or("")) continue;
      state.exists = content.has_value();
      state.content = content.value_or("");
      ++state.changes[static_cast<size_t>(side)];
      m_messages << Message{1 - side, name, state};
    }
  }

  void deliver(const Message& message) {
    State& here = m_known[message.to][message.name];
    const State& there = message.state;
    if (covers(here.changes, there.changes)) return;
    const bool isConflict = !covers(there.changes, here.changes);
    const bool isSame = here.exists == there.exists && here.content == there.content;
    if (isConflict && !isSame) {
      const bool winsThere = !here.exists || (there.exists && there.content > here.content);
      // The other side gets what is here, and makes the copy.
      if (!winsThere) return;
      if (here.exists) write(message.to, copyName(message), here.content);
    }
    here = {there.content, there.exists, both(here.changes, there.changes)};
    if (here.exists)
      write(message.to, message.name, here.content);
    else
      QFile::remove(m_folders[message.to] + u'/' + message.name);
    if (isConflict) m_messages << Message{1 - message.to, message.name, here};
  }

  QString copyName(const Message& message) {
    const int number = ++m_copies;
    const QString uuid = message.name.first(36);
    const QString made = QStringLiteral("20260309-%1-SIDE%2").arg(number, 6, 10, QChar(u'0')).arg(message.to);
    if (number % 3 == 0)
      return uuid + QStringLiteral(" (conflicted copy %1 2026-03-09 %2).plist")
                        .arg(message.to)
                        .arg(number, 6, 10, QChar(u'0'));
    if (number % 3 == 1)
      return uuid + QStringLiteral(" (pc%1's conflicted copy 2026-03-09 (%2)).plist").arg(message.to).arg(number);
    return uuid + QStringLiteral(".sync-conflict-") + made + QStringLiteral(".plist");
  }

  void write(int side, const QString& name, const QByteArray& content) {
    const QString temporary = m_folders[side] + QStringLiteral("/.syncthing.") + name + QStringLiteral(".tmp");
    ASSERT_TRUE(writeFileInPlace(temporary, content));
    ASSERT_EQ(::rename(QFile::encodeName(temporary).constData(),
                       QFile::encodeName(m_folders[side] + u'/' + name).constData()),
              0);
  }

  std::array<QString, 2> m_folders;
  QRandomGenerator& m_random;
  std::array<QMap<QString, State>, 2> m_known;
  QList<Message> m_messages;
  int m_copies{0};
};

}  // namespace quillo
